// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/watch/stats_watch.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <ctime>

#include "tools/ctl/moment.h"
#include "tools/ctl/watch/rates.h"
#include "tools/ctl/watch/same_store.h"
#include "tools/ctl/watch/spark.h"
#include "tools/ctl/watch/stop.h"

namespace ctl {
namespace {

constexpr size_t kKept = 500;  // samples, for the widest terminal
constexpr size_t kNameWidth = 20;
constexpr size_t kRateWidth = 14;
constexpr int kBits = 8;

// A sample with what is shown of it.
struct Sample {
  const Counters& counters;
  const Rates& rates;
};

Json rateJson(const std::optional<double>& rate) { return rate ? Json(std::round(*rate * 1000) / 1000) : Json(); }

Json sampleJson(const Sample& sample) {
  Json rates = Json::object();
  for (size_t i = 0; i < counterRows().size(); ++i) rates[counterRows()[i].name] = rateJson(sample.rates.of(i));
  Json gauges = Json::object();
  for (const GaugeRow& gauge : gaugeRows()) gauges[gauge.name] = gauge.read(sample.counters);
  return {{"time", momentText(time(nullptr))},
          {"reports", +sample.counters.statistics.accumulatedIntervals},
          {"engine", sample.rates.silent() ? "silent" : "reporting"},
          {"perSecond", rates},
          {"gauges", gauges}};
}

// "2026-11-22T05:10:00Z wanBytes=1200 wanPackets=3.5 wanDrops=- ...".
std::string sampleLine(const Sample& sample) {
  const Json json = sampleJson(sample);
  std::string line = json["time"].get<std::string>();
  for (const char* part : {"perSecond", "gauges"}) {
    for (const auto& [name, value] : json[part].items())
      line += " " + name + "=" + (value.is_null() ? "-" : value.dump());
  }
  return line;
}

const char* unitText(Unit unit) {
  switch (unit) {
    case Unit::kBytes: return "bit/s";
    case Unit::kPackets: return "pkt/s";
    case Unit::kSessions: return "1/s";
  }
  return "";
}

std::string rateText(const CounterRow& row, const std::optional<double>& rate) {
  if (!rate) return "-";
  return shortNumber(row.unit == Unit::kBytes ? *rate * kBits : *rate) + unitText(row.unit);
}

std::string padded(const std::string& text, size_t width) {
  return text.size() < width ? text + std::string(width - text.size(), ' ') : text.substr(0, width - 1) + " ";
}

struct Extent {
  size_t columns = 80;
  size_t lines = 24;
};

Extent extentOf(FILE* stream) {
  struct winsize size = {};
  if (ioctl(fileno(stream), TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) return {};
  return {size.ws_col, size.ws_row};
}

// The table: a heading, a row for each counter with its latest rates as bars, a row for each gauge.
class Table {
 public:
  Table() : history_(counterRows().size()), peaks_(counterRows().size()), wide_(terminalTakesUtf8()) {}

  void add(const Rates& rates) {
    for (size_t i = 0; i < history_.size(); ++i) {
      const std::optional<double> rate = rates.of(i);
      history_[i].push_back(rate);
      if (history_[i].size() > kKept) history_[i].pop_front();
      peaks_[i] = std::max(peaks_[i], rate.value_or(0));
    }
  }

  // From the first line of the last drawing on; what does not fit into the window is left out.
  std::string drawing(const Sample& sample, const Extent& extent) {
    std::vector<std::string> lines = rows(sample, extent.columns);
    lines.resize(std::min(lines.size(), std::max<size_t>(extent.lines, 2) - 1));
    std::string text = drawn_ == 0 ? "" : "\x1b[" + std::to_string(drawn_) + "A";
    for (const std::string& line : lines) text += "\r" + line + "\x1b[K\n";
    drawn_ = lines.size();
    return text + "\x1b[J";
  }

 private:
  static bool roomFor(size_t columns, size_t cells) { return columns >= kNameWidth + cells * kRateWidth; }

  std::string row(size_t i, const Sample& sample, size_t columns) const {
    const CounterRow& counter = counterRows()[i];
    std::string line = padded(counter.label, kNameWidth) + padded(rateText(counter, sample.rates.of(i)), kRateWidth);
    if (!roomFor(columns, 2)) return line.substr(0, columns);
    line += padded(rateText(counter, peaks_[i]), kRateWidth);
    const size_t left = columns - line.size();
    return left < 2 ? line : line + sparkLine(history_[i], left - 1, wide_);
  }

  static std::string gaugeRow(const GaugeRow& gauge, const Sample& sample, size_t columns) {
    return (padded(gauge.label, kNameWidth) + std::to_string(gauge.read(sample.counters))).substr(0, columns);
  }

  static std::string state(const Sample& sample) {
    char text[96];
    snprintf(text, sizeof text, "%llu reports, the last %.0f s ago%s",
             static_cast<unsigned long long>(sample.counters.statistics.accumulatedIntervals), sample.rates.silence(),
             sample.rates.silent() ? ": the engine is silent" : "");
    return text;
  }

  std::vector<std::string> rows(const Sample& sample, size_t columns) const {
    std::vector<std::string> lines = {
        (momentText(time(nullptr)) + "  " + state(sample)).substr(0, columns),
        (padded("", kNameWidth) + padded("now", kRateWidth) + "highest").substr(0, columns)};
    for (size_t i = 0; i < history_.size(); ++i) lines.push_back(row(i, sample, columns));
    for (const GaugeRow& gauge : gaugeRows()) lines.push_back(gaugeRow(gauge, sample, columns));
    return lines;
  }

  std::vector<std::deque<std::optional<double>>> history_;
  std::vector<double> peaks_;
  bool wide_;
  size_t drawn_ = 0;
};

// How a sample reaches its reader.
class Display {
 public:
  explicit Display(const Session& session)
      : session_(session), drawn_(session.forPeople() && isatty(fileno(session.out)) == 1) {}

  // Before there is a rate.
  void begin(const Sample& sample) {
    if (drawn_) session_.print(table_.drawing(sample, extentOf(session_.out)));
  }

  void show(const Sample& sample) {
    table_.add(sample.rates);
    if (drawn_) return session_.print(table_.drawing(sample, extentOf(session_.out)));
    session_.print(session_.forPeople() ? sampleLine(sample) + "\n" : session_.recordLine(sampleJson(sample)));
  }

 private:
  const Session& session_;
  bool drawn_;
  Table table_;
};

}  // namespace

void watchStats(const Session& session, const WatchLine& line) {
  requireStore(session);
  const SameStore store;
  Counters counters = readCounters(session);
  Rates rates(counters);
  Display display(session);
  display.begin({counters, rates});
  const Stop stop;
  for (int taken = 0; (line.samples == 0 || taken < line.samples) && stop.pause(line.seconds); ++taken) {
    store.require();
    counters = readCounters(session);
    rates.take(counters);
    display.show({counters, rates});
  }
}

}  // namespace ctl
