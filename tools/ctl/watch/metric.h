// SPDX-License-Identifier: Apache-2.0
// Families of metrics, and the text that Prometheus reads of them (format 0.0.4).
#pragma once

#include <span>
#include <string>
#include <utility>
#include <vector>

#include "tools/ctl/watch/metric_facts.h"

namespace ctl {

using Labels = std::vector<std::pair<const char*, std::string>>;

struct Metric {
  Labels labels;
  std::string value;
};

// Of one family; a label set stands in it once, the first that comes.
class Metrics {
 public:
  void add(uint64_t value, Labels labels = {}) { put(std::to_string(value), std::move(labels)); }
  void add(int64_t value, Labels labels = {}) { put(std::to_string(value), std::move(labels)); }
  void add(uint32_t value, Labels labels = {}) { add(uint64_t{value}, std::move(labels)); }
  void add(int32_t value, Labels labels = {}) { add(int64_t{value}, std::move(labels)); }
  void add(bool value, Labels labels = {}) { add(uint64_t{value}, std::move(labels)); }
  void add(double value, Labels labels = {});
  const std::vector<Metric>& all() const { return metrics_; }

 private:
  void put(std::string value, Labels labels);

  std::vector<Metric> metrics_;
};

struct MetricFamily {
  const char* name;
  const char* type;  // "counter" or "gauge"
  const char* help;
  void (*fill)(const MetricFacts&, Metrics&);
  bool needsStore = true;
};

std::span<const MetricFamily> metricFamilies();

// What a label's value is between its quotes: what is no UTF-8 and control characters but the line feed as "\x1b".
std::string labelText(const std::string& value);

// All families that have something to say. HELP, TYPE and metrics of each stand together.
std::string metricsText(const MetricFacts& facts);
Json metricsJson(const MetricFacts& facts);

// The table of doc/metrics.md.
std::string metricsReference();

}  // namespace ctl
