// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/explain_inside.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/common/program.h"
#include "tools/ctl/rows.h"
#include "tools/ctl/sandbox_store.h"
#include "tools/ctl/trace/tracer.h"

namespace ctl {
namespace {

// In any state of the store, and without the engine, whose number belongs to nobody here.
[[noreturn]] void powerOn() {
  if (shm_lock() != 0) _exit(kNoStore);
  shm->operationalState = SHM_STATE_OPERATIONAL;
  shm->taskPids[SHM_TASK_ENGINE] = 0;
  shm_unlock();
  OpModeContext context = {};
  int result = OpModeState(SHM_MODE_EVENT_POWERED_ON, &context);
  _exit(result == 0 && updateKernelRules() == 0 ? kDone : kRefused);
}

// Bridges, addresses, routes and the packet filter as the store says, so that the kernel here answers as the
// appliance's would. In a process of its own: some failures of the library are fatal to their caller.
void bringUpAppliance() {
  pid_t child = fork();
  if (child == -1) throw Refusal(kSystem, std::string("fork: ") + strerror(errno), -1, errno);
  if (child == 0) powerOn();
  int status = 0;
  while (waitpid(child, &status, 0) == -1 && errno == EINTR) {
  }
  if (status != 0) fputs("kestrovectl: the copy did not come up whole; the kernel may answer otherwise\n", stderr);
}

Json effectRow(const char* kind, const std::string& text, const std::string& result) {
  return {{"kind", kind}, {"effect", text}, {"result", result}};
}

// Marks for the engine that were not there before.
void addBits(Json& rows, const ShmData& before, const ShmData& after) {
  for (const Json& name : pendingNames(after.pendingChanges & ~before.pendingChanges)) {
    rows.push_back(effectRow("bit", name.get<std::string>(), "set"));
  }
}

// A log that is shorter than before was emptied first.
void addEvents(Json& rows, const EventLog& before, const EventLog& after) {
  const bool emptied = !after.eventLogFull && (before.eventLogFull || after.writeIndex < before.writeIndex);
  const uint32_t end = after.writeIndex % SHM_EVENTS;
  for (uint32_t slot = emptied ? 0 : before.writeIndex % SHM_EVENTS; slot != end; slot = (slot + 1) % SHM_EVENTS) {
    const EventRecord& event = after.record[slot];
    const std::string user = text(event.userName);
    rows.push_back(
        effectRow("event", getEventMessage(event.eventId) + (user.empty() ? "" : " (" + user + ")"), "logged"));
  }
}

Json traceJson(const Trace& trace, const ShmData& before, const ShmData& after) {
  Json rows = Json::array();
  for (const Effect& effect : trace.effects) rows.push_back(effectRow(effect.kind.c_str(), effect.text, effect.result));
  addEvents(rows, before.eventLog, after.eventLog);
  addBits(rows, before, after);
  return {{"exit", trace.status}, {"effects", rows}};
}

}  // namespace

void explainInside(const Session& session, const std::string& imagePath, const std::vector<std::string>& command) {
  requireInside();
  const Image image = readImage(imagePath);
  ShmData* segment = makeStore();
  memcpy(segment, &*image, sizeof *segment);
  bringUpAppliance();
  memcpy(segment, &*image, sizeof *segment);  // coming up has changed it
  std::vector<std::string> line = {tools::ownFolder() + "/kestrovectl"};
  line.insert(line.end(), command.begin(), command.end());
  setenv("KESTROVE_HOME", "", 1);  // a copy has no history
  const Trace trace = traceProgram(line);
  session.print(jsonText(traceJson(trace, *image, *segment), -1));
}

}  // namespace ctl
