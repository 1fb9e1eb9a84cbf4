#include "sandbox/tools.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include "sandbox/files.h"
#include "sandbox/report.h"
#include "sandbox/stage.h"

namespace kestrove::sandbox {
namespace {

enum class Use {
  kNever,     // must not run: recorded in both modes
  kReal,      // runs in real mode, recorded in record mode
  kAlways,    // runs in both modes, recorded in record mode
  kRecorded,  // runs and is recorded in both modes
};

struct Tool {
  const char* path;
  Use use;
};

constexpr Tool kTools[] = {
    {"/bin/sh", Use::kRecorded},
    {"/bin/date", Use::kRecorded},  // the recorder itself keeps back what would set the clock
    {"/bin/cp", Use::kAlways},
    {"/bin/rm", Use::kAlways},
    {"/bin/mkdir", Use::kAlways},
    {"/bin/cat", Use::kAlways},
    {"/bin/kill", Use::kAlways},
    {"/sbin/iptables-restore", Use::kReal},
    {"/sbin/iptables", Use::kReal},
    {"/sbin/ip6tables", Use::kReal},
    {"/sbin/ip", Use::kReal},
    {"/sbin/vconfig", Use::kReal},
    {"/sbin/ifconfig", Use::kReal},
    {"/sbin/dhcpcd", Use::kReal},
    {"/sbin/FtwWdgCtl", Use::kReal},
    {"/usr/sbin/brctl", Use::kReal},
    {"/usr/bin/arping", Use::kReal},
    {"/usr/bin/zip", Use::kReal},
    {"/usr/bin/unzip", Use::kReal},
    {"/usr/bin/killall", Use::kReal},
    {"/usr/bin/init-bridging", Use::kReal},
    {"/usr/bin/apacheConfig.sh", Use::kReal},
    {"/usr/bin/snmpdConfig.sh", Use::kReal},
    {"/usr/bin/sshdConfig.sh", Use::kReal},
    {"/bin/restartKestrove", Use::kReal},
    {"/bin/shm-init", Use::kReal},
    {"/usr/bin/mii-diag", Use::kNever},
    {"/usr/local/squid/sbin/squid", Use::kNever},
    {"/sbin/hwclock", Use::kNever},
    {"/sbin/reboot", Use::kNever},
    {"/sbin/poweroff", Use::kNever},
    {"/sbin/halt", Use::kNever},
    {"/sbin/shutdown", Use::kNever},
};

constexpr const char* kBuilt[] = {"/bin/shm-init", "/bin/kestrovectl", "/bin/kestrove-sim"};

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
  char* real = found.empty() ? nullptr : realpath(found.c_str(), nullptr);
  std::string result = real ? real : "";
  free(real);
  return result;
}

class ToolLayer {
 public:
  ToolLayer(const std::string& home, bool record) : record_(record), recorder_(place(kMarkers + "/recorder")) {
    const std::string recorder = home + "/kestrove-recorder";
    if (!copyFile(recorder, recorder_, 0755)) giveUp("the recorder %s: %m", recorder.c_str());
    real_ = placeFolder(kMarkers + "/real");
  }

  void lay(const Tool& tool) const {
    std::string target = place(tool.path);
    std::string machine = machineProgram(tool);
    bool image = exists(target);
    if (tool.use == Use::kRecorded || (record_ && tool.use == Use::kAlways)) {
      if (!machine.empty()) keepReal(machine, nameOf(tool.path));
      layRecorder(target);
    } else if (record_ || tool.use == Use::kNever) {
      layRecorder(target);
    } else if (!image && machine.empty()) {
      layRecorder(target);
    } else if (!image && access(tool.path, X_OK) == -1) {
      link(machine, target);
    }
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

// The project's own programs, where this build has them.
void layBuilt(const std::string& folder) {
  for (const char* program : kBuilt) {
    for (const char* below : {"/", "/ctl/", "/init/", "/sim/"}) {
      const std::string built = folder + below + nameOf(program);
      if (access(built.c_str(), X_OK) == 0) link(built, place(program));
    }
  }
}

}  // namespace

void layTools(const std::string& home, bool record) {
  layBuilt(folderOf(home) + "/tools");
  ToolLayer layer(home, record);
  for (const Tool& tool : kTools) layer.lay(tool);
}

}  // namespace kestrove::sandbox
