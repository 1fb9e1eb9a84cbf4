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
#include "tools/ctl/trace.h"

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

void explain(const Session& session) {
  requireStore();
  if (command.front() == "explain") throw Refusal(kUsage, "explain does not explain itself");
  Scratch image;
  writeImage(image.path());
  std::vector<std::string> line = {
      needed("kestrove-sandbox", "../sandbox"), "--record",       "--ports",    "--bind", image.path(), "--",
      tools::ownFolder() + "/kestrovectl",      "explain-inside", image.path(), "--"};
  line.insert(line.end(), command.begin(), command.end());
  needed("strace");
  tools::Output output = tools::runForOutput(line);
  std::vector<Effect> effects = effectsOf(output.text);
  Json rows = Json::array();
  for (const Effect& effect : effects) rows.push_back({{"kind", effect.kind}, {"effect", effect.text}});
  if (session.json) {
    session.show({{"exit", output.status}, {"effects", rows}});
  } else {
    for (const Effect& effect : effects) fprintf(session.out, "%-8s %s\n", effect.kind.c_str(), effect.text.c_str());
    if (effects.empty()) fputs("nothing outside the store changes\n", session.out);
  }
  if (output.status != 0)
    throw Refusal(kRefused, "the command itself was refused (status " + std::to_string(output.status) + ")");
}

// Makes the copied store the sandbox's own, then traces the command. Standard output carries the trace alone.
void explainInside(const Session& session) {
  if (access("/run/kestrove/inside", F_OK) != 0) throw Refusal(kRefused, "only inside the sandbox");
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

  std::vector<std::string> line = {"strace",
                                   "-f",
                                   "-q",
                                   "-s",
                                   "4096",
                                   "-e",
                                   "signal=none",
                                   "-e",
                                   "trace=execve,ioctl,sendmsg,kill",
                                   "-o",
                                   "/dev/fd/" + std::to_string(fileno(session.out)),
                                   tools::ownFolder() + "/kestrovectl"};
  line.insert(line.end(), command.begin(), command.end());
  std::vector<char*> arguments;
  for (std::string& word : line) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  execvp(arguments[0], arguments.data());
  throw Refusal(kSystem, std::string("strace: ") + strerror(errno));
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
