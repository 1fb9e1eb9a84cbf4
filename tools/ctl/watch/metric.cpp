// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/watch/metric.h"

#include <algorithm>
#include <charconv>

#include "tools/common/plain_text.h"

namespace ctl {
namespace {

constexpr char kBegin[] = "<!-- The families begin: printed by kestrovectl-metrics -->\n";
constexpr char kEnd[] = "<!-- The families end -->\n";

std::string seriesText(const char* name, const Labels& labels) {
  std::string text = name;
  for (size_t i = 0; i < labels.size(); ++i) {
    text += std::string(i == 0 ? "{" : ",") + labels[i].first + "=\"" + labelText(labels[i].second) + "\"";
  }
  return labels.empty() ? text : text + "}";
}

Metrics metricsOf(const MetricFamily& family, const MetricFacts& facts) {
  Metrics metrics;
  if (facts.store || !family.needsStore) family.fill(facts, metrics);
  return metrics;
}

std::string familyText(const MetricFamily& family, const Metrics& metrics) {
  if (metrics.all().empty()) return {};
  const std::string name = family.name;
  std::string text = "# HELP " + name + " " + family.help + "\n# TYPE " + name + " " + family.type + "\n";
  for (const Metric& metric : metrics.all()) text += seriesText(family.name, metric.labels) + " " + metric.value + "\n";
  return text;
}

// A number as it is printed; JSON has integers of 64 bits as well.
Json valueJson(const std::string& value) { return Json::parse(value, nullptr, false); }

Json metricJson(const Metric& metric) {
  Json labels = Json::object();
  for (const auto& [name, value] : metric.labels) labels[name] = value;
  return {{"labels", labels}, {"value", valueJson(metric.value)}};
}

}  // namespace

void Metrics::add(double value, Labels labels) {
  char text[64];
  const std::to_chars_result end = std::to_chars(text, text + sizeof text, value);
  put(std::string(text, end.ptr), std::move(labels));
}

void Metrics::put(std::string value, Labels labels) {
  const bool known = std::any_of(metrics_.begin(), metrics_.end(),
                                 [&labels](const Metric& metric) { return metric.labels == labels; });
  if (!known) metrics_.push_back({std::move(labels), std::move(value)});
}

std::string labelText(const std::string& value) {
  std::string text;
  for (size_t start = 0; start <= value.size();) {
    const size_t end = std::min(value.find('\n', start), value.size());
    for (const char c : tools::escaped(std::string_view(value).substr(start, end - start))) {
      if (c == '\\' || c == '"') text += '\\';
      text += c;
    }
    if (end < value.size()) text += "\\n";
    start = end + 1;
  }
  return text;
}

std::string metricsText(const MetricFacts& facts) {
  std::string text;
  for (const MetricFamily& family : metricFamilies()) text += familyText(family, metricsOf(family, facts));
  return text;
}

Json metricsJson(const MetricFacts& facts) {
  Json families = Json::array();
  for (const MetricFamily& family : metricFamilies()) {
    const Metrics metrics = metricsOf(family, facts);
    if (metrics.all().empty()) continue;
    Json rows = Json::array();
    for (const Metric& metric : metrics.all()) rows.push_back(metricJson(metric));
    families.push_back({{"name", family.name}, {"type", family.type}, {"help", family.help}, {"metrics", rows}});
  }
  return families;
}

std::string metricsReference() {
  std::string text = std::string(kBegin) + "| Family | Type | Meaning |\n|---|---|---|\n";
  for (const MetricFamily& family : metricFamilies()) {
    text += std::string("| `") + family.name + "` | " + family.type + " | " + family.help + " |\n";
  }
  return text + kEnd;
}

}  // namespace ctl
