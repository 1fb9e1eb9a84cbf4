// SPDX-License-Identifier: Apache-2.0
// configuration-mode, debug-mode, notifications.
#include <cerrno>
#include <functional>
#include <optional>

#include "kestrove/kestrove.h"
#include "tools/common/hold.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/held_look.h"
#include "tools/ctl/kernel_tables.h"
#include "tools/ctl/reading.h"
#include "tools/ctl/settings/difference.h"
#include "tools/ctl/settings/image.h"

namespace ctl {
namespace {

std::string modeName(int state) { return strOperationalState(state); }

Json modeJson(const std::string& done, bool changed) {
  return {{"done", done}, {"state", modeName(static_cast<int>(shm->operationalState))}, {"changed", changed}};
}

// The store, held, with the state that is left or entered. The other of the two modes is not overwritten: its own
// command ends it, and says what it leaves behind.
class ModeChange {
 public:
  ModeChange(const Session& session, int mode) : mode_(mode) {
    requireStore(session);
    awaitLock(session);
    if (!hold_.emplace()) throw refusal("the store cannot be locked");
    state_ = accept(getShmOperationalState(), "state");
  }
  bool inIt() const { return state_ == mode_; }
  void set(int state) { accept(setShmOperationalState(static_cast<uint32_t>(state)), "state"); }
  void refuseOther(int other, const char* command) const {
    if (state_ != other) return;
    throw Refusal(kRefused, "the store is in " + modeName(other) + "; leave that first (kestrovectl " + command + ")");
  }

