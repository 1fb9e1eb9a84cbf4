// SPDX-License-Identifier: Apache-2.0
#include "sandbox/layers.h"

#include <stdio.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "sandbox/files.h"
#include "sandbox/hostmounts.h"
#include "sandbox/mounts.h"
#include "sandbox/report.h"
#include "sandbox/stage.h"

namespace kestrove::sandbox {
namespace {

// A folder of the machine and the folder that lies over it; none where the appliance has nothing of its own.
struct Layer {
  std::string path;
  std::string upper;
};

constexpr off_t kSmallFile = 1 << 20;

// What an ordinary user may not even show stays out.
void bindReadOnly(const std::string& from, const std::string& to) {
  if (mount(from.c_str(), to.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0) makeReadOnly(to);
}

std::string linkTarget(const std::string& path) {
  char target[4096];
  ssize_t length = readlink(path.c_str(), target, sizeof target);
  return length < 0 ? std::string() : std::string(target, static_cast<size_t>(length));
}

// Repeats a link or a file of the machine on the stage. What /etc holds is copied, so that it can be written.
void graftFile(const std::string& from, const std::string& to, const struct stat& status) {
  if (S_ISLNK(status.st_mode)) return link(linkTarget(from), to);
  bool copies = isBelow(from, "/etc") && S_ISREG(status.st_mode) && status.st_size <= kSmallFile;
  if (copies && copyFile(from, to, status.st_mode & 0777)) return;
  writeText(to, "", 0644);
  bindReadOnly(from, to);
}

// Without an overlay: adds to the folder `to` what the machine's folder holds and it does not.
void graft(const std::string& from, const std::string& to) {
  if (markedEmpty(to)) return;
  for (const std::string& name : namesIn(from)) {
    const std::string source = from + "/" + name;
    const std::string target = to + "/" + name;
    struct stat status;
    if (lstat(source.c_str(), &status) == -1) continue;
    if (!S_ISDIR(status.st_mode)) {
      if (!exists(target)) graftFile(source, target, status);
    } else if (isFolder(target)) {
      graft(source, target);
    } else {
      makeFolder(target, status.st_mode & 07777);
      bindReadOnly(source, target);
    }
  }
}

// Characters with a meaning in the options of an overlay.
bool fitsOption(const std::string& path) { return path.find_first_of(":,\\") == path.npos; }

bool mountOverlay(const Layer& layer) {
  static int count = 0;
  const std::string work = kStage + "/work/" + std::to_string(count++);
  makeFolder(work, 0755);
  const std::string options = "lowerdir=" + layer.path + ",upperdir=" + layer.upper + ",workdir=" + work;
  for (const char* extra : {"", ",userxattr"}) {
    if (mount("kestrove", (kRoot + layer.path).c_str(), "overlay", 0, (options + extra).c_str()) == 0) return true;
  }
  return false;
}

void mountLayer(const Layer& layer, bool overlay) {
  const std::string target = kRoot + layer.path;
  if (layer.upper.empty()) return bindReadOnly(layer.path, target);
  if (overlay && fitsOption(layer.path) && mountOverlay(layer)) return;
  graft(layer.path, layer.upper);
  bind(layer.upper, target);
}

// The entries of the machine's root. Every folder can be written; files and links are repeated at once.
std::vector<Layer> topLayers() {
  std::vector<Layer> layers;
  for (const std::string& name : namesIn("/")) {
    const std::string path = "/" + name;
    struct stat status;
    if (lstat(path.c_str(), &status) == -1) continue;
    if (S_ISDIR(status.st_mode)) {
      makeFolder(kRoot + path, status.st_mode & 07777);
      if (!isOwn(path) && (!namesIn(path).empty() || exists(kUpper + path)))
        layers.push_back({path, placeFolder(path)});
    } else {
      graftFile(path, kRoot + path, status);
    }
  }
  return layers;
}

// Takes the part of `upper` at a deeper mount point out of it, since an overlay spans one file system only.
std::string detach(const std::string& path) {
  static int count = 0;
  std::string part = kStage + "/part" + std::to_string(count++);
  const std::string upper = kUpper + path;
  if (rename(upper.c_str(), part.c_str()) == -1) giveUp("cannot move %s: %m", upper.c_str());
  makeFolder(upper, 0755);
  return part;
}

// File systems mounted deeper, parents first. A file mounted where the appliance has a file of its own stays out.
std::vector<Layer> deepLayers() {
  std::vector<Layer> layers;
  const std::vector<std::string> mounts = hostMounts();
  for (auto path = mounts.rbegin(); path != mounts.rend(); ++path) {
    if (folderOf(*path) == "/") continue;
    if (isFolder(kUpper + *path)) {
      layers.push_back({*path, detach(*path)});
    } else if (!exists(kUpper + *path)) {
      layers.push_back({*path, ""});
    }
  }
  return {layers.rbegin(), layers.rend()};
}

// Folders of the appliance that the machine does not have.
void addOwnFolders() {
  for (const std::string& name : namesIn(kUpper)) {
    const std::string path = kRoot + "/" + name;
    if (exists(path)) continue;
    makeFolder(path, 0755);
    bind(kUpper + "/" + name, path);
  }
}

}  // namespace

void mountLayers(bool overlay) {
  const std::vector<Layer> top = topLayers();
  addOwnFolders();
  const std::vector<Layer> deep = deepLayers();
  for (const Layer& layer : top) mountLayer(layer, overlay);
  for (const Layer& layer : deep) mountLayer(layer, overlay);
}

}  // namespace kestrove::sandbox
