// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/trace/file_calls.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

#include "tools/ctl/trace/memory.h"
#include "tools/ctl/trace/words.h"

namespace ctl {
namespace {

constexpr const char* kLeftOut[] = {"/dev/", "/proc/", "/var/lock/", "/run/lock/", "/etc/.pwd.lock"};

constexpr char kWrite[] = "write ";
constexpr char kCreate[] = "create ";
constexpr char kRemove[] = "remove ";
constexpr char kRename[] = "rename ";
constexpr char kTo[] = " to ";

std::string linkText(const std::string& link) {
  char text[PATH_MAX];
  const ssize_t length = readlink(link.c_str(), text, sizeof text);
  return length > 0 ? std::string(text, static_cast<size_t>(length)) : "";
}

// A path as the process means it: from the root, its folder or the folder behind a descriptor.
std::string pathOf(pid_t process, uint64_t folder, uint64_t place) {
  std::string path = Memory(process).text(place);
  if (path.empty() || path[0] == '/') return path;
  const std::string own = "/proc/" + std::to_string(process) + "/";
  const int fd = static_cast<int>(folder);
  return linkText(fd == AT_FDCWD ? own + "cwd" : own + "fd/" + std::to_string(fd)) + "/" + path;
}

bool leftOut(const std::string& path) {
  if (path.empty()) return true;
  for (const std::string start : kLeftOut) {
    if (path.starts_with(start)) return true;
  }
  return false;
}

std::optional<Effect> named(const char* deed, const std::string& path) {
  if (leftOut(path)) return std::nullopt;
  return Effect{"file", deed + path, ""};
}

constexpr uint64_t kHere = static_cast<uint64_t>(AT_FDCWD);

std::optional<Effect> opening(pid_t process, uint64_t folder, uint64_t path, uint64_t flags) {
  const bool reads = (flags & O_ACCMODE) == O_RDONLY;
  if (reads || (flags & O_TMPFILE) == O_TMPFILE) return std::nullopt;
  return named(flags & O_EXCL ? kCreate : kWrite, pathOf(process, folder, path));
}

std::optional<Effect> renaming(const std::string& from, const std::string& to) {
  if (leftOut(to)) return std::nullopt;
  return Effect{"file", kRename + from + kTo + to, ""};
}

using Arguments = const uint64_t (&)[6];

struct FileCall {
  uint64_t number;
  std::optional<Effect> (*effect)(pid_t, Arguments);
};

constexpr FileCall kCalls[] = {
    {SYS_open, [](pid_t process, Arguments a) { return opening(process, kHere, a[0], a[1]); }},
    {SYS_openat, [](pid_t process, Arguments a) { return opening(process, a[0], a[1], a[2]); }},
    {SYS_creat, [](pid_t process, Arguments a) { return named(kWrite, pathOf(process, kHere, a[0])); }},
    {SYS_rename,
     [](pid_t process, Arguments a) { return renaming(pathOf(process, kHere, a[0]), pathOf(process, kHere, a[1])); }},
    {SYS_renameat,
     [](pid_t process, Arguments a) { return renaming(pathOf(process, a[0], a[1]), pathOf(process, a[2], a[3])); }},
    {SYS_renameat2,
     [](pid_t process, Arguments a) { return renaming(pathOf(process, a[0], a[1]), pathOf(process, a[2], a[3])); }},
    {SYS_unlink, [](pid_t process, Arguments a) { return named(kRemove, pathOf(process, kHere, a[0])); }},
    {SYS_unlinkat, [](pid_t process, Arguments a) { return named(kRemove, pathOf(process, a[0], a[1])); }},
    {SYS_linkat, [](pid_t process, Arguments a) { return named(kCreate, pathOf(process, a[2], a[3])); }},
    {SYS_mkdir, [](pid_t process, Arguments a) { return named("make folder ", pathOf(process, kHere, a[0])); }},
    {SYS_mkdirat, [](pid_t process, Arguments a) { return named("make folder ", pathOf(process, a[0], a[1])); }},
};

void leaveOut(Effect& effect) { effect = {}; }

// An earlier effect with that text, or nothing.
Effect* earlier(std::vector<Effect>& effects, size_t index, const std::string& text) {
  for (size_t i = 0; i < index; ++i) {
    if (effects[i].kind == "file" && effects[i].text == text) return &effects[i];
  }
  return nullptr;
}

void settleRename(std::vector<Effect>& effects, size_t index) {
  const std::string paths = effects[index].text.substr(sizeof kRename - 1);
  const size_t between = paths.find(kTo);
  const std::string from = paths.substr(0, between);
  const std::string to = paths.substr(between + sizeof kTo - 1);
  Effect* made = earlier(effects, index, kCreate + from);
  if (!made) made = earlier(effects, index, kWrite + from);
  if (!made) return;
  leaveOut(*made);
  effects[index].text = kWrite + to;
  if (earlier(effects, index, kWrite + to)) leaveOut(effects[index]);
}

void settleRemoval(std::vector<Effect>& effects, size_t index) {
  Effect* made = earlier(effects, index, kCreate + effects[index].text.substr(sizeof kRemove - 1));
  if (!made) return;
  leaveOut(*made);
  leaveOut(effects[index]);
}

}  // namespace

std::optional<Effect> fileEffect(pid_t process, const SystemCall& call) {
  for (const FileCall& row : kCalls) {
    if (row.number == call.number) return row.effect(process, call.arguments);
  }
  return std::nullopt;
}

void settleFile(std::vector<Effect>& effects, size_t index, int64_t answer) {
  Effect& effect = effects[index];
  effect.result = answerText(answer > 0 ? 0 : answer);  // the number of a descriptor tells nothing
  // Whether it was there is how programs ask before they make, or clear up.
  if (answer == -ENOENT || answer == -EEXIST) return leaveOut(effect);
  if (answer < 0) return;
  if (earlier(effects, index, effect.text)) return leaveOut(effect);
  if (effect.text.starts_with(kRename)) settleRename(effects, index);
  if (effect.text.starts_with(kRemove)) settleRemoval(effects, index);
}

}  // namespace ctl