 private:
  int mode_;
  int state_ = 0;
  std::optional<tools::Hold> hold_;
};

struct Mode {
  int state;
  int other;
  const char* leaveOther;
  const char* effect;
};

constexpr Mode kConfiguration = {
    SHM_STATE_CONFIGURATION, SHM_STATE_DEBUG, "debug-mode leave",
    "changes touch the store alone: nothing is saved, logged, applied or told to the engine"};
constexpr Mode kDebug = {SHM_STATE_DEBUG, SHM_STATE_CONFIGURATION, "configuration-mode leave",
                         "changes are saved and logged; items and rules are not told to the engine, routes stay out of "
                         "the kernel"};

void enter(const Session& session, const Mode& mode) {
  Json result;
  {
    ModeChange change(session, mode.state);
    change.refuseOther(mode.other, mode.leaveOther);
    const bool changed = !change.inIt();
    if (changed) change.set(mode.state);
    result = modeJson((changed ? "entered " : "already in ") + modeName(mode.state), changed);
  }
  result["effect"] = mode.effect;
  if (!session.forPeople()) return session.show(result);
  session.done(result["done"].get<std::string>() + ": " + mode.effect);
}

// Rows that the kernel should have and lacks.
Json notInKernel() {
  Json lacking = Json::array();
  const Json tables = kernelTables();
  for (const auto& [table, rows] : tables.items()) {
    for (const Json& row : rows) {
      const bool wanted = row["kernel"] == "absent" && row["reason"] != "disabled";
      if (wanted) lacking.push_back(table == "addresses" ? row["address"] : row["destination"]);
    }
  }
  return lacking;
}

// Null where the kernel cannot be asked: what follows is then left to the reader.
Json lackingRows() {
  try {
    return notInKernel();
  } catch (const Refusal&) {
    return nullptr;
  }
}

std::string lackingText(const Json& lacking) {
  if (lacking.is_null()) return "what the kernel lacks cannot be found out (kestrovectl kernel show)";
  if (lacking.empty()) return "the kernel has every address and route";
  std::string line = "the kernel lacks";
  for (const Json& row : lacking) line += " " + row.get<std::string>();
  return line + " (kestrovectl kernel show says why)";
}

struct LeaveLine {
  bool save = false;
};

// The library's own way back: the state word alone. What the mode held back is named, not made up for.
Json leave(const Session& session, const Mode& mode, const std::function<void(Json&)>& further) {
  ModeChange change(session, mode.state);
  const bool changed = change.inIt();
  if (changed) change.set(SHM_STATE_OPERATIONAL);
  Json result = modeJson((changed ? "left " : "not in ") + modeName(mode.state), changed);
  if (!changed) return result;
  further(result);
  result["kernelLacks"] = lackingRows();
  result["engineTold"] = false;
  return result;
}

void saveNow(Json& result) {
  shm_errno = SHM_OK;
  errno = 0;
  const bool saved = save_shared_memory() == 0 && shm_errno == SHM_OK;
  if (!saved) result["error"] = errorJson({kNotSaved, reasonText(), static_cast<int>(shm_errno), reasonError()});
}

// The settings that a restart would not bring back; null where the file cannot be read.
Json unsavedSettings(const Session& session) {
  try {
    return differenceJson(compare(*savedImage(session), *runningImage(session)))["changes"];
  } catch (const Refusal&) {
    return nullptr;
  }
}

std::string keysOf(const Json& changes) {
  constexpr size_t kShown = 8;
  std::string line;
  for (size_t i = 0; i < changes.size() && i < kShown; ++i) {
    line +=
        (i == 0 ? "" : ", ") + changes[i]["section"].get<std::string>() + " " + changes[i]["key"].get<std::string>();
  }
  return changes.size() > kShown ? line + " and " + std::to_string(changes.size() - kShown) + " more" : line;
}

std::string savedText(const Json& result) {
  if (result.contains("error")) return "not saved: " + result["error"]["message"].get<std::string>();
  const Json& unsaved = result["unsaved"];
  if (unsaved.is_null()) return "the configuration file cannot be read (kestrovectl save writes it)";
  if (unsaved.empty()) return "saved: the configuration file has every setting";
  return "not saved: " + keysOf(unsaved) + " (kestrovectl save)";
}

void showLeft(const Session& session, const Json& result) {
  if (!session.forPeople()) return session.show(result);
  std::string text = result["done"].get<std::string>() + "\n";
  if (result["changed"].get<bool>()) {
    if (result.contains("saved")) text += savedText(result) + "\n";
    text += "not applied: " + lackingText(result["kernelLacks"]) +
            "; the engine has not heard of what changed meanwhile (kestrovectl engine restart)\n";
  }
  session.print(text);
}

void enterConfiguration(const Session& session) { enter(session, kConfiguration); }

void leaveConfiguration(const Session& session, const LeaveLine& line) {
  Json result = leave(session, kConfiguration, [&line](Json& left) {
    left["saved"] = false;
    if (line.save) saveNow(left);
  });
  if (result["changed"].get<bool>()) {
    result["unsaved"] = unsavedSettings(session);
    result["saved"] = result["unsaved"].is_array() && result["unsaved"].empty() && !result.contains("error");
  }
  showLeft(session, result);
  if (result.contains("error")) throw Refusal(kNotSaved, "");
}

void enterDebug(const Session& session) { enter(session, kDebug); }

void leaveDebug(const Session& session) {
  showLeft(session, leave(session, kDebug, [](Json&) {}));
}

// Leaving it so, which the library's own look does not.
bool isOn(int notification) { return (shm->notificationStatus & (1 << (notification - 1))) != 0; }

Json notificationRows() {
  Json rows = Json::array();
  for (int n = 1; n <= 3; ++n) rows.push_back({{"number", n}, {"on", isOn(n)}});
  return rows;
}

struct SwitchLine {
  int number = 0;
  uint32_t position = 0;
};

// Whoever reads a notification through the library clears it: that is the way to switch one off.
void setNotification(const Session& session, const SwitchLine& line) {
  requireStore(session);
  awaitLock(session);
  const tools::Hold hold;
  if (!hold) throw refusal("the store cannot be locked");
  HeldLook::call(false);
  const bool on = line.position == SHM_ON;
  if (!session.leavesEqual || on != isOn(line.number)) {
    accept(on ? setNotificationStatus(line.number) : getNotificationStatus(line.number), "notification");
  }
  HeldLook::call(true);
  session.done("notification " + std::to_string(line.number) + " is " + switchText(line.position));
}

}  // namespace

std::vector<Command> stateModeCommands() {
  return {group("configuration-mode", "Changes to the store alone"),
          changing("configuration-mode enter", "From here on changes touch the store alone", enterConfiguration),
          changing("configuration-mode leave", "Back to normal; says what is not saved and not applied",
                   leaveConfiguration, {flag("--save", &LeaveLine::save, "Write the configuration file at once")}),
          group("debug-mode", "Changes without the engine and without routes in the kernel"),
          changing("debug-mode enter", "From here on items and rules are not told to the engine", enterDebug),
          changing("debug-mode leave", "Back to normal; says what is not applied", leaveDebug),
          command("notifications", "The notifications that are on, leaving them so", showing<notificationRows>),
          command("notifications show", "The same", showing<notificationRows>),
          changing("notifications set", "Switch one; it stays until somebody reads it", setNotification,
                   {needed("NUMBER", &SwitchLine::number, takes::number(1, 3), "Which of them"),
                    needed("SWITCH", &SwitchLine::position, takes::onOrOff(), "Its switch")})};
}

}  // namespace ctl
