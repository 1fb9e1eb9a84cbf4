// SPDX-License-Identifier: Apache-2.0
// clock, reboot, poweroff.
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <fstream>

#include "kestrove/kestrove.h"
#include "tools/ctl/ask.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/moment.h"

namespace ctl {
namespace {

constexpr int kClockSlack = 30;  // seconds that setting a clock may take

// Of the battery-backed clock, which keeps UTC; null without one.
Json hardwareClock() {
  std::ifstream file("/sys/class/rtc/rtc0/since_epoch");
  int64_t seconds = 0;
  return file >> seconds ? Json(momentText(seconds)) : Json();
}

void showClock(const Session& session) {
  uint32_t hundredths = 0;
  getSystemUptime(&hundredths);
  session.show(
      {{"time", momentText(time(nullptr))}, {"hardwareClock", hardwareClock()}, {"uptimeSeconds", hundredths / 100}});
}

struct ClockLine {
  std::string date;
  std::string time;
};

void setClock(const Session& session, const ClockLine& line) {
  const Moment when = parseMoment(line.date, line.time);
  requireStore(session);
  const bool stopped = shm->config.kestroveOperState == SHM_OFF;
  awaitLock(session);
  shm_errno = SHM_OK;
  errno = 0;
  if (setSystemTime(when.fields, session.source, session.userName()) != 0) {
    throw refusal("the clock may not be set, and the engine stays switched off (kestrovectl engine restart)");
  }
  const int64_t now = time(nullptr);
  if (std::abs(now - when.seconds) > kClockSlack) warn("the clock was told and does not follow: " + momentText(now));
  if (stopped) warn("the engine was switched off and is switched on now");
  if (session.forPeople()) return session.done("clock set to " + momentText(when.seconds));
  session.show({{"done", "clock set"}, {"set", momentText(when.seconds)}, {"time", momentText(now)}});
}

struct EndLine {
  bool yes = false;
};

// At a terminal a person may have meant another machine; a script means what it says.
void confirm(const EndLine& line, const std::string& command, const std::string& question) {
  if (!line.yes && canAsk()) requireAgreement(false, command, question);
}

void accepted(int result, const char* program) {
  if (result == -1) throw Refusal(kSystem, std::string(program) + ": it could not be run; syslog names the reason");
  if (result != 0) throw Refusal(kSystem, std::string(program) + " gave " + std::to_string(result));
}

void prepare(const Session& session) {
  requireStore(session);
  awaitLock(session);
  if (getShmOperationalState() == SHM_STATE_CONFIGURATION) {
    warn("the store is in Configuration Mode: what was changed in it is not saved (kestrovectl save)");
  }
  awaitLock(session);
}

void restartAppliance(const Session& session, const EndLine& line) {
  confirm(line, "reboot", "Restart this appliance?");
  prepare(session);
  accepted(reboot(session.source, session.userName()), "/sbin/reboot");
  session.done("the appliance restarts");
}

void switchOff(const Session& session, const EndLine& line) {
  confirm(line, "poweroff", "Switch this appliance off?");
  prepare(session);
  accepted(shutdownSystem(session.source, session.userName()), "/sbin/poweroff");
  session.done("the appliance switches off");
}

}  // namespace

std::vector<Command> controlCommands() {
  const std::vector<Argument<EndLine>> yes = {flag("--yes", &EndLine::yes, "Ask nothing")};
  return {group("clock", "The clock, in UTC"), command("clock show", "Clock, hardware clock, uptime", showClock),
          changing("clock set", "Set both clocks; the engine is stopped meanwhile and switched on behind", setClock,
                   {needed("DATE", &ClockLine::date, takes::text(), "2026-11-22, or 2026-11-22T04:45:25Z"),
                    option("TIME", &ClockLine::time, takes::text(), "04:45 or 04:45:25, where DATE has none")}),
          changing("reboot", "Restart the appliance; asks at a terminal", restartAppliance, yes),
          changing("poweroff", "Switch the appliance off; asks at a terminal", switchOff, yes)};
}

}  // namespace ctl
