// SPDX-License-Identifier: Apache-2.0
// explain: what a change would do, found out by doing it in a sandbox copy of the present store.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>
#include <vector>

#include "kestrove/kestrove.h"
#include "tools/common/plain_text.h"
#include "tools/common/program.h"
#include "tools/ctl/commands.h"
#include "tools/ctl/explain_inside.h"

namespace ctl {
namespace {

struct ExplainLine {
  std::vector<std::string> words;
};

struct InsideLine {
  std::string image;
  std::vector<std::string> words;
};

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
  if (!session.forPeople()) return session.show(trace);
  std::string text;
  for (const Json& row : trace["effects"]) {
    char start[32];
    snprintf(start, sizeof start, "%-8s %-14s ", row["kind"].get<std::string>().c_str(),
             row["result"].get<std::string>().c_str());
    text += start + tools::escaped(row["effect"].get<std::string>()) + "\n";
  }
  session.print(text.empty() ? "nothing outside the store changes\n" : text);
}

bool plainFile(const std::string& path) {
  struct stat facts;
  return stat(path.c_str(), &facts) == 0 && S_ISREG(facts.st_mode);
}

// The files that a command names are shown in the sandbox, and named by their whole path: only a word that says so, or
// the one that load takes, is a file.
void showFiles(std::vector<std::string>& line, std::vector<std::string>& words) {
  bool loading = false;
  for (std::string& word : words) {
    const bool named = loading || word.find('/') != std::string::npos;
    loading = loading || word == "load";
    if (!named || !plainFile(word)) continue;
    std::unique_ptr<char, decltype(&free)> whole(realpath(word.c_str(), nullptr), free);
    if (!whole) continue;
    word = whole.get();
    line.insert(line.end(), {"--bind", word});
  }
}

void explain(const Session& session, const ExplainLine& given) {
  if (given.words.empty()) throw Refusal(kUsage, "a command to explain is needed");
  if (given.words.front() == "explain") throw Refusal(kUsage, "explain does not explain itself");
  requireStore(session);
  Scratch image;
  writeImage(image.path());
  std::vector<std::string> line = {needed("kestrove-sandbox", "../sandbox"), "--real", "--ports", "--bind",
                                   image.path()};
  std::vector<std::string> words = given.words;
  showFiles(line, words);
  line.insert(line.end(), {"--", tools::ownFolder() + "/kestrovectl", "explain-inside", image.path(), "--", "--source",
                           std::to_string(session.source), "--user", session.user});
  line.insert(line.end(), words.begin(), words.end());
  tools::Output output = tools::runForOutput(line);
  Json trace = Json::parse(output.text, nullptr, false);
  if (output.status != 0 || trace.is_discarded()) {
    throw Refusal(kSystem, "explain failed in its sandbox (status " + std::to_string(output.status) + ")");
  }
  show(session, trace);
  int status = trace["exit"].get<int>();
  if (status == 0) return;
  const std::string said = "the command itself ends with status " + std::to_string(status);
  throw Refusal(static_cast<Exit>(status), session.json ? "" : said);
}

void inside(const Session& session, const InsideLine& line) { explainInside(session, line.image, line.words); }

}  // namespace

std::vector<Command> explainCommands() {
  Command explaining = command(
      "explain", "What a change causes: commands, ioctls, netlink messages, files, signal, events, bits", explain,
      {several("COMMAND", &ExplainLine::words, takes::commandLine(), "A kestrovectl command with its arguments")},
      "explain COMMAND [ARGUMENT...]: a kestrovectl command with its arguments. The exit status is the command's.");
  Command hidden = command("explain-inside", "", inside,
                           {needed("IMAGE", &InsideLine::image, takes::file(), ""),
                            several("COMMAND", &InsideLine::words, takes::text(), "")});
  explaining.values.back().needed = hidden.values.back().needed = hidden.hidden = true;
  return {explaining, hidden};
}

}  // namespace ctl
