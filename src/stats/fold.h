// SPDX-License-Identifier: Apache-2.0
// The arithmetic of one interval record on the counters of the store. Exact in both widths; divides by nothing that
// may be zero.
#pragma once

#include <stddef.h>

#include "kestrove/layout.h"

namespace kestrove {

// The record's rows of the queues.
constexpr size_t kQueueWord = 30;
constexpr size_t kQueueWords = 15;

using IntervalRecord = uint32_t[SHM_INTERVAL_WORDS];

void foldInterval(StatisticsBlock& block, const IntervalRecord& record);
void foldQueues(QosRow (&rows)[SHM_QOS_ROWS], const IntervalRecord& record);

}  // namespace kestrove
