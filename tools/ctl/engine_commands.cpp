// SPDX-License-Identifier: Apache-2.0
// engine, task.
#include "kestrove/kestrove.h"
#include "tools/ctl/change.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/reading.h"
#include "tools/ctl/rows.h"

namespace ctl {
namespace {

Json status() {
  const int pid = shm_getTaskPid(SHM_TASK_ENGINE);
  return {{"pid", pid},
          {"process", processLife(pid)},
          {"enabled", switchText(shm->config.kestroveOperState)},
          {"restarts", shm->config.kestroveRestartCount},
          {"reboots", shm->config.kestroveRebootCount},
          {"pendingChanges", pendingNames(shm->pendingChanges)},
          {"version", text(shm->config.kestroveFullVersion)}};
}

void restart(const Session& session) {
  // The library takes that source for the engine and ends the process that calls.
  if (session.source == SHM_SOURCE_ENGINE)
    throw Refusal(kUsage, "--source 1 is the engine, which cannot restart itself");
  requireStore(session);
  Change change(session);
  const int result = restart_kestrove(session.source, session.userName());
  change.made(result, "engine");
  if (result != 0) throw Refusal(kSystem, "the engine is switched on; killall gave " + std::to_string(result));
  change.done("engine told to restart");
}

Json tasks() {
  int32_t pids[SHM_TASKS];
  for (int i = 0; i < SHM_TASKS; ++i) pids[i] = shm->taskPids[i];
  return taskTable(pids);
}

}  // namespace

std::vector<Command> engineCommands() {
  return {group("engine", "The optimisation engine"),
          command("engine status", "Process, switch, counters, changes not fetched yet", showing<status>),
          changing("engine restart", "Reset the counters, switch it on, end its process", restart),
          group("task", "The monitored tasks"), command("task list", "All tasks with their processes", showing<tasks>)};
}

}  // namespace ctl
