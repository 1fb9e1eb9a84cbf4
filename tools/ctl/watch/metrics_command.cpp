// SPDX-License-Identifier: Apache-2.0
// metrics.
#include "tools/ctl/commands.h"
#include "tools/ctl/watch/metric.h"
#include "tools/ctl/watch/new_file.h"

namespace ctl {
namespace {

constexpr mode_t kForEverybody = 0644;  // the node exporter is no super-user

struct MetricsLine {
  std::string file;
};

void write(const std::string& path, const std::string& text) {
  NewFile file(path, kForEverybody);
  file.write(text);
  file.putInPlace();
}

// A store that cannot be read is something to be told of: kestrove_up says it, and so does the exit status.
void metrics(const Session& session, const MetricsLine& line) {
  const MetricFacts facts = readMetricFacts(session);
  if (!line.file.empty()) write(line.file, metricsText(facts));
  if (facts.refusal && (!session.forPeople() || !line.file.empty())) throw Refusal(*facts.refusal);
  if (!line.file.empty()) return session.done("wrote " + line.file);
  if (!session.forPeople()) return session.show({{"families", metricsJson(facts)}});
  session.print(metricsText(facts));
  if (facts.refusal) throw Refusal(*facts.refusal);
}

}  // namespace

std::vector<Command> metricsCommands() {
  return {command("metrics", "Counters, tables, modes, lock and versions for Prometheus", metrics,
                  {option("--write", &MetricsLine::file, takes::file(),
                          "Into this file instead, whole: for the node exporter, NAME.prom in its folder")},
                  "Text format 0.0.4. Where the store cannot be read, kestrove_up is 0, and the families that need "
                  "the store are missing.")};
}

}  // namespace ctl
