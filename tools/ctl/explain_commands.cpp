// explain: what a change would do, found out by doing it in a sandbox copy of the present store.
#include <fcntl.h>
#include <sys/shm.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <vector>

#include "kestrove/kestrove.h"
#include "tools/common/program.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/trace/tracer.h"

namespace ctl {
namespace {

std::vector<std::string> command;
std::string imagePath;

// A file that is gone when the command ends.
class Scratch {
 public:
  Scratch() {
    char name[] = "/tmp/kestrovectl-explain-XXXXXX";
    int fd = mkstemp(name);
    if (fd == -1) throw Refusal(kSystem, std::string("scratch file: ") + strerror(errno));
    close(fd);
    path_ = name;
  }
  ~Scratch() { unlink(path_.c_str()); }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

void writeImage(const std::string& path) {
  std::string copy;
  accept(shm_lock(), "lock");
  copy.assign(reinterpret_cast<const char*>(shm), SHM_SIZE);
  shm_unlock();
  std::ofstream file(path, std::ios::binary);
  if (!file.write(copy.data(), static_cast<std::streamsize>(copy.size())).flush()) {
    throw Refusal(kSystem, path + ": cannot be written");
  }
}

std::string needed(const std::string& name, const std::string& folder = "") {
  std::string path = tools::findProgram(name, folder);
  if (path.empty()) throw Refusal(kSystem, name + " is missing, and explain needs it");
  return path;
}

// For a human reader the text stands last: blanks at its end are part of it.
void show(const Session& session, const Json& trace) {
  if (session.json) return session.show(trace);
  for (const Json& row : trace["effects"]) {
    fprintf(session.out, "%-8s %-14s %s\n", row["kind"].get<std::string>().c_str(),
            row["result"].get<std::string>().c_str(), row["effect"].get<std::string>().c_str());
  }
  if (trace["effects"].empty()) fputs("nothing outside the store changes\n", session.out);
}

void explain(const Session& session) {
  requireStore();
  if (command.front() == "explain") throw Refusal(kUsage, "explain does not explain itself");
  Scratch image;
  writeImage(image.path());
  std::vector<std::string> line = {
      needed("kestrove-sandbox", "../sandbox"), "--record",       "--ports",    "--bind", image.path(), "--",
      tools::ownFolder() + "/kestrovectl",      "explain-inside", image.path(), "--"};
  line.insert(line.end(), command.begin(), command.end());
  tools::Output output = tools::runForOutput(line);
  Json trace = Json::parse(output.text, nullptr, false);
  if (output.status != 0 || trace.is_discarded()) {
    throw Refusal(kSystem, "explain failed in its sandbox (status " + std::to_string(output.status) + ")");
  }
  show(session, trace);
  int status = trace["exit"].get<int>();
  if (status != 0) {
    throw Refusal(kRefused, "the command itself was refused (status " + std::to_string(status) + ")");
  }
}

// The store of this sandbox becomes the copy.
void makeStore() {
  std::ifstream file(imagePath, std::ios::binary);
  std::string image((std::istreambuf_iterator<char>(file)), {});
  if (image.size() != SHM_SIZE) throw Refusal(kSystem, imagePath + ": no image of a store");
  int id = shmget(SHM_KEY, SHM_SIZE, IPC_CREAT | IPC_EXCL | 0666);
  void* segment = id == -1 ? reinterpret_cast<void*>(-1) : shmat(id, nullptr, 0);
  if (segment == reinterpret_cast<void*>(-1) || create_lock_file() != 0) {
    throw Refusal(kSystem, std::string("copy of the store: ") + strerror(errno));
  }
  memcpy(segment, image.data(), image.size());
  shmdt(segment);
}

// Standard output carries the trace alone: what the command prints goes to standard error.
void explainInside(const Session& session) {
  if (access("/run/kestrove/inside", F_OK) != 0) throw Refusal(kRefused, "only inside the sandbox");
  makeStore();
  std::vector<std::string> line = {tools::ownFolder() + "/kestrovectl"};
  line.insert(line.end(), command.begin(), command.end());
  Trace trace = traceProgram(line);
  Json rows = Json::array();
  for (const Effect& effect : trace.effects) {
    rows.push_back({{"kind", effect.kind}, {"effect", effect.text}, {"result", effect.result}});
  }
  std::string text =
      Json({{"exit", trace.status}, {"effects", rows}}).dump(-1, ' ', false, Json::error_handler_t::replace);
  fwrite(text.data(), 1, text.size(), session.out);
}

}  // namespace

void addExplainCommand(CLI::App& app, Session& session) {
  CLI::App* explaining =
      app.add_subcommand("explain", "The commands, ioctls and netlink messages that a change causes");
  explaining->add_option("COMMAND", command, "A kestrovectl command with its arguments")->required();
  explaining->prefix_command();
  explaining->callback([&session, explaining] {
    for (const std::string& word : explaining->remaining()) command.push_back(word);
    explain(session);
  });

  CLI::App* inside = app.add_subcommand("explain-inside", "")->group("");
  inside->add_option("IMAGE", imagePath)->required();
  inside->add_option("COMMAND", command)->required();
  inside->callback([&session] { explainInside(session); });
}

}  // namespace ctl
