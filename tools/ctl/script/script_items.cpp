// SPDX-License-Identifier: Apache-2.0
// The settings of a saved script, made from the rows of the items.
#include <algorithm>
#include <deque>

#include "kestrove/kestrove.h"
#include "tools/ctl/change.h"
#include "tools/ctl/item_setting.h"
#include "tools/ctl/mode_setting.h"
#include "tools/ctl/script/script_rows.h"

namespace ctl {
namespace {

Type typeOf(const ItemRow& row) {
  if (!row.scriptWords.empty()) return takes::word(row.scriptWords);
  if (row.form == ItemForm::kSwitch) return takes::onOrOff();
  if (row.form == ItemForm::kAddress) return takes::address(Family::kIpv4);
  Type type = takes::text().in(*row.scriptUnit ? row.scriptUnit : row.unit);
  type.shown = "NUMBER";
  return type;
}

std::string helpOf(const ItemRow& row) { return std::string(row.name) + " in the words of a saved script"; }

// A script has an empty word where the store holds a value that it has no word for.
bool mayBeEmpty(const ItemRow& row) { return row.family == ItemFamily::kConfig && row.id == SHM_ITEM_WAN_CONGESTION; }

constexpr char kLeftAsItIs[] = "no value is named: it is left as it is";

void setInScript(const Session& session, const ItemRow& row, const Given& given) {
  if (given[0].empty()) return session.done(std::string(row.name) + ": " + kLeftAsItIs);
  setItem(session, {&row, Tongue::kScript}, given[0].front());
}

Wish wishInScript(const ItemRow& row, const Given& given) {
  if (given[0].empty()) return NoWish{};
  return itemWish({&row, Tongue::kScript}, given[0].front());
}

Command rowOf(const ItemRow& item, const std::string& words) {
  static std::deque<std::string> helps;  // rows hold no texts of their own
  Command row = group("set " + words, helps.emplace_back(helpOf(item)).c_str());
  Value value;
  value.name = "VALUE";
  value.type = typeOf(item);
  value.help = "New value";
  value.needed = !mayBeEmpty(item);
  row.values = {value};
  row.changes = row.script = true;
  row.json = "change({item, value: text|number, unit?, script?, file?})|@done";
  row.run = [&item](const Session& session, const Given& given) { setInScript(session, item, given); };
  row.wish = [&item](const Given& given) { return wishInScript(item, given); };
  return row;
}

// The group of two words of a script in front of the first of them.
void addGroup(std::vector<Command>& rows, const std::string& words) {
  const size_t blank = words.find(' ');
  if (blank == std::string::npos) return;
  const std::vector<std::string> group = wordsOf("set " + words.substr(0, blank));
  const bool known = std::any_of(rows.begin(), rows.end(), [&](const Command& row) { return row.words == group; });
  if (known) return;
  rows.push_back(ofScripts({.words = group, .help = "In the words of a saved script"}));
}

struct ModeLine {
  std::string lan, wan;
};

uint32_t vlanOf(const std::string& text) {
  const std::optional<uint64_t> number = readDigits(text);
  if (number && *number <= UINT32_MAX) return static_cast<uint32_t>(*number);
  throw Refusal(kUsage, text + ": no VLAN id");
}

ModeWish modeOf(const ModeLine& line) { return {SHM_ON, vlanOf(line.lan), vlanOf(line.wan)}; }

// A script names both ids as 0 where no mode was ever set.
bool namesNoMode(const ModeWish& wish) { return wish.lanVlan == 0 && wish.wanVlan == 0; }

void single(const Session& session, const ModeLine& line) {
  const ModeWish wish = modeOf(line);
  if (namesNoMode(wish)) return session.done(std::string("the mode: ") + kLeftAsItIs);
  setMode(session, wish);
}

Wish wishSingle(const ModeLine& line) {
  const ModeWish wish = modeOf(line);
  if (namesNoMode(wish)) return NoWish{};
  return wish;
}

struct DoubleLine {};

void twoInterfaces(const Session& session, const DoubleLine&) { setMode(session, {.mode = SHM_OFF}); }

Wish wishDouble(const DoubleLine&) { return ModeWish{.mode = SHM_OFF}; }

void addModes(std::vector<Command>& rows) {
  rows.push_back(ofScripts(group("set interfaceMode", "The interfaces in the words of a saved script")));
  rows.push_back(ofScripts(setting("set interfaceMode single", "One interface that carries LAN and WAN as two VLANs",
                                   single, wishSingle,
                                   {needed("LAN", &ModeLine::lan, takes::text(), "VLAN id of the LAN side"),
                                    needed("WAN", &ModeLine::wan, takes::text(), "VLAN id of the WAN side")}))
                     .gives("change(@mode)|@done"));
  rows.push_back(ofScripts(setting<DoubleLine>("set interfaceMode double", "Two interfaces, bridged", twoInterfaces,
                                               wishDouble, {}))
                     .gives("change(@mode)"));
}

}  // namespace

std::vector<Command> scriptItemCommands() {
  std::vector<Command> rows;
  for (const ItemRow& item : itemRows()) {
    const std::string words = item.script;
    if (words.empty() || words == item.name) continue;
    addGroup(rows, words);
    rows.push_back(rowOf(item, words));
    if (words == "prb") rows.push_back(rowOf(item, "pbr"));
  }
  addModes(rows);
  return rows;
}

}  // namespace ctl
