// SPDX-License-Identifier: Apache-2.0
// What the headers alone tell a program, for scripts/abi to dump; nobody links it. A comparison looks at what a symbol
// leads to: the record that a function takes as bare memory, and each enumeration by one of its values.
#include "kestrove/kestrove.h"

struct HeadersAlone {
  EngineConfiguration engine;
  decltype(SHM_ITEM_LAN_LINK_RATE) shm_item_lan_link_rate;
  decltype(SHM_NET_MANAGEMENT_ADDRESS) shm_net_management_address;
  decltype(SHM_TEXT_SYS_NAME) shm_text_sys_name;
  decltype(SHM_IF_LAN) shm_if_lan;
  decltype(SHM_PRODUCT_UNKNOWN) shm_product_unknown;
  decltype(SHM_SOURCE_SYSTEM) shm_source_system;
  decltype(SHM_EVENT_UNKNOWN) shm_event_unknown;
  decltype(SHM_MODE_DUAL) shm_mode_dual;
  decltype(SHM_APPLICATION_NONE) shm_application_none;
  decltype(SHM_MODE_EVENT_POWERED_ON) shm_mode_event_powered_on;
  decltype(SHM_CHANGE_LAN_RATE) shm_change_lan_rate;
  decltype(SHM_TASK_SNMPD) shm_task_snmpd;
  decltype(SHM_ROUTE_INACTIVE) shm_route_inactive;
  decltype(SHM_ADDRESS_APPLIED) shm_address_applied;
  decltype(SHM_FAMILY_ANY) shm_family_any;
  decltype(SHM_TARGET_BRIDGE) shm_target_bridge;
  decltype(SHM_RULE_UNDEFINED) shm_rule_undefined;
  decltype(SHM_PROTO_ANY) shm_proto_any;
  decltype(SHM_CONGESTION_UNCONFIGURED) shm_congestion_unconfigured;
  decltype(SHM_LINK_AUTO) shm_link_auto;
  decltype(SHM_LOGIN_SERIAL) shm_login_serial;
  decltype(SHM_OK) shm_ok;
  decltype(SHM_KEY) shm_key;
  decltype(SHM_STATE_UNINITIALIZED) shm_state_uninitialized;
  decltype(SHM_ON) shm_on;
  decltype(KESTROVE_CHECK_BYTES) kestrove_check_bytes;
} headersAlone;
