// SPDX-License-Identifier: Apache-2.0
// What metrics are made from, read at one moment.
#pragma once

#include <optional>
#include <string>

#include "tools/common/lock_wait.h"
#include "tools/ctl/settings/image.h"

namespace ctl {

struct MetricFacts {
  std::optional<Image> store;      // none where it could not be read
  std::optional<Refusal> refusal;  // why not
  tools::LockAnswer lock;          // before the store was read
  size_t lockWaiters = 0;
  uint64_t segmentBytes = 0;  // 0 without a segment
  uint64_t attachedProcesses = 0;
  uint32_t uptimeHundredths = 0;
};

MetricFacts readMetricFacts(const Session& session);

}  // namespace ctl
