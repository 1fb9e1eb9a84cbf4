// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/script/target.h"

#include <algorithm>
#include <cstring>
#include <functional>

#include "kestrove/kestrove.h"
#include "tools/common/hold.h"
#include "tools/ctl/item_setting.h"
#include "tools/ctl/mode_setting.h"
#include "tools/ctl/script/rule_target.h"
#include "tools/ctl/settings/copy.h"

namespace ctl {
namespace {

// While it lives changes are only stored. The store is a copy, so its words are written straight away.
class OnlyStoring {
 public:
  explicit OnlyStoring(bool really) : before_(shm->operationalState) {
    if (really) shm->operationalState = SHM_STATE_CONFIGURATION;
  }
  ~OnlyStoring() { shm->operationalState = before_; }
  OnlyStoring(const OnlyStoring&) = delete;
  OnlyStoring& operator=(const OnlyStoring&) = delete;

 private:
  uint32_t before_;
};

template <typename Slot, size_t N>
void freeSlots(Slot (&slots)[N]) {
  for (Slot& slot : slots) slot.inUse = slot.next = SHM_NO_SLOT;
}

void emptyRules() {
  FilterTable& table = shm->filterTable;
  if (table.ruleCount < 1 || table.ruleCount > SHM_RULES) return;
  table.rule[0] = table.rule[table.ruleCount - 1];
  table.ruleCount = 1;
}

void emptyTables(const Script& script) {
  shm->managementAddressCount = 0;
  freeSlots(shm->routes.slot);
  freeSlots(shm->routes6.slot);
  shm->routes.head = 0;
  shm->routes6.head6 = 0;
  emptyRules();
  const bool namesBridge = std::any_of(script.lines.begin(), script.lines.end(), [](const ScriptLine& line) {
    return std::holds_alternative<Ip6Address>(line.wish);
  });
  if (namesBridge) shm->ip6Count = 0;
}

bool same(const RouteEntry& a, const RouteEntry& b) { return a.destination == b.destination && a.netmask == b.netmask; }
bool same(const Route6Entry& a, const Route6Entry& b) {
  return memcmp(a.destination, b.destination, sizeof a.destination) == 0 && a.prefixLength == b.prefixLength;
}
bool sameGateway(const RouteEntry& a, const RouteEntry& b) { return a.gateway == b.gateway; }
bool sameGateway(const Route6Entry& a, const Route6Entry& b) {
  return memcmp(a.gateway, b.gateway, sizeof a.gateway) == 0;
}

// Whether the kernel took a route is no setting.
template <typename Route>
bool equal(const Route& a, const Route& b) {
  return sameGateway(a, b) && (a.status == SHM_ROUTE_DISABLED) == (b.status == SHM_ROUTE_DISABLED);
}

bool same(const ManagementAddress& a, const ManagementAddress& b) {
  if (a.ipVersion != b.ipVersion) return false;
  return a.ipVersion == SHM_FAMILY_IPV6 ? memcmp(a.address6, b.address6, sizeof a.address6) == 0
                                        : a.address == b.address;
}
bool equal(const ManagementAddress& a, const ManagementAddress& b) {
  if (a.interfaceKind != b.interfaceKind) return false;
  return a.ipVersion == SHM_FAMILY_IPV6 ? a.prefixLength6 == b.prefixLength6 : a.mask == b.mask;
}
bool same(const Ip6Address& a, const Ip6Address& b) { return memcmp(a.address, b.address, sizeof a.address) == 0; }
bool equal(const Ip6Address& a, const Ip6Address& b) { return a.prefixLength == b.prefixLength; }

void give(int result, const std::string& what) {
  if (result < 0) throw refusal(what);
}

// The slot of the entry with that key; null where there is none.
template <typename Slot, size_t N, typename Route>
Slot* slotOf(Slot (&slots)[N], const Route& key) {
  Slot* slot = std::find_if(slots, slots + N, [&key](const Route& one) { return one.inUse == 1 && same(one, key); });
  return slot == slots + N ? nullptr : slot;
}

template <typename Stored, size_t N, typename Entry>
Stored* entryOf(Stored (&entries)[N], int32_t count, const Entry& key) {
  Stored* end = entries + std::clamp<int32_t>(count, 0, N);
  Stored* entry = std::find_if(entries, end, [&key](const Entry& one) { return same(one, key); });
  return entry == end ? nullptr : entry;
}

class Maker {
 public:
  Maker(const ShmData& start, Session session) : start_(start), session_(std::move(session)) {}

