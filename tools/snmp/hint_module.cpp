// SPDX-License-Identifier: Apache-2.0
// A module for snmpd ("dlmod kestrove_hints .../kestrove-hints.so"): by which version of the protocol a request came,
// and which ones were refused for their community or user, is told to no subagent by the protocol.
#include <fcntl.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "tools/snmp/agent_library.h"
#include "tools/snmp/hint.h"

namespace {

int line = -1;

// Without a listener, or with one that is behind, nothing is told.
void tell(snmp::Hint hint, long version) {
  struct sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  strcpy(address.sun_path, snmp::kHintPath);
  const char digit = version == SNMP_VERSION_1 ? '1' : version == SNMP_VERSION_2c ? '2' : '3';
  const char words[] = {hint, digit};
  sendto(line, words, sizeof words, MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

bool isWrite(const netsnmp_pdu& pdu) { return pdu.command == SNMP_MSG_SET; }

// Of a whole request, before anything of it is looked at.
int requestChecked(int, int, void* arguments, void*) {
  const auto& checked = *static_cast<view_parameters*>(arguments);
  if (checked.errorcode == 0 && isWrite(*checked.pdu)) tell(snmp::kWriteAsked, checked.pdu->version);
  if (checked.errorcode == 0) return SNMPERR_SUCCESS;
  tell(isWrite(*checked.pdu) ? snmp::kWriteRefused : snmp::kReadRefused, checked.pdu->version);
  return SNMPERR_SUCCESS;
}

// Of each object: a walk that comes to the end of what it may see is no refusal, a write is.
int objectChecked(int, int, void* arguments, void*) {
  const auto& checked = *static_cast<view_parameters*>(arguments);
  if (checked.errorcode != 0 && isWrite(*checked.pdu)) tell(snmp::kWriteRefused, checked.pdu->version);
  return SNMPERR_SUCCESS;
}

}  // namespace

extern "C" {

// Behind the access control itself, which answers first.
__attribute__((visibility("default"))) void init_kestrove_hints() {
  line = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  constexpr int kLast = NETSNMP_CALLBACK_LOWEST_PRIORITY;
  netsnmp_register_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_ACM_CHECK_INITIAL, requestChecked, nullptr,
                            kLast);
  netsnmp_register_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_ACM_CHECK, objectChecked, nullptr, kLast);
}

__attribute__((visibility("default"))) void deinit_kestrove_hints() {
  snmp_unregister_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_ACM_CHECK_INITIAL, requestChecked, nullptr, 0);
  snmp_unregister_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_ACM_CHECK, objectChecked, nullptr, 0);
  close(line);
  line = -1;
}
}
