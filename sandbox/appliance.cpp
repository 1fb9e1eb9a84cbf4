// SPDX-License-Identifier: Apache-2.0
#include "sandbox/appliance.h"

#include <sys/stat.h>

#include <string>

#include "sandbox/files.h"
#include "sandbox/stage.h"
#include "sandbox/tools.h"

namespace kestrove::sandbox {
namespace {

struct Folder {
  const char* path;
  mode_t mode;
  bool empty;  // whatever the machine has there stays out
};

constexpr Folder kFolders[] = {
    {"/etc/config", 0755, true},
    {"/root", 0700, false},
    {"/var/tmp", 01777, true},
    {"/var/lock", 01777, true},
    {"/var/log", 0755, false},
    {"/var/log/kestrove", 0755, true},
    {"/var/config", 0755, true},
    {"/var/net-snmp", 0755, true},
    {"/var/etc/config", 0755, true},
    {"/var/lib/dhcpcd", 0755, true},
    {"/usr/local/apache2/htdocs", 0755, true},
    {"/usr/local/apache2/logs", 0755, true},
    {"/old_dir/var/log/kestrove", 0755, true},
    {"/run/netns", 0755, true},
    {"/run/kestrove/answers", 0777, true},
};

// Files of the machine that the appliance rewrites. Copies, because an ordinary user's own root may not write what
// belongs to the machine's, even in an overlay.
constexpr const char* kOwnCopies[] = {"/etc/passwd", "/etc/group", "/etc/hosts", "/etc/resolv.conf"};

// What the machine keeps from an ordinary user begins empty.
constexpr const char* kEmptyFiles[] = {"/etc/.pwd.lock"};

void layFolder(const Folder& folder) {
  const std::string staged = placeFolder(folder.path, folder.mode);
  chmod(staged.c_str(), folder.mode);
  if (folder.empty) markEmpty(staged);
}

// The scripts of the image lie below its folder as they lie below the appliance's root.
void layImage(const std::string& from, const std::string& to) {
  for (const std::string& name : namesIn(from)) {
    std::string source = from + "/" + name;
    if (isFolder(source)) {
      layImage(source, to + "/" + name);
    } else {
      struct stat status = {};
      stat(source.c_str(), &status);
      copyFile(source, place(to + "/" + name), status.st_mode & 0777);
    }
  }
}

void layMarkers() {
  writeText(place(kMarkers + "/inside"), "", 0644);
  for (const char* log : {"/commands", "/syslog"}) {
    std::string path = place(kMarkers + log);
    writeText(path, "", 0666);
    chmod(path.c_str(), 0666);
  }
}

}  // namespace

void layAppliance(const Options& options) {
  for (const Folder& folder : kFolders) layFolder(folder);
  for (const char* path : kOwnCopies) copyFile(path, place(path), 0644);
  for (const char* path : kEmptyFiles) writeText(place(path), "", 0600);
  layMarkers();
  const std::string home = folderOf(options.program);
  layImage(home + "/image", "");
  layTools(home, options.record);
}

}  // namespace kestrove::sandbox
