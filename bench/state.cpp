// SPDX-License-Identifier: Apache-2.0
// The saved script at full tables beside the same bytes formatted straight away, and a restore beside a shell script.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "bench/file_text.h"
#include "bench/floors.h"
#include "bench/full_tables.h"
#include "bench/turns.h"
#include "kestrove/kestrove.h"
#include "lifecycle/fresh.h"
#include "sys/format.h"

namespace {

using namespace kestrove::sys;

constexpr char kScript[] = "/usr/local/apache2/htdocs/state-now.txt";
constexpr char kFloorScript[] = "/usr/local/apache2/htdocs/floor.txt";

// Every other rule is of IPv6.
void changeFamily(FilterRule& rule) {
  rule.ipVersion = SHM_FAMILY_IPV6;
  memcpy(rule.srcAddr6, "\x20\x01\x0d\xb8\0\x1\0\x2", 8);
  memcpy(rule.srcAddr6 + 12, &rule.srcAddr, sizeof rule.srcAddr);
  rule.srcPrefixLen6 = rule.dstPrefixLen6 = 64;
}

void fillTables() {
  bench::fillRoutes();
  bench::fillRules();
  for (int i = 1; i < SHM_RULES; i += 2) changeFamily(shm->filterTable.rule[i]);
}

void emptyTables() {
  kestrove::layOutRouteTables();
  kestrove::resetRuleTable();
}

// The settings that the floor writes, whatever the measurements before this one left.
class PlainSettings {
 public:
  PlainSettings() : before_(shm->config) {
    shm->config = {};
    shm->config.loggingOperState = SHM_ON;
  }
  ~PlainSettings() { shm->config = before_; }
  PlainSettings(const PlainSettings&) = delete;
  PlainSettings& operator=(const PlainSettings&) = delete;

 private:
  ConfigRecord before_;
};

// Just what the tables above need, line by line, into one buffer.
class Floor {
 public:
  explicit Floor(const char* path) : file_(open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644)) {}
  ~Floor() {
    flush();
    close(file_);
  }

  void rates() {
    at_ = putText(at_,
                  "set rateLimit WAN 0\nset mtu WAN 0\nset rateLimit LAN 0\nset mtu LAN 0\n"
                  "set interfaceMode single 0 0\nset prb off\nset pbrAddress LAN 0.0.0.0\nset pbrMask LAN 0.0.0.0\n"
                  "set pbrAddress WAN 0.0.0.0\nset pbrMask WAN 0.0.0.0\n\nset sshInterface off\n"
                  "set httpInterface off\nset compression off\nset logging on\nset accelerationMode \n"
                  "set linkSetting LAN 10baseT\nset linkSetting WAN 10baseT\n");
  }
  void route(const RouteEntry& route) {
    at_ = putQuad(putText(at_, "route add "), route.destination);
    at_ = putQuad(putText(at_, " "), route.netmask);
    at_ = putQuad(putText(at_, " "), route.gateway);
    end(" \n");
  }
  void route6(const Route6Entry& route) {
    at_ = putIp6(putText(at_, "route6 add "), route.destination);
    at_ = putNumber(putText(at_, " "), static_cast<int32_t>(route.prefixLength));
    at_ = putIp6(putText(at_, " "), route.gateway);
    end(" \n");
  }
  void rule(int number, const FilterRule& rule) {
    at_ = putNumber(putText(at_, "rule add "), number);
    if (rule.ipVersion == 4) {
      at_ = putQuad(putText(at_, " -ipVersion 4 -sa "), rule.srcAddr);
      at_ = putQuad(putText(at_, "/"), rule.srcMask);
      at_ = putQuad(putText(at_, " -da "), rule.dstAddr);
      at_ = putQuad(putText(at_, "/"), rule.dstMask);
    } else {
      at_ = putIp6(putText(at_, " -ipVersion 6 -sa6 "), rule.srcAddr6);
      at_ = putNumber(putText(at_, "/"), static_cast<int32_t>(rule.srcPrefixLen6));
      at_ = putIp6(putText(at_, " -da6 "), rule.dstAddr6);
      at_ = putNumber(putText(at_, "/"), static_cast<int32_t>(rule.dstPrefixLen6));
    }
    at_ = putNumber(putText(at_, " -proto TCP -srcPort "), rule.srcPort);
    at_ = putNumber(putText(at_, " -srcPortEnd "), rule.srcPortEnd);
    at_ = putNumber(putText(at_, " -destPort "), rule.destPort);
    at_ = putNumber(putText(at_, " -destPortEnd "), rule.destPortEnd);
    at_ = putNumber(putText(at_, " -p "), rule.priority);
    at_ = putNumber(putText(at_, " -bw "), rule.bandwidth / 1000);
    end(" \n");
  }

