// SPDX-License-Identifier: Apache-2.0
#include "tools/snmp/notify.h"

#include <cstring>
#include <string>
#include <vector>

#include "kestrove/kestrove.h"
#include "tools/snmp/agent_library.h"
#include "tools/snmp/module.h"

namespace snmp {
namespace {

constexpr oid kTrapOid[] = {1, 3, 6, 1, 6, 3, 1, 1, 4, 1, 0};

// The variables of one notification; gone with the object.
class Notification {
 public:
  explicit Notification(uint32_t number) {
    std::vector<oid> name(std::begin(kModule), std::end(kModule));
    name.insert(name.end(), {kNotifications, number});
    add({std::begin(kTrapOid), std::end(kTrapOid)}, ASN_OBJECT_ID, name.data(), name.size() * sizeof(oid));
  }
  ~Notification() { snmp_free_varbind(variables_); }
  Notification(const Notification&) = delete;
  Notification& operator=(const Notification&) = delete;

  void number(uint32_t arc, uint32_t value) {
    const unsigned long word = value;
    add(carried(arc), ASN_UNSIGNED, &word, sizeof word);
  }
  void text(uint32_t arc, const std::string& value) { add(carried(arc), ASN_OCTET_STR, value.data(), value.size()); }
  void send() { send_v2trap(variables_); }

 private:
  static std::vector<oid> carried(uint32_t arc) {
    std::vector<oid> name(std::begin(kModule), std::end(kModule));
    name.insert(name.end(), {kObjects, kCarried, arc, 0});
    return name;
  }
  void add(const std::vector<oid>& name, u_char type, const void* value, size_t length) {
    snmp_varlist_add_variable(&variables_, name.data(), name.size(), type, value, length);
  }

  netsnmp_variable_list* variables_ = nullptr;
};

}  // namespace

void notifyEvent(const EventRecord& event) {
  Notification notification(kEventNotification);
  notification.number(kEventId, event.eventId);
  notification.number(kEventTime, static_cast<uint32_t>(event.timestamp));
  notification.number(kEventSource, event.source);
  notification.text(kEventUser, std::string(event.userName, strnlen(event.userName, sizeof event.userName)));
  notification.text(kEventText, getEventMessage(event.eventId));
  notification.send();
}

void notifyFlag(uint32_t number) {
  Notification notification(kFlagNotification);
  notification.number(kFlagNumber, number);
  notification.send();
}

}  // namespace snmp
