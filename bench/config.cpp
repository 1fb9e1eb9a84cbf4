// SPDX-License-Identifier: Apache-2.0
// Saving and loading the configuration at full tables, each beside the work that cannot be avoided.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <memory>
#include <string>

#include "bench/file_text.h"
#include "bench/full_tables.h"
#include "bench/turns.h"
#include "kestrove/kestrove.h"
#include "lifecycle/fresh.h"
#include "store/text.h"
#include "sys/format.h"
#include "sys/replace.h"

namespace {

using namespace kestrove;

constexpr int kRules = SHM_RULES - 1;  // and the default rule, which is not in the file
enum { kMemory, kDisk };
constexpr const char* kFiles[] = {
    "/tmp/bench.conf",
    "/etc/config/bench.conf",  // on disk when the sandbox keeps its state there
};

// Full tables for a scope, saved to a file of their own; the rows of the file are there from the beginning.
class FullStore {
 public:
  explicit FullStore(const char* path) {
    memcpy(ordinaryFile_, shm->config.configFileName, sizeof ordinaryFile_);
    setField(shm->config.configFileName, path);
    bench::fillRoutes();
    bench::fillRules();
    if (save_shared_memory() != 0) exit(2);
  }
  ~FullStore() {
    memcpy(shm->config.configFileName, ordinaryFile_, sizeof ordinaryFile_);
    layOutRouteTables();
    resetRuleTable();
  }
  FullStore(const FullStore&) = delete;
  FullStore& operator=(const FullStore&) = delete;

 private:
  char ordinaryFile_[sizeof shm->config.configFileName];
};

// Saving by hand: lines of fixed columns laid out once, numbers put at their places with the quickest formatting there
// is.

class HandWriter {
 public:
  explicit HandWriter(sys::Replacement& file) : file_(file) {}
  char* line(const char* pattern, size_t length) {
    if (used_ + length > sizeof buffer_) flush();
    char* at = buffer_ + used_;
    memcpy(at, pattern, length);
    used_ += length;
    return at;
  }
  bool flush() {
    bool good = file_.write(buffer_, used_);
    used_ = 0;
    return good;
  }

