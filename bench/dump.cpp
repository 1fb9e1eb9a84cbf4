// SPDX-License-Identifier: Apache-2.0
// The whole dump of full tables and a full event log, beside the same bytes put together by hand and written in large
// pieces, with a lock pair for each event.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <string>

#include "bench/file_text.h"
#include "bench/floors.h"
#include "bench/full_tables.h"
#include "bench/turns.h"
#include "kestrove/kestrove.h"
#include "sys/format.h"

namespace {

namespace sys = kestrove::sys;

constexpr char kWorkFile[] = "/tmp/dump";
constexpr char kFloorFile[] = "/tmp/floor";

// The floor knows what it will print: every column has its width, every word its length.
class Floor {
 public:
  // The parts of the dump that do not grow with the tables are copied.
  explicit Floor(const std::string& dump) {
    size_t routes = dump.find("Row Status\n") + strlen("Row Status\n");
    size_t heading6 = dump.find("-->   IPv6"), routes6 = dump.find("Row Status\n", heading6) + strlen("Row Status\n");
    size_t rules = dump.find("1     10.0.0.0"), log = dump.find("-->   Event"), events = dump.find("----\n", log + 20);
    events = dump.find('\n', dump.find("---------    ", log)) + 1;
    head_ = dump.substr(0, routes);
    between6_ = dump.substr(heading6, routes6 - heading6);
    betweenRules_ = dump.substr(dump.find("-->   Filter"), rules - dump.find("-->   Filter"));
    betweenEvents_ = dump.substr(log, events - log);
    tail_ = "-----------------\n\n";
  }

  void run() {
    fd_ = open(kFloorFile, O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    text(head_);
    for (const RouteEntry& route : shm->routes.slot) putRoute(route);
    text(between6_);
    for (const Route6Entry& route : shm->routes6.slot) putRoute6(route);
    text(betweenRules_);
    for (int32_t i = 0; i < SHM_RULES; ++i) putRule(shm->filterTable.rule[i], i);
    text(betweenEvents_);
    for (const EventRecord& record : shm->eventLog.record) putEvent(record);
    text(tail_);
    flush();
    close(fd_);
  }

 private:
  static constexpr size_t kPiece = 64 * 1024;
  static constexpr size_t kLongestLine = 512;

  void flush() {
    if (write(fd_, piece_, static_cast<size_t>(at_ - piece_)) < 0) exit(2);
    at_ = piece_;
  }
  void line() {
    if (at_ > piece_ + kPiece - kLongestLine) flush();
  }
  void text(std::string_view text) {
    line();
    at_ = sys::putText(at_, text);
  }

  void putRoute(const RouteEntry& route) {
    line();
    at_ = sys::putQuadColumn<19>(at_, route.destination);
    at_ = sys::putQuadColumn<19>(at_, route.netmask);
    at_ = sys::putQuadColumn<19>(at_, route.gateway);
    at_ = sys::putText(at_, "Active\n");
  }
  void putRoute6(const Route6Entry& route) {
    line();
    at_ = sys::putText(sys::putIp6(at_, route.destination), "/64 \n   ");
    at_ = sys::putText(sys::putIp6Column<40>(at_, route.gateway), "Active\n");
  }
  void putRule(const FilterRule& rule, int32_t index) {
    line();
    if (index > 0) *at_++ = '\n';
    at_ = sys::putNumberColumn<6>(at_, index + 1);
    at_ = sys::putQuadColumn<16>(at_, rule.srcAddr);
    at_ = sys::putQuadColumn<16>(at_, rule.dstAddr);
    at_ = sys::putNumberColumn<7>(sys::putText(at_, "TCP   "), rule.srcPort);
    at_ = sys::putNumberColumn<7>(at_, rule.destPort);
    at_ = sys::putNumberColumn<5>(at_, rule.priority);
    at_ = sys::putNumberColumn<7>(at_, rule.target);
    at_ = sys::putText(at_, "Opera     10000000       Active\n4     ");
    at_ = sys::putQuadColumn<16>(at_, rule.srcMask);
    at_ = sys::putQuadColumn<16>(at_, rule.dstMask);
    at_ = sys::putNumberColumn<7>(sys::putText(at_, "      "), rule.srcPortEnd);
    at_ = sys::putNumberColumn<7>(at_, rule.destPortEnd);
    memset(at_, ' ', 43);
    at_ = sys::putText(at_ + 43, "\n");
  }
  void putEvent(const EventRecord& record) {
    bench::lockPair();
    line();
    int32_t second = record.timestamp % 86400;
    if (record.timestamp - second != day_) newDay(record.timestamp - second);
    at_ = sys::putText(at_, {date_, sizeof "14-Mar-2011 " - 1});
    at_ = two(two(two(at_, second / 3600, ':'), second / 60 % 60, ':'), second % 60, ' ');
    at_ = sys::putText(at_, " Information  Serial    ");
    at_ = sys::putTextColumn<12>(at_, {record.userName, strnlen(record.userName, sizeof record.userName)});
    at_ = sys::putText(at_, "CLI Login\n");
  }
  static char* two(char* at, int32_t value, char behind) {
    at[0] = static_cast<char>('0' + value / 10);
    at[1] = static_cast<char>('0' + value % 10);
    at[2] = behind;
    return at + 3;
  }
  void newDay(int32_t day) {
    day_ = day;
    time_t when = day;
    struct tm parts;
    strftime(date_, sizeof date_, "%e-%b-%Y ", gmtime_r(&when, &parts));
  }

  std::string head_, between6_, betweenRules_, betweenEvents_, tail_;
  int fd_ = -1;
  int32_t day_ = -1;
  char date_[32];
  char piece_[kPiece];
  char* at_ = piece_;
};

void dumpTo(FILE* stream) {
  rewind(stream);
  dumpSharedMemory(stream);
  fflush(stream);
}

void dumping(benchmark::State& state) {
  bench::fillRoutes();
  bench::fillRules();
  bench::fillEvents();
  FILE* stream = fopen(kWorkFile, "w");
  dumpTo(stream);
  Floor floor(bench::fileText(kWorkFile));
  floor.run();
  if (bench::fileText(kWorkFile) != bench::fileText(kFloorFile)) state.SkipWithError("the floor prints other bytes");
  auto work = [stream] { dumpTo(stream); };
  bench::inTurns(state, bench::byProcessor(work), bench::byProcessor([&floor] { floor.run(); }));
  fclose(stream);
}
BENCH_ROW(dumping);

}  // namespace