  // Whether the start does not have it. Throws what the library says of it.
  bool operator()(const NoWish&) { return false; }
  bool operator()(const RuleWish&) { return false; }

  bool operator()(const ItemWish& wish) {
    const bool holds =
        wish.row->form == ItemForm::kText ? itemText(*wish.row) == wish.text : itemWord(*wish.row) == wish.word;
    if (holds) return false;
    const bool drivesModes = wish.row->family == ItemFamily::kConfig && wish.row->id == SHM_ITEM_POLICY_ROUTING;
    const OnlyStoring storing(!drivesModes);
    give(storeWish(session_, wish), acceptedText(*wish.row));
    return true;
  }

  // The store is a copy: what has no operation is put into it.
  bool operator()(const ModeWish& wish) {
    const ConfigRecord& config = shm->config;
    const bool sameIds = config.lanVlanId == wish.lanVlan && config.wanVlanId == wish.wanVlan;
    const bool idsCount = wish.mode == SHM_ON || wish.keepsIds;
    if (config.singleInterfaceMode == wish.mode && (!idsCount || sameIds)) return false;
    refuseUnsetting(config, wish);
    if (wish.mode == SHM_ON || wish.mode == SHM_OFF)
      give(setSingleInterfaceMode(wish.mode, wish.lanVlan, wish.wanVlan), "interface mode");
    putMode(shm->config, wish);
    return true;
  }

  bool operator()(const NameWish& wish) {
    char name[16] = {};
    give(getInterfaceName(wish.number, name, sizeof name), "interface name");
    if (name == wish.name) return false;
    give(setInterfaceName(wish.number, wish.name.c_str(), sizeof name), "interface name");
    return true;
  }

  bool operator()(const RouteEntry& wish) { return route(shm->routes.slot, start_.routes.slot, wish, addUserRoute); }
  bool operator()(const Route6Entry& wish) {
    return route(shm->routes6.slot, start_.routes6.slot, wish, addUserRoute6);
  }

  bool operator()(const ManagementAddress& wish) {
    const ManagementAddress* before = entryOf(start_.managementAddress, start_.managementAddressCount, wish);
    address(shm->managementAddress, shm->managementAddressCount, wish, addManagementAddr);
    return !before || !equal(*before, wish);
  }
  bool operator()(const Ip6Address& wish) {
    const Ip6Address* before = entryOf(start_.ip6Address, start_.ip6Count, wish);
    address(shm->ip6Address, shm->ip6Count, wish, addIp6);
    return !before || !equal(*before, wish);
  }

 private:
  // One that is there is changed in its slot: in Configuration Mode the library takes none away.
  template <typename Route, size_t N, typename Add>
  bool route(Route (&slots)[N], const Route (&before)[N], Route wish, Add add) {
    const OnlyStoring storing(true);
    if (Route* slot = slotOf(slots, wish)) {
      if (!equal(*slot, wish)) slot->status = wish.status;
      memcpy(&slot->gateway, &wish.gateway, sizeof wish.gateway);
    } else {
      give(add(&wish), "route");
    }
    const Route* old = slotOf(before, wish);
    return !old || !equal(*old, wish);
  }

