// SPDX-License-Identifier: Apache-2.0
// The subagent behind the machine's own agent, as a manager sees it.
#pragma once

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "tests/support/program.h"
#include "tests/support/syslog.h"
#include "tests/tools/programs.h"

namespace kestrove::testing {

constexpr char kObjects[] = ".1.3.6.1.4.1.32473.1.1";
constexpr char kWanRate[] = ".1.2.0";
constexpr char kConfiguration[] =
    "agentAddress udp:127.0.0.1:1161\n"
    "master agentx\n"
    "agentXSocket /tmp/agentx\n"
    "rocommunity public\n"
    "rwcommunity private\n"
    "trap2sink 127.0.0.1:1162 public\n";

// A manager's ear for notifications.
class TrapEar {
 public:
  TrapEar() : socket_(::socket(AF_INET, SOCK_DGRAM, 0)) {
    struct sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(1162);
    bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address);
    struct timeval patience = {kPatience / 1000, 0};
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  }
  ~TrapEar() { close(socket_); }
  // Whether one comes that holds these bytes.
  bool hears(const std::string& bytes) const {
    char trap[2048];
    for (ssize_t length; (length = recv(socket_, trap, sizeof trap, 0)) > 0;) {
      if (std::string(trap, static_cast<size_t>(length)).find(bytes) != std::string::npos) return true;
    }
    return false;
  }

 private:
  int socket_;
};

class SnmpTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    shm->config.snmpOperState = SHM_ON;
    shm->config.snmpVersion = 2;
    shm->config.wanLinkRate = 4096000;
    setenv("MIBS", "", 1);  // no module is read: numbers are enough
    startMaster(kConfiguration);
    ASSERT_TRUE(eventually([] { return fileExists("/tmp/agentx"); }));
    agent_ = std::make_unique<Program>(Words{KESTROVE_SNMP, "--master", "/tmp/agentx"});
    ASSERT_TRUE(answers());
  }
  void startMaster(const std::string& configuration) {
    writeFile("/tmp/snmpd.conf", configuration);
    master_ = std::make_unique<Program>(
        Words{"/usr/sbin/snmpd", "-f", "-Lf", "/tmp/snmpd.log", "-C", "-c", "/tmp/snmpd.conf"});
  }
  static bool answers() {
    return eventually([] { return get(kWanRate) == "4096000\n"; });
  }

  static std::string ask(const std::string& program, const std::string& community, const std::string& rest) {
    const Ran ran = run(program + " -v2c -c " + community + " -t 1 -r 20 -Oqvn 127.0.0.1:1161 " + rest);
    return ran.out + ran.err;
  }
  static std::string get(const std::string& place) { return ask("snmpget", "public", kObjects + place); }
  static std::string set(const std::string& place, const std::string& value) {
    return ask("snmpset", "private", kObjects + place + " " + value);
  }
  static long walked(const std::string& place) {
    const std::string out = ask("snmpbulkwalk -Cr50", "public", kObjects + place);
    return std::count(out.begin(), out.end(), '\n');
  }
  static long events(uint32_t id, uint32_t source) {
    const auto& log = shm->eventLog.record;
    return std::ranges::count_if(log, [&](const EventRecord& e) { return e.eventId == id && e.source == source; });
  }
  static bool said(const std::string& words) {
    return eventually([&] { return timesLogged(words) > 0; });
  }
  static bool logged(uint32_t id, uint32_t source) {
    return eventually([&] { return events(id, source) == 1; });
  }

  std::unique_ptr<Program> master_;
  std::unique_ptr<Program> agent_;
};

}  // namespace kestrove::testing