 private:
  void end(const char* text) {
    at_ = putText(at_, text);
    if (buffer_ + sizeof buffer_ - at_ < 1024) flush();
  }
  void flush() {
    if (write(file_, buffer_, static_cast<size_t>(at_ - buffer_)) != at_ - buffer_) exit(2);
    at_ = buffer_;
  }

  int file_;
  char buffer_[64 * 1024];
  char* at_ = buffer_;
};

void writeFloor() {
  Floor floor(kFloorScript);
  floor.rates();
  for (const RouteEntry& route : shm->routes.slot) floor.route(route);
  for (const Route6Entry& route : shm->routes6.slot) floor.route6(route);
  for (int i = 0; i < SHM_RULES - 1; ++i) floor.rule(i + 1, shm->filterTable.rule[i]);
}

void stateScript(benchmark::State& state) {
  PlainSettings settings;
  fillTables();
  auto work = [&state] {
    if (__saveCliState("now") != 0) state.SkipWithError("refused");
  };
  bench::inTurns(state, bench::byProcessor(work), bench::byProcessor(writeFloor));
  if (bench::fileText(kScript) != bench::fileText(kFloorScript)) state.SkipWithError("the floor writes something else");
  emptyTables();
}
BENCH_ROW(stateScript)->Unit(benchmark::kMicrosecond);

// Each line has a shell of its own, in the library too: its exact text is what other programs of the appliance see.
constexpr const char* kRestore[] = {
    "mkdir /usr/local/apache2/htdocs/state/ > /dev/null 2>&1",
    "/usr/bin/unzip -o -qq /usr/local/apache2/htdocs/config*.zip -d /usr/local/apache2/htdocs/state/",
    "cp /usr/local/apache2/htdocs/state/kestrove.conf.configSaved /etc/config/kestrove.conf > /dev/null 2>&1",
    "cp /usr/local/apache2/htdocs/state/snmpd.conf.configSaved /var/config/snmpd.conf > /dev/null 2>&1",
    "cp /usr/local/apache2/htdocs/state/varsnmpd.conf.configSaved /var/net-snmp/snmpd.conf > /dev/null 2>&1",
    "cp /usr/local/apache2/htdocs/state/passwd.configSaved /etc/passwd > /dev/null 2>&1",
    "rm -f /usr/local/apache2/htdocs/state/* > /dev/null 2>&1",
};

void prepareRestore() {
  bench::useTheRealShell();
  for (const char* path : {"/var/config/snmpd.conf", "/var/net-snmp/snmpd.conf"}) std::ofstream(path) << "agent\n";
  if (save_shared_memory() != 0 || saveSystemState(0, "--") != 0) exit(2);
}

// The folder is there from the first time on, so its mkdir fails, as it may.
void runTheLines() {
  int failures = 0;
  for (const char* line : kRestore) failures += system(line) != 0;
  if (failures > 1) exit(2);
}

void restore(benchmark::State& state) {
  prepareRestore();
  auto work = [&state] {
    if (loadSystemState(0, "--") != 0) state.SkipWithError("failed");
  };
  bench::inTurns(state, bench::byClock(work), bench::byClock(runTheLines));
}
BENCH_ROW(restore)->Unit(benchmark::kMillisecond);

}  // namespace
