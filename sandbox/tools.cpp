// SPDX-License-Identifier: Apache-2.0
#include "sandbox/tools.h"

#include <sys/stat.h>
#include <unistd.h>

#include "sandbox/files.h"
#include "sandbox/report.h"
#include "sandbox/stage.h"

namespace kestrove::sandbox {
namespace {

enum class Deed { kRun, kRecord, kBoth };

struct Tool {
  const char* path;
  Deed real;    // in real mode; a program that neither machine nor image has is recorded instead of run
  Deed record;  // in record mode
};

constexpr Tool kTools[] = {
    {"/bin/sh", Deed::kBoth, Deed::kBoth},
    {"/bin/date", Deed::kBoth, Deed::kRecord},  // the recorder itself keeps back what would set the clock
    {"/bin/cp", Deed::kRun, Deed::kBoth},
    {"/bin/rm", Deed::kRun, Deed::kBoth},
    {"/bin/mkdir", Deed::kRun, Deed::kBoth},
    {"/bin/cat", Deed::kRun, Deed::kBoth},
    {"/bin/kill", Deed::kRun, Deed::kBoth},
    {"/sbin/iptables-restore", Deed::kRun, Deed::kRecord},
    {"/sbin/iptables", Deed::kRun, Deed::kRecord},
    {"/sbin/ip6tables", Deed::kRun, Deed::kRecord},
    {"/sbin/ip", Deed::kRun, Deed::kRecord},
    {"/sbin/vconfig", Deed::kRun, Deed::kRecord},
    {"/sbin/ifconfig", Deed::kRun, Deed::kRecord},
    {"/sbin/dhcpcd", Deed::kRun, Deed::kRecord},
    {"/sbin/FtwWdgCtl", Deed::kRun, Deed::kRecord},
    {"/usr/sbin/brctl", Deed::kRun, Deed::kRecord},
    {"/usr/bin/arping", Deed::kRun, Deed::kRecord},
    {"/usr/bin/zip", Deed::kRun, Deed::kRecord},
    {"/usr/bin/unzip", Deed::kRun, Deed::kRecord},
    {"/usr/bin/killall", Deed::kRun, Deed::kRecord},
    {"/usr/bin/init-bridging", Deed::kRun, Deed::kRecord},
    {"/usr/bin/apacheConfig.sh", Deed::kRun, Deed::kRecord},
    {"/usr/bin/snmpdConfig.sh", Deed::kRun, Deed::kRecord},
    {"/usr/bin/sshdConfig.sh", Deed::kRun, Deed::kRecord},
    {"/bin/restartKestrove", Deed::kRun, Deed::kRecord},
    {"/bin/shm-init", Deed::kRun, Deed::kRecord},
    {"/usr/bin/mii-diag", Deed::kRecord, Deed::kRecord},
    {"/usr/local/squid/sbin/squid", Deed::kRecord, Deed::kRecord},
    {"/sbin/hwclock", Deed::kRecord, Deed::kRecord},
    {"/sbin/reboot", Deed::kRecord, Deed::kRecord},
    {"/sbin/poweroff", Deed::kRecord, Deed::kRecord},
    {"/sbin/halt", Deed::kRecord, Deed::kRecord},
    {"/sbin/shutdown", Deed::kRecord, Deed::kRecord},
};

constexpr const char* kBuilt[] = {"/bin/shm-init", "/bin/kestrovectl", "/bin/kestrove-monitor", "/bin/kestrove-sim"};

constexpr const char* kMachinePaths[] = {"/usr/local/sbin/", "/usr/local/bin/", "/usr/sbin/",
                                         "/usr/bin/",        "/sbin/",          "/bin/"};

// The machine's program of that name, all links followed; empty when it has none. Where the machine is an appliance of
// this kind itself, the program behind its recorder.
std::string machineProgram(const Tool& tool) {
  const std::string name = nameOf(tool.path);
  std::string found;
  for (const std::string& path : {kMarkers + "/real/" + name, std::string(tool.path)}) {
    if (found.empty() && access(path.c_str(), X_OK) == 0) found = path;
  }
  for (const char* folder : kMachinePaths) {
    const std::string path = folder + name;
    if (found.empty() && access(path.c_str(), X_OK) == 0) found = path;
  }
  return realPath(found);
}

class ToolLayer {
 public:
  ToolLayer(const std::string& home, bool record) : record_(record), recorder_(place(kMarkers + "/recorder")) {
    const std::string recorder = home + "/kestrove-recorder";
    if (!copyFile(recorder, recorder_, 0755)) giveUp("the recorder %s: %m", recorder.c_str());
    real_ = placeFolder(kMarkers + "/real");
  }

  void lay(const Tool& tool) const {
    const Deed deed = record_ ? tool.record : tool.real;
    const std::string target = place(tool.path);
    const std::string machine = machineProgram(tool);
    const bool there = exists(target) || access(tool.path, X_OK) == 0;
    if (deed == Deed::kRun && there) return;
    if (deed == Deed::kRun && !machine.empty()) return link(machine, target);
    if (deed == Deed::kBoth && !machine.empty()) keepReal(machine, nameOf(tool.path));
    layRecorder(target);
  }

 private:
  void layRecorder(const std::string& target) const {
    unlink(target.c_str());
    if (::link(recorder_.c_str(), target.c_str()) == -1) giveUp("cannot lay a recorder at %s: %m", target.c_str());
  }

  // A copy: the recorder may come to lie over the program itself.
  void keepReal(const std::string& machine, const std::string& name) const {
    copyFile(machine, real_ + "/" + name, 0755);
  }

  bool record_;
  std::string recorder_;
  std::string real_;
};

// The project's own programs, where this build or installation has them and the machine not already at their place.
void layBuilt(const std::string& folder) {
  for (const char* program : kBuilt) {
    const std::string built = realPath(folder + "/" + nameOf(program));
    if (!built.empty() && built != realPath(program)) link(built, place(program));
  }
}

}  // namespace

void layTools(const std::string& home, bool record) {
  layBuilt(home + "/programs");
  ToolLayer layer(home, record);
  for (const Tool& tool : kTools) layer.lay(tool);
}

}  // namespace kestrove::sandbox