 private:
  sys::Replacement& file_;
  size_t used_ = 0;
  char buffer_[64 * 1024];
};

struct Pattern {
  char text[256];
  size_t length;
};

template <typename... Arguments>
Pattern patternOf(const char* format, Arguments... arguments) {
  Pattern pattern;
  pattern.length = static_cast<size_t>(snprintf(pattern.text, sizeof pattern.text, format, arguments...));
  return pattern;
}

void writeRulesByHand(HandWriter& out) {
  Pattern pattern = patternOf("%-25s %-16s %-16s %-16s %-16s %-9s %-9s %-9s %-9s %-9s%-9s %6s %-9s %-9s %-9s\n",
                              "SELEC_ACCEL", "", "", "", "", "", "", "", "", "", "", "NONE", "", "", "");
  for (int i = 0; i < kRules; ++i) {
    const FilterRule& rule = shm->filterTable.rule[i];
    char* at = out.line(pattern.text, pattern.length);
    sys::putQuad(at + 26, rule.srcAddr);
    sys::putQuad(at + 43, rule.srcMask);
    sys::putQuad(at + 60, rule.dstAddr);
    sys::putQuad(at + 77, rule.dstMask);
    sys::putNumber(at + 94, static_cast<int32_t>(rule.proto));
    sys::putNumber(at + 104, rule.srcPort);
    sys::putNumber(at + 114, rule.srcPortEnd);
    sys::putNumber(at + 124, rule.destPort);
    sys::putNumber(at + 134, rule.destPortEnd);
    sys::putNumber(at + 143, rule.priority);
    sys::putNumber(at + 160, rule.bandwidth);
    sys::putNumber(at + 170, static_cast<int32_t>(rule.accel));
    sys::putNumber(at + 180, static_cast<int32_t>(rule.ruleAction));
  }
}

void writeRoutesByHand(HandWriter& out) {
  Pattern pattern = patternOf("%-25s %-18s %-18s %-18s %-18s \n", "ROUTE", "", "", "", "");
  for (const RouteEntry& route : shm->routes.slot) {
    char* at = out.line(pattern.text, pattern.length);
    sys::putQuad(at + 26, route.destination);
    sys::putQuad(at + 45, route.netmask);
    sys::putQuad(at + 64, route.gateway);
    sys::putNumber(at + 83, static_cast<int32_t>(route.status));
  }
  Pattern pattern6 = patternOf("%-25s %-32s %-3s %-32s %-18s \n", "ROUTE6", "", "", "", "");
  for (const Route6Entry& route : shm->routes6.slot) {
    char* at = out.line(pattern6.text, pattern6.length);
    sys::putIp6(at + 26, route.destination);
    sys::putNumber(at + 59, static_cast<int32_t>(route.prefixLength));
    sys::putIp6(at + 63, route.gateway);
    sys::putNumber(at + 96, static_cast<int32_t>(route.status));
  }
}

// The lines before the tables are taken ready-made from the saved file.
std::string scalarLines(const std::string& saved) { return saved.substr(0, saved.find("\nROUTE ") + 1); }

void saveByHand(const char* path, const std::string& scalars) {
  sys::Replacement file(path);
  HandWriter out(file);
  memcpy(out.line(scalars.data(), scalars.size()), scalars.data(), scalars.size());
  writeRoutesByHand(out);
  writeRulesByHand(out);
  if (!out.flush() || !file.commit()) exit(2);
}

void save(benchmark::State& state) {
  const char* path = kFiles[state.range(0)];
  FullStore store(path);
  std::string saved = bench::fileText(path);
  std::string scalars = scalarLines(saved);
  auto work = [&state] {
    if (save_shared_memory() != 0) state.SkipWithError("not saved");
  };
  bench::inTurns(state, bench::byProcessor(work), bench::byProcessor([&] { saveByHand(path, scalars); }));
  if (bench::fileText(path) != saved) state.SkipWithError("the floor writes another file");
}
BENCH_ROW(save)->Arg(kMemory)->Arg(kDisk);

bool startsNumber(char c) { return (c >= '0' && c <= '9') || c == '-'; }
bool insideWord(char c) { return c > ' '; }

// Once for each word that begins as a number does.
long sumOfNumbers(const char* text) {
  long sum = 0;
  while (*text) {
    if (startsNumber(*text)) sum += strtol(text, nullptr, 10);
    while (insideWord(*text)) ++text;
    while (*text && !insideWord(*text)) ++text;
  }
  return sum;
}

// The whole text, read at once into memory that is kept.
class ReadByHand {
 public:
  explicit ReadByHand(const char* path)
      : path_(path), size_(bench::fileText(path).size()), text_(new char[size_ + 1]()) {}
  void run() {
    int fd = open(path_, O_RDONLY | O_CLOEXEC);
    if (read(fd, text_.get(), size_) != static_cast<ssize_t>(size_)) exit(2);
    close(fd);
    benchmark::DoNotOptimize(sumOfNumbers(text_.get()));
  }

 private:
  const char* path_;
  size_t size_;
  std::unique_ptr<char[]> text_;
};

// Emptying the tables is part of it: pausing the clock costs more.
void load(benchmark::State& state) {
  const char* path = kFiles[state.range(0)];
  FullStore store(path);
  ReadByHand floor(path);
  auto work = [&state, path] {
    layOutRouteTables();
    resetRuleTable();
    if (load_shared_memory(path) != 0) state.SkipWithError("not loaded");
  };
  bench::inTurns(state, bench::byProcessor(work), bench::byProcessor([&floor] { floor.run(); }));
  if (shm->filterTable.ruleCount != kRules + 1) state.SkipWithError("rules are missing");
}
BENCH_ROW(load)->Arg(kMemory)->Arg(kDisk);

}  // namespace
