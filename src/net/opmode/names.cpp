// SPDX-License-Identifier: Apache-2.0
// The printed names of modes, states and events.
#include "kestrove/opmode.h"

const char* state_single_str[] = {"STATE_SINGLIF_OFF", "STATE_SINGLIF_ON"};
const char* state_pbr_str[] = {"STATE_PBR_OFF", "STATE_PBR_ON"};
const char* state_squid_str[] = {"STATE_SQUID_OFF", "STATE_SQUID_ON"};
const char* state_domo_str[] = {"STATE_DOMO_OFF", "STATE_DOMO_ON"};
const char* oprmode_str[] = {"OPMODE_DUAL_IF", "OPMODE_SINGLIF_ONLY", "OPMODE_SINGLIF_PBR"};
const char* l7mode_str[] = {"L7MODE_NONE", "L7MODE_DOMO_ONLY", "L7MODE_SQUID_ONLY", "L7MODE_SQUID_DOMO"};

// Index 0 is event 1.
const char* event_str[] = {"EVENT_POWERED_ON",
                           "EVENT_SINGLIF_INTERFACE_ON",
                           "EVENT_SINGLIF_INTERFACE_OFF",
                           "EVENT_PBR_ON",
                           "EVENT_PBR_OFF",
                           "EVENT_VLANID_CHANGE",
                           "EVENT_SQUID_ON",
                           "EVENT_SQUID_OFF",
                           "EVENT_DOMO_ON",
                           "EVENT_DOMO_OFF",
                           "EVENT_OUTBAND_MGT_IP_CHANGE",
                           "EVENT_INBAND_MGT_IP_CHANGE",
                           "EVENT_WAN_IP_CHANGE",
                           "EVENT_LAN_IP_CHANGE",
                           "EVENT_WAN_GATEWAY_CHANGE",
                           "EVENT_LAN_GATEWAY_CHANGE",
                           "EVENT_WAN_NETMASK_CHANGE",
                           "EVENT_LAN_NETMASK_CHANGE",
                           nullptr,
                           nullptr};
static_assert(sizeof event_str / sizeof event_str[0] == 20, "two slots without a name follow the 18 events");