  // Out of the table and in again, as the library has it, then back to its place.
  template <typename Entry, size_t N, typename Count, typename Add>
  void address(Entry (&entries)[N], Count& count, Entry wish, Add add) {
    const OnlyStoring storing(true);
    Entry* entry = entryOf(entries, static_cast<int32_t>(count), wish);
    if (entry && equal(*entry, wish)) return;
    Entry* end = entries + std::clamp<int32_t>(static_cast<int32_t>(count), 0, N);
    const Entry old = entry ? *entry : Entry{};
    if (entry) std::rotate(entry, entry + 1, end);
    if (entry) --count;
    const int result = add(&wish);
    if (entry && result < 0) entries[count++] = old;
    if (entry) std::rotate(entry, end - 1, end);
    give(result, "address");
  }

  const ShmData& start_;
  Session session_;
};

class Run {
 public:
  Run(const Script& script, const ShmData& start) : script_(script), maker_(start, {}), changes_(script.lines.size()) {}

  void modes() {
    each([](const Wish& wish) { return std::holds_alternative<ModeWish>(wish); });
  }
  void rest() {
    each([](const Wish& wish) { return !std::holds_alternative<ModeWish>(wish); });
  }

  void rules(const ShmData& start) {
    const OnlyStoring storing(true);
    std::vector<PlacedRule> placed;
    for (size_t i = 0; i < script_.lines.size(); ++i) {
      const RuleWish* wish = std::get_if<RuleWish>(&script_.lines[i].wish);
      if (wish) attempt(i, [&] { placed.push_back({i, wish->position, normalised(wish->rule)}); });
    }
    if (placed.empty()) return;
    for (const PlacedRule& rule : missingIn(start.filterTable, placed)) changes_[rule.line] = true;
    if (standAsPlaced(shm->filterTable, placed)) return;
    takeOut(placed);
    for (const PlacedRule& rule : placed) attempt(rule.line, [&] { insertPlaced(rule); });
  }

  Json outcome() const {
    std::string changes;
    for (const bool change : changes_) changes += change ? '1' : '0';
    return {{"changes", changes}, {"refused", refused_}};
  }

 private:
  void each(bool (*wanted)(const Wish&)) {
    for (size_t i = 0; i < script_.lines.size(); ++i) {
      const Wish& wish = script_.lines[i].wish;
      if (wanted(wish)) attempt(i, [&] { changes_[i] = std::visit(maker_, wish); });
    }
  }

  void attempt(size_t line, const std::function<void()>& work) {
    shm_errno = SHM_OK;
    try {
      work();
    } catch (const Refusal& refusal) {
      Json row = packed(refusal);
      row["line"] = script_.lines[line].number;
      refused_.push_back(std::move(row));
    }
  }

  const Script& script_;
  Maker maker_;
  std::vector<bool> changes_;
  Json refused_ = Json::array();
};

Json runOnCopy(const Image& start, const Script& script, Joining joining) {
  tools::Hold hold;
  if (!hold) throw refusal("the store of the copy cannot be locked");
  if (joining == Joining::kReplace) emptyTables(script);
  Run run(script, *start);
  run.modes();
  run.rest();
  run.rules(*start);
  return run.outcome();
}

std::vector<Complaint> complaintsOf(const Json& refused) {
  std::vector<Complaint> complaints;
  for (const Json& one : refused) {
    complaints.push_back({one.at("line").get<size_t>(), unpacked(one)});
  }
  std::ranges::sort(complaints, {}, &Complaint::line);
  return complaints;
}

}  // namespace

Target targetOf(const Image& start, const Script& script, Joining joining) {
  CopyResult copy = onCopy(start, [&] { return runOnCopy(start, script, joining); });
  Target target = {.store = std::move(copy.after), .changes = {}};
  for (const char change : copy.json.at("changes").get<std::string>()) target.changes.push_back(change == '1');
  target.refused = complaintsOf(copy.json.at("refused"));
  return target;
}

}  // namespace ctl
