// SPDX-License-Identifier: Apache-2.0
#include "events/catalogue.h"

#include "kestrove/events.h"

namespace kestrove {
namespace {

constexpr char kInformation[] = "Information";
constexpr char kWarning[] = "Warning";
constexpr char kError[] = "Error";
constexpr char kDiagnostic[] = "Diagnostic";

constexpr EventKind kCatalogue[] = {
    {0, "---", "Unknown event"},
    {1, kInformation, "System Stopped"},
    {2, kInformation, "System Started"},
    {3, kInformation, "System Rebooted"},
    {4, kInformation, "System Updated"},
    {5, kError, "System Update Failed"},
    {6, kError, "System File Download Failed"},
    {7, kInformation, "simpleAttach On"},
    {8, kInformation, "simpleAttach Off"},
    {9, kInformation, "System Compression On"},
    {10, kInformation, "System Compression Off"},
    {11, kInformation, "SNMP management enabled"},
    {12, kInformation, "SNMP management disabled"},
    {13, kInformation, "System time set"},
    {14, kInformation, "System Compression Ratio Cleared"},
    {15, kInformation, "Optimization Stats Cleared"},
    {16, kInformation, "System Stats Cleared"},
    {17, kInformation, "System Event Log Cleared"},
    {18, kInformation, "Web interface enabled"},
    {19, kInformation, "Web interface disabled"},
    {20, kInformation, "Gateway Started"},
    {21, kInformation, "Web interface login"},
    {22, kWarning, "Web interface login failed"},
    {23, kInformation, "Web server started"},
    {24, kInformation, "CLI Login"},
    {25, kWarning, "CLI Login failed"},
    {26, kWarning, "SNMP Unauthorized Read Community"},
    {27, kWarning, "SNMP Unauthorized Write Community"},
    {28, kInformation, "SNMP agent started"},
    {29, kInformation, "Event log cleared"},
    {30, kInformation, "Stats cleared"},
    {31, kInformation, "Compression ratio cleared"},
    {32, kDiagnostic, "System Initialization failed"},
    {33, kDiagnostic, "Initialization of serial port failed"},
    {34, kDiagnostic, "The task monitor has restarted"},
    {35, kDiagnostic, "The task miscMonitor has started"},
    {36, kInformation, "SSH daemon started"},
    {37, kInformation, "SSH daemon enabled"},
    {38, kInformation, "SSH daemon disabled"},
    {39, kInformation, "System State Saved"},
    {40, kInformation, "System Restored to Saved State"},
    {41, kInformation, "Web cache daemon enabled"},
    {42, kInformation, "Web cache daemon disabled"},
    {43, kInformation, "Web cache cleared"},
    {44, kInformation, "CIFS daemon enabled"},
    {45, kInformation, "CIFS daemon disabled"},
    {46, kInformation, "DRE daemon enabled"},
    {47, kInformation, "DRE daemon disabled"},
    {48, kInformation, "DRE cache cleared"},
};

struct EventSource {
  uint32_t number;  // read by nobody: a source is a position in this table
  const char* name;
};

constexpr EventSource kSources[] = {
    {0, "System"},  {1, "Kestrove"}, {2, "HTTP"},    {3, "Serial"}, {4, "SSH"},   {5, "SNMP v1"},
    {6, "SNMP v2"}, {7, "SNMP v3"},  {9, "unknown"}, {0, nullptr},  {0, nullptr}, {0, nullptr},
};
constexpr uint32_t kSourceCount = sizeof kSources / sizeof kSources[0];
static_assert(kSourceCount == 12);

consteval bool everyIdIsItsPosition() {
  for (uint32_t i = 0; i < kEventKinds; ++i) {
    if (kCatalogue[i].id != i) return false;
  }
  return true;
}
static_assert(sizeof kCatalogue / sizeof kCatalogue[0] == kEventKinds);
static_assert(everyIdIsItsPosition(), "an event is found by its position");

}  // namespace

const EventKind& eventKind(uint32_t id) { return kCatalogue[id < kEventKinds ? id : 0]; }

const char* eventSourceText(uint32_t source) {
  const char* name = source < kSourceCount ? kSources[source].name : nullptr;
  return name ? name : "(null)";
}

}  // namespace kestrove

const char* getEventMessage(uint32_t id) { return kestrove::eventKind(id).description; }
