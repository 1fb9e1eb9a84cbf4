// SPDX-License-Identifier: Apache-2.0
// factory-reset.
#include <unistd.h>

#include <cerrno>

#include "kestrove/kestrove.h"
#include "tools/common/hold.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/ask.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/event_rows.h"
#include "tools/ctl/history/pending.h"
#include "tools/ctl/history/recording.h"
#include "tools/ctl/reading.h"
#include "tools/ctl/settings/image.h"

namespace ctl {
namespace {

constexpr char kNothing[] = "/dev/null";
constexpr char kMarker[] = "/var/etc/config/configured";
constexpr const char* kAgentFiles[] = {"/var/config/snmpd.conf", "/var/net-snmp/snmpd.conf"};

struct ResetLine {
  bool keepUsers = false;
  bool noReboot = false;
  bool yes = false;
};

bool there(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

Json userNames() {
  Json names = Json::array();
  for (int i = 0; i < shm->config.userCount && i < SHM_USERS; ++i) names.push_back(text(shm->config.users[i].username));
  return names;
}

Json filesThatGo(const ResetLine& line) {
  Json files = Json::array();
  for (const char* path : kAgentFiles) {
    if (there(path)) files.push_back(path);
  }
  if (!line.keepUsers && there(kMarker)) files.push_back(kMarker);
  files.push_back(text(shm->config.eventLogFileName));
  files.push_back(text(shm->config.configFileName));
  return files;
}

// What goes, and what takes its place.
Json whatGoes(const ResetLine& line) {
  const std::string settings = text(shm->config.configFileName);
  return {{"users", line.keepUsers ? Json::array() : userNames()},
          {"settings", settings},
          {"settingsAfterwards", there(settings + ".bak") ? Json(settings + ".bak") : Json()},
          {"events", eventCount()},
          {"files", filesThatGo(line)}};
}

std::string joined(const Json& list) {
  std::string line;
  for (const Json& one : list) line += (line.empty() ? "" : ", ") + one.get<std::string>();
  return line.empty() ? "none" : line;
}

void tellWhatGoes(const Json& goes, const ResetLine& line) {
  const std::string after = goes["settingsAfterwards"].is_null()
                                ? "no backup takes their place: the factory defaults alone"
                                : goes["settingsAfterwards"].get<std::string>() + " takes their place";
  const std::string rows[] = {"users      " + (line.keepUsers ? "none: they stay" : joined(goes["users"])),
                              "settings   all that " + goes["settings"].get<std::string>() + " has; " + after,
                              "event log  " + goes["events"].dump() + " events", "files      " + joined(goes["files"])};
  fputs("A factory reset takes away:\n", stderr);
  for (const std::string& row : rows) fprintf(stderr, "  %s\n", tools::escaped(row).c_str());
}

// The reset of the library, which keeps the lock where it succeeds: until the appliance restarts nobody else gets at
// the store.
void reset(const Session& session, const ResetLine& line) {
  awaitLock(session);
  shm_errno = SHM_OK;
  errno = 0;
  const int result = line.keepUsers ? restoreZELFactoryDefaults(session.source, session.userName())
                                    : restoreFactoryDefaults(session.source, session.userName());
  if (result == 0) return;
  throw refusal("the reset stopped half-way; the store is in Configuration Mode, and events are not logged");
}

void giveBack() {
  while (shm_lock_count > 0 && shm_unlock() == 0) {
  }
}

// The store as it is: what a start makes of the files that are left comes with the next one, and history is ahead of
// it.
Recorded record(const Session& session, Recording& recording) {
  const std::string path = text(shm->config.configFileName);
  try {
    return recording.finish(*fileImage(session, there(path) ? path : kNothing));
  } catch (const Refusal& refusal) {
    return {.missing = refusal.what(), .pending = {}};
  }
}

void restart(const Session& session) {
  const int result = reboot(session.source, session.userName());
  giveBack();
  if (result == 0) return;
  throw Refusal(kSystem, "everything is reset; /sbin/reboot " +
                             (result == -1 ? std::string("could not be run") : "gave " + std::to_string(result)));
}

// What is not confirmed in time would bring settings back into a unit that has none.
void refuseWhilePending() {
  const std::optional<Pending> pending = pendingConfirmation();
  if (!pending) return;
  throw Refusal(kRefused, "factory-reset: \"" + pending->command + "\" of " + pending->user +
                              " waits for its confirmation; end that first (kestrovectl confirm, or confirm --abort)");
}

void factoryReset(const Session& session, const ResetLine& line) {
  refuseWhilePending();
  const Json goes = gather(session, [&line] { return whatGoes(line); });
  if (!line.yes) tellWhatGoes(goes, line);
  requireAgreement(line.yes, "factory-reset", line.noReboot ? "Do it?" : "Do it and restart the appliance?");
  Recording recording(session);
  {
    awaitLock(session);
    const tools::Hold hold;
    if (!hold) throw refusal("the store cannot be locked");
    recording.begin();
  }
  reset(session, line);
  record(session, recording).warn();
  if (line.noReboot) giveBack();
  if (!line.noReboot) restart(session);
  const std::string what = std::string("factory defaults restored; ") +
                           (line.noReboot ? "they take effect when the appliance restarts" : "the appliance restarts");
  if (session.forPeople()) return session.done(what);
  session.show({{"done", what}, {"removed", goes}});
}

}  // namespace

std::vector<Command> resetCommands() {
  return {changing("factory-reset", "Take back users, settings, event log and files, and restart; asks", factoryReset,
                   {flag("--keep-users", &ResetLine::keepUsers, "Leave the users, and the mark of a configured unit"),
                    flag("--no-reboot", &ResetLine::noReboot, "Leave the restart to the caller"),
                    flag("--yes", &ResetLine::yes, "Ask nothing; needed where nobody can be asked")})};
}

}  // namespace ctl
