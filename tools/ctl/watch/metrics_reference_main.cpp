// SPDX-License-Identifier: Apache-2.0
// kestrovectl-metrics: the families of doc/metrics.md, from the table that makes them.
#include <cstdio>

#include "tools/ctl/watch/metric.h"

int main() { return fputs(ctl::metricsReference().c_str(), stdout) < 0; }
