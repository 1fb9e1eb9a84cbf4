// SPDX-License-Identifier: Apache-2.0
#include "tools/snmp/module.h"

#include "tools/snmp/objects.h"

namespace snmp {
namespace {

constexpr char kHead[] = R"(KESTROVE-MIB DEFINITIONS ::= BEGIN

-- Printed by kestrove-snmp from the tables that the agent walks.

IMPORTS
    MODULE-IDENTITY, OBJECT-TYPE, NOTIFICATION-TYPE, Unsigned32, Integer32,
    Gauge32, Counter64, IpAddress, enterprises
        FROM SNMPv2-SMI
    TEXTUAL-CONVENTION
        FROM SNMPv2-TC
    MODULE-COMPLIANCE, OBJECT-GROUP, NOTIFICATION-GROUP
        FROM SNMPv2-CONF;

kestrove MODULE-IDENTITY
    LAST-UPDATED "202611220000Z"
    ORGANIZATION "Kestrove"
    CONTACT-INFO "maintainers@kestrove.example"
    DESCRIPTION
        "Settings, tables and counters of an appliance that accelerates TCP
        over long or lossy links."
    REVISION "202611220000Z"
    DESCRIPTION
        "The first one."
    ::= { kestDocuments 1 }

-- The number that is kept for documents: whoever ships this puts an own one in its place.
kestDocuments OBJECT IDENTIFIER ::= { enterprises 32473 }

KestSwitch ::= TEXTUAL-CONVENTION
    STATUS current
    DESCRIPTION
        "A switch of the appliance; unset where no file has named it."
    SYNTAX INTEGER { unset(0), on(1), off(2) }

KestText ::= TEXTUAL-CONVENTION
    DISPLAY-HINT "255a"
    STATUS current
    DESCRIPTION
        "A text as the appliance keeps it."
    SYNTAX OCTET STRING (SIZE (0..256))

KestBytes ::= TEXTUAL-CONVENTION
    DISPLAY-HINT "1x:"
    STATUS current
    DESCRIPTION
        "An identifier or hardware address."
    SYNTAX OCTET STRING (SIZE (0..16))

KestAddress6 ::= TEXTUAL-CONVENTION
    DISPLAY-HINT "2x:"
    STATUS current
    DESCRIPTION
        "An IPv6 address."
    SYNTAX OCTET STRING (SIZE (16))

kestNotifications OBJECT IDENTIFIER ::= { kestrove 0 }
kestObjects OBJECT IDENTIFIER ::= { kestrove 1 }
kestConformance OBJECT IDENTIFIER ::= { kestrove 2 }

)";

constexpr char kTail[] = R"(
kestEventNotification NOTIFICATION-TYPE
    OBJECTS { kestEventId, kestEventTime, kestEventSource, kestEventUser, kestEventText }
    STATUS current
    DESCRIPTION
        "The event log has got a record."
    ::= { kestNotifications 1 }

kestFlagNotification NOTIFICATION-TYPE
    OBJECTS { kestFlagNumber }
    STATUS current
    DESCRIPTION
        "A program of the appliance has set one of its three notifications."
    ::= { kestNotifications 2 }

kestNotificationGroup NOTIFICATION-GROUP
    NOTIFICATIONS { kestEventNotification, kestFlagNotification }
    STATUS current
    DESCRIPTION
        "All notifications."
    ::= { kestConformance 1 }

kestObjectGroup OBJECT-GROUP
    OBJECTS {
)";

constexpr char kEnd[] = R"(
    }
    STATUS current
    DESCRIPTION
        "All objects."
    ::= { kestConformance 2 }

kestCompliance MODULE-COMPLIANCE
    STATUS current
    DESCRIPTION
        "All of it."
    MODULE
        MANDATORY-GROUPS { kestObjectGroup, kestNotificationGroup }
    ::= { kestConformance 3 }

END
)";

struct Carried {
  const char* name;
  uint32_t arc;
  const char* syntax;
  const char* description;
};
constexpr Carried kCarriedObjects[] = {{"eventId", kEventId, "Unsigned32", "The event's number in the catalogue."},
                                       {"eventTime", kEventTime, "Unsigned32", "When it was, in seconds since 1970."},
                                       {"eventSource", kEventSource, "Unsigned32", "The front end that caused it."},
                                       {"eventUser", kEventUser, "KestText", "The user behind it."},
                                       {"eventText", kEventText, "KestText", "What the catalogue says of it."},
                                       {"flagNumber", kFlagNumber, "Unsigned32", "The notification, 1 to 3."}};

