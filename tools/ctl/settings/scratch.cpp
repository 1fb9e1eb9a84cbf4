// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/settings/scratch.h"

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string>

#include "tools/ctl/session.h"

namespace ctl {
namespace {

namespace fs = std::filesystem;

constexpr char kRun[] = "/run";
constexpr char kOriginals[] = "/run/.originals";
constexpr uintmax_t kLongestCopy = 1 << 20;  // the image of the event log is a third of it

constexpr const char* kLaidOver[] = {"/etc", "/var", "/tmp"};
// Folders that become folders; every other one is a link to the original.
constexpr const char* kOpened[] = {"/etc", "/var", "/var/log", "/var/lib", "/tmp"};
// Folders that are copied with all below, and the one whose files are copied.
constexpr const char* kCopied[] = {"/etc/config",   "/var/log/kestrove", "/var/config",
                                   "/var/net-snmp", "/var/etc",          "/var/lib/dhcpcd"};
constexpr char kFilesCopied[] = "/etc";
// What belongs to processes that are not there.
constexpr const char* kEmpty[] = {"/var/lock", "/var/run"};
constexpr const char* kLeftOut[] = {"/var/log/curpid"};

template <size_t N>
bool among(const std::string& path, const char* const (&list)[N]) {
  return std::find(std::begin(list), std::end(list), path) != std::end(list);
}

bool copied(const std::string& path) {
  return std::any_of(std::begin(kCopied), std::end(kCopied),
                     [&path](const std::string& folder) { return path == folder || path.starts_with(folder + "/"); });
}

[[noreturn]] void fail(const std::string& what) { throw systemRefusal("a copy of the appliance: " + what, errno); }

void mountScratch(const std::string& path) {
  struct stat facts;
  if (stat(path.c_str(), &facts) != 0) fail(path);
  char mode[32];
  snprintf(mode, sizeof mode, "mode=%o", facts.st_mode & 07777);
  if (mount("scratch", path.c_str(), "tmpfs", MS_NOSUID | MS_NODEV, mode) != 0) fail(path);
}

std::string originalOf(const std::string& path) { return kOriginals + path; }

// Who may read what stays as it was, as far as this process may say so.
void copyRights(const std::string& path) {
  struct stat facts;
  if (stat(originalOf(path).c_str(), &facts) != 0) return;
  if (chown(path.c_str(), facts.st_uid, facts.st_gid) != 0) errno = 0;
  chmod(path.c_str(), facts.st_mode & 07777);
}

class Layer {
 public:
  void folder(const std::string& path) const {
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(originalOf(path), error)) {
      this->entry(entry, path + "/" + entry.path().filename().string());
    }
  }

 private:
  void entry(const fs::directory_entry& entry, const std::string& path) const {
    std::error_code error;
    if (among(path, kLeftOut)) return;
    if (entry.is_symlink(error)) {
      fs::copy_symlink(entry.path(), path, error);
    } else if (entry.is_directory(error)) {
      below(path);
    } else if (entry.is_regular_file(error)) {
      file(entry, path);
    }
  }

  void below(const std::string& path) const {
    const bool empty = among(path, kEmpty);
    if (!empty && !among(path, kOpened) && !copied(path)) return link(path);
    if (mkdir(path.c_str(), 0755) != 0) fail(path);
    copyRights(path);
    if (!empty) folder(path);
  }

  void file(const fs::directory_entry& entry, const std::string& path) const {
    std::error_code error;
    const std::string folder = fs::path(path).parent_path().string();
    const bool wanted = folder == kFilesCopied || copied(folder);
    if (!wanted || entry.file_size(error) > kLongestCopy || error) return link(path);
    if (!fs::copy_file(entry.path(), path, error)) return;  // what may not be read is not there
    copyRights(path);
  }

  static void link(const std::string& path) {
    if (symlink(originalOf(path).c_str(), path.c_str()) != 0) fail(path);
  }
};

void keepOriginal(const std::string& path) {
  const std::string original = originalOf(path);
  if (mkdir(original.c_str(), 0755) != 0) fail(original);
  if (mount(path.c_str(), original.c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0) fail(path);
}

}  // namespace

void layScratch() {
  mountScratch(kRun);
  if (mkdir(kOriginals, 0755) != 0 || mkdir("/run/lock", 01777) != 0) fail(kRun);
  for (const char* path : kLaidOver) {
    keepOriginal(path);
    mountScratch(path);
    Layer().folder(path);
  }
}

}  // namespace ctl
