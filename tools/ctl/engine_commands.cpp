// engine, task.
#include "kestrove/kestrove.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/rows.h"

namespace ctl {
namespace {

constexpr int kEngineTask = 4;
Json changesOf(uint32_t bits) {
  constexpr struct {
    int bit;
    const char* name;
  } kChanges[] = {{0, "LAN rate"}, {1, "WAN rate"},    {2, "LAN MTU"},
                  {3, "WAN MTU"},  {5, "compression"}, {6, "WAN congestion"},
                  {7, "rules"},    {10, "item 38"},    {13, "management address"},
                  {14, "mode"}};
  Json names = Json::array();
  for (const auto& change : kChanges) {
    if (bits & (1u << change.bit)) names.push_back(change.name);
  }
  return names;
}

void status(const Session& session) {
  requireStore();
  int pid = shm_getTaskPid(kEngineTask);
  accept(shm_lock(), "lock");
  Json result = {{"pid", pid},
                 {"process", processLife(pid)},
                 {"enabled", switchText(shm->config.kestroveOperState)},
                 {"restarts", shm->config.kestroveRestartCount},
                 {"reboots", shm->config.kestroveRebootCount},
                 {"pendingChanges", changesOf(shm->pendingChanges)},
                 {"version", text(shm->config.kestroveFullVersion)}};
  shm_unlock();
  session.show(result);
}

void restart(const Session& session) {
  requireStore();
  int result = restart_kestrove(session.source, session.userName());
  if (result != 0) throw Refusal(kSystem, "killall gave " + std::to_string(result));
  session.done("engine told to restart");
}

void listTasks(const Session& session) {
  requireStore();
  accept(shm_lock(), "lock");
  int32_t pids[SHM_TASKS];
  for (int i = 0; i < SHM_TASKS; ++i) pids[i] = shm->taskPids[i];
  shm_unlock();
  session.show(taskTable(pids));
}

}  // namespace

void addEngineCommands(CLI::App& app, Session& session) {
  CLI::App* engine = app.add_subcommand("engine", "The optimisation engine");
  engine->require_subcommand(1);
  engine->add_subcommand("status", "Process, switch, counters, changes not fetched yet")->callback([&session] {
    status(session);
  });
  engine->add_subcommand("restart", "Reset the counters, switch it on, end its process")->callback([&session] {
    restart(session);
  });
  CLI::App* task = app.add_subcommand("task", "The monitored tasks");
  task->require_subcommand(1);
  task->add_subcommand("list", "All tasks with their processes")->callback([&session] { listTasks(session); });
}

}  // namespace ctl
