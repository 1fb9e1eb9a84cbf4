// Numbers of the operating modes and of the events that move between them.
#pragma once

#include <stdint.h>

namespace kestrove::opmode {

enum Mode : uint32_t { kDual = 0, kSingle = 1, kPolicyRouting = 2, kModes = 3 };

enum Event {
  kPoweredOn = 1,
  kSingleOn = 2,
  kSingleOff = 3,
  kPolicyRoutingOn = 4,
  kPolicyRoutingOff = 5,
  kVlanChange = 6,
  kFirstApplication = 7,
  kLastApplication = 10,
  kFirstAddressChange = 11,
  kManagementChange = 12,
  kWanAddress = 13,
  kLanAddress = 14,
  kWanGateway = 15,
  kLanGateway = 16,
  kLastEvent = 19
};

// The model whose two ports are not bridged in dual-interface mode.
constexpr uint32_t kUnbridgedProduct = 9;

// Whether the mode has a transition for the event.
bool handles(uint32_t mode, int event);

}  // namespace kestrove::opmode
