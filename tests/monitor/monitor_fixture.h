// SPDX-License-Identifier: Apache-2.0
// The monitor as a process of its own, beside the store.
#pragma once

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/program.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {

constexpr char kEngine[] = "kestrove=" KESTROVE_SIM " --interval 0";

inline std::vector<pid_t> processesNamed(const std::string& name) {
  std::vector<pid_t> found;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const int pid = atoi(entry.path().filename().c_str());
    if (pid > 0 && readFile(entry.path() / "comm") == name + "\n") found.push_back(pid);
  }
  return found;
}

class MonitorTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    shm->config.kestroveOperState = SHM_ON;
    shm->config.sshdOperState = shm->config.snmpOperState = shm->config.httpOperState = SHM_OFF;
  }

  // Without options the stand-in is its engine.
  void start(const Words& options = {"--task", kEngine}) { monitor_ = std::make_unique<Program>(monitorWith(options)); }
  void startWithout(const std::string& right) {
    monitor_ = std::make_unique<Program>(withoutRight(right, monitorWith({"--task", kEngine})));
  }
  static Words monitorWith(const Words& options) {
    Words words = {KESTROVE_MONITOR, "--folder", "/tmp/monitor", "--metrics", "/tmp/metrics.prom", "--every", "1"};
    words.insert(words.end(), options.begin(), options.end());
    return words;
  }
  static pid_t slot(int task) { return shm->taskPids[task]; }
  static pid_t engine() { return slot(SHM_TASK_ENGINE); }
  // Another engine than that one has its slot.
  static pid_t engineAfter(pid_t before) {
    eventually([&] { return engine() != before && lives(engine()); });
    return engine();
  }
  static bool said(const std::string& text) {
    return eventually([&] { return times(text) > 0; });
  }
  static long times(const std::string& text) { return timesLogged(text); }
  static long events(uint32_t id) {
    const auto& log = shm->eventLog.record;
    return std::ranges::count_if(log, [&](const auto& record) { return record.eventId == id; });
  }

  std::unique_ptr<Program> monitor_;
};

// What a service manager hears.
class ManagersEar {
 public:
  ManagersEar() : socket_(::socket(AF_UNIX, SOCK_DGRAM, 0)) {
    struct sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    strcpy(address.sun_path, kPath);
    unlink(kPath);
    bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address);
    struct timeval patience = {kPatience / 1000, 0};
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    setenv("NOTIFY_SOCKET", kPath, 1);
  }
  ~ManagersEar() {
    close(socket_);
    for (const char* name : {"NOTIFY_SOCKET", "WATCHDOG_USEC", "WATCHDOG_PID"}) unsetenv(name);
  }
  std::string hear() const {
    char words[256] = "";
    const ssize_t length = recv(socket_, words, sizeof words - 1, 0);
    return length < 0 ? "silence" : std::string(words, static_cast<size_t>(length));
  }

 private:
  static constexpr char kPath[] = "/tmp/manager";
  int socket_;
};

}  // namespace kestrove::testing
