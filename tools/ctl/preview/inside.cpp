// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/preview/inside.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <map>
#include <set>

#include "kestrove/kestrove.h"
#include "tools/common/program.h"
#include "tools/ctl/preview/file_state.h"
#include "tools/ctl/preview/kernel_copy.h"
#include "tools/ctl/preview/kernel_state.h"
#include "tools/ctl/rows.h"
#include "tools/ctl/sandbox_store.h"
#include "tools/ctl/settings/difference.h"

namespace ctl::preview {
namespace {

constexpr char kImage[] = "/image";
constexpr char kFacts[] = "/facts";
constexpr char kFiles[] = "/files";
constexpr size_t kNotesShown = 5;
constexpr int32_t kNobody = 0x7FFFFFFE;  // no process has this number

using Texts = std::map<std::string, std::string>;

Json livingTasks() {
  Json tasks = Json::array();
  for (int32_t pid : shm->taskPids) tasks.push_back(strcmp(processLife(pid), "alive") == 0);
  return tasks;
}

void writeFacts(const std::string& path, const Json& facts) {
  std::ofstream file(path);
  if (!(file << jsonText(facts, -1)).flush()) throw Refusal(kSystem, path + ": cannot be written");
}

Json readFacts(const std::string& path) {
  std::ifstream file(path);
  Json facts = Json::parse(file, nullptr, false);
  if (!facts.is_object()) throw Refusal(kSystem, path + ": no facts of an appliance");
  return facts;
}

// Lives as long as this process, and takes every signal that can be taken.
int32_t standIn() {
  const pid_t child = fork();
  if (child == -1) throw systemRefusal("fork", errno);
  if (child > 0) return child;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  for (int number = 1; number < 32; ++number) signal(number, SIG_IGN);
  for (;;) pause();
}

// Numbers of processes mean others in here: who lives there is stood in for, who is dead stays dead.
void replaceTasks(ShmData& store, const Json& living) {
  for (size_t i = 0; i < SHM_TASKS; ++i) {
    if (store.taskPids[i] <= 0) continue;
    store.taskPids[i] = living.at(i).get<bool>() ? standIn() : kNobody;
  }
}

int runCommand(const std::vector<std::string>& command) {
  std::vector<std::string> line = {tools::ownFolder() + "/kestrovectl"};
  line.insert(line.end(), command.begin(), command.end());
  const tools::Output output = tools::runForOutput(line);
  fputs(output.text.c_str(), stderr);
  return output.status < 0 ? +kSystem : output.status;
}

Json orNull(const Texts& texts, const std::string& name) {
  const auto found = texts.find(name);
  return found == texts.end() ? Json(nullptr) : Json(found->second);
}

Json changesOf(const char* called, const Texts& before, const Texts& after) {
  std::set<std::string> names;
  for (const Texts* side : {&before, &after}) {
    for (const auto& [name, text] : *side) names.insert(name);
  }
  Json changes = Json::array();
  for (const std::string& name : names) {
    const Json was = orNull(before, name), is = orNull(after, name);
    if (was != is) changes.push_back({{called, name}, {"before", was}, {"after", is}});
  }
  return changes;
}

Texts textsOf(const Json& state) {
  Texts texts;
  for (const auto& [section, text] : state.items()) texts[section] = text.get<std::string>();
  return texts;
}

Json notesOf(const std::vector<std::string>& missing) {
  Json notes = Json::array();
  for (size_t i = 0; i < missing.size() && i < kNotesShown; ++i) {
    notes.push_back("the sandbox's kernel lacks " + missing[i]);
  }
  if (missing.size() > kNotesShown) notes.push_back("and " + std::to_string(missing.size() - kNotesShown) + " more");
  return notes;
}

}  // namespace

void exportAppliance(const Session& session, const std::string& folder) {
  writeImage(*runningImage(session), folder + kImage);
  const std::vector<std::string> places = ownPlaces();
  exportFiles(folder + kFiles, places);
  exportFiles(folder + kFiles, {ownBooks()});
  writeFacts(folder + kFacts, {{"places", places}, {"tasks", livingTasks()}, {"kernel", exportKernel()}});
}

Json tryCommand(const std::string& folder, const std::vector<std::string>& command) {
  requireInside();
  const Image image = readImage(folder + kImage);
  const Json facts = readFacts(folder + kFacts);
  const auto places = facts.at("places").get<std::vector<std::string>>();
  importFiles(folder + kFiles);
  importKernel(facts.at("kernel"));
  ShmData* store = makeStore();
  memcpy(store, &*image, sizeof *store);
  replaceTasks(*store, facts.at("tasks"));
  const Json kernel = settledKernelState([&](const Json& state) { return hasItsOwn(facts.at("kernel"), state); });
  const Texts files = fileState(places);
  const int status = runCommand(command);
  return {{"exit", status},
          {"store", differenceJson(compare(*image, *store))},
          {"files", changesOf("path", files, fileState(places))},
          {"kernel", changesOf("section", textsOf(kernel), textsOf(settledKernelState()))},
          {"notes", notesOf(missingLines(facts.at("kernel"), kernel))}};
}

}  // namespace ctl::preview