const char* syntaxOf(Kind kind) {
  switch (kind) {
    case Kind::kNumber: return "Unsigned32";
    case Kind::kInteger: return "Integer32";
    case Kind::kGauge: return "Gauge32";
    case Kind::kSwitch: return "KestSwitch";
    case Kind::kCounter: return "Counter64";
    case Kind::kAddress: return "IpAddress";
    case Kind::kAddress6: return "KestAddress6";
    case Kind::kHardware: return "KestBytes";
    case Kind::kText: break;
  }
  return "KestText";
}

std::string object(const std::string& name, const std::string& syntax, const char* access, const std::string& unit,
                   const std::string& description, const std::string& place) {
  return name + " OBJECT-TYPE\n    SYNTAX " + syntax + "\n" + (unit.empty() ? "" : "    UNITS \"" + unit + "\"\n") +
         "    MAX-ACCESS " + access + "\n    STATUS current\n    DESCRIPTION\n        \"" + description +
         "\"\n    ::= { " + place + " }\n\n";
}

std::string numbered(const std::string& parent, uint32_t arc) { return parent + " " + std::to_string(arc); }

std::string objectOf(const Field& field, const char* access, const std::string& place) {
  return object(descriptor(field.name), syntaxOf(field.kind), access, field.unit, field.description, place);
}

std::string groupText(const Group& group) {
  const std::string name = descriptor(group.name);
  std::string text = name + " OBJECT IDENTIFIER ::= { " + numbered("kestObjects", group.arc) + " }\n\n";
  for (const Scalar& scalar : scalars()) {
    if (scalar.group != group.arc) continue;
    text += objectOf(scalar.field, scalar.settable ? "read-write" : "read-only", numbered(name, scalar.arc));
  }
  return text;
}

// "rule" has kestRuleTable, kestRuleEntry, KestRuleEntry and kestRuleIndex.
std::string tableText(const Table& table) {
  const std::string name = descriptor(table.name);
  const std::string type = "K" + name.substr(1) + "Entry";
  std::string text = object(name + "Table", "SEQUENCE OF " + type, "not-accessible", "", table.description,
                            numbered("kestObjects", table.arc));
  text += name + "Entry OBJECT-TYPE\n    SYNTAX " + type +
          "\n    MAX-ACCESS not-accessible\n    STATUS current\n    DESCRIPTION\n        \"A row.\"\n    INDEX { " +
          name + "Index }\n    ::= { " + name + "Table 1 }\n\n";
  text += type + " ::= SEQUENCE {\n    " + name + "Index Unsigned32";
  for (const Field& field : table.columns) text += ",\n    " + descriptor(field.name) + " " + syntaxOf(field.kind);
  text += "\n}\n\n";
  text += object(name + "Index", "Unsigned32 (1.." + std::to_string(table.most) + ")", "not-accessible", "",
                 "The row's place.", name + "Entry 1");
  uint32_t column = 1;
  for (const Field& field : table.columns) text += objectOf(field, "read-only", numbered(name + "Entry", ++column));
  return text;
}

std::string carriedText() {
  std::string text = "kestCarried OBJECT IDENTIFIER ::= { " + numbered("kestObjects", kCarried) + " }\n\n";
  for (const Carried& each : kCarriedObjects) {
    text += object(descriptor(each.name), each.syntax, "accessible-for-notify", "", each.description,
                   numbered("kestCarried", each.arc));
  }
  return text;
}

std::string allNames() {
  std::string names;
  const auto add = [&](const std::string& name) {
    names += (names.empty() ? "        " : ",\n        ") + descriptor(name);
  };
  for (const Scalar& scalar : scalars()) add(scalar.field.name);
  for (const Table& table : tables()) {
    for (const Field& field : table.columns) add(field.name);
  }
  for (const Carried& each : kCarriedObjects) add(each.name);
  return names;
}

}  // namespace

std::string moduleText() {
  std::string text = kHead;
  for (const Group& group : groups()) text += groupText(group);
  for (const Table& table : tables()) text += tableText(table);
  return text + carriedText() + kTail + allNames() + kEnd;
}

}  // namespace snmp
