// SPDX-License-Identifier: Apache-2.0
// The headers of the agent's library, in the order that they need.
#pragma once

// clang-format off
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
#include <net-snmp/agent/net-snmp-agent-includes.h>
#include <net-snmp/agent/agent_callbacks.h>
// clang-format on
