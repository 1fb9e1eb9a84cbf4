// SPDX-License-Identifier: Apache-2.0
#include "store/codes.h"

#include <stddef.h>

namespace kestrove {
namespace {

constexpr MessageEntry kOperationalStates[] = {
    {SHM_STATE_UNINITIALIZED, "Uninitialized"},
    {SHM_STATE_OPERATIONAL, "Operational"},
    {SHM_STATE_DISABLED, "Disabled"},
    {SHM_STATE_UNCONFIGURED, "Unconfigured"},
    {SHM_STATE_CONFIGURATION, "Configuration Mode"},
    {SHM_STATE_DEBUG, "Debug Mode"},
    {6, "Invalid Mode"},
};

constexpr MessageEntry kCongestion[] = {
    {0, "Unconfigured"}, {1, "Global"}, {2, "Per-Connection"}, {3, "TCP"}, {4, "Error Tolerance"}, {5, "None"},
};

constexpr MessageEntry kCompression[] = {
    {0, "NULL"},       {1, "LZ"}, {2, "LZP"}, {4, "DDUP"}, {5, "LZ+DDUP"}, {6, "LZP+DDUP"}, {8, "Extended Header"},
    {255, "Disabled"},
};

constexpr MessageEntry kTasks[] = {
    {0, "snmpd"},    {1, "httpd"},       {2, "statsd"},  {3, "sshd"},
    {4, "kestrove"}, {5, "miscMonitor"}, {6, "monitor"}, {7, "No such task"},
};

constexpr MessageEntry kRowStatuses[] = {
    {0, "* Undefined *"}, {1, "Invalid"}, {2, "NIS"}, {3, "Active"}, {4, "* No Such Value *"},
};

constexpr MessageEntry kLinks[] = {
    {1, "auto"}, {40, "10baseT-FD"}, {80, "100baseTx"}, {100, "100baseTx-FD"}, {140, "1000baseTx-FD"}, {20, "10baseT"},
};

template <size_t N>
constexpr MessageTable endingWithDefault(const MessageEntry (&entries)[N]) {
  return {static_cast<int32_t>(N), entries[N - 1].code, entries};
}

}  // namespace

constexpr MessageTable kOperationalStateNames = endingWithDefault(kOperationalStates);
constexpr MessageTable kCongestionNames = endingWithDefault(kCongestion);
constexpr MessageTable kCompressionNames = endingWithDefault(kCompression);
constexpr MessageTable kTaskNames = endingWithDefault(kTasks);
constexpr MessageTable kRowStatusNames = endingWithDefault(kRowStatuses);
constexpr MessageTable kLinkNames = endingWithDefault(kLinks);

}  // namespace kestrove
