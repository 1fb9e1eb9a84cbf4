// SPDX-License-Identifier: Apache-2.0
// Between the library of the agent and the objects: one handler for the whole module.
#include <string.h>

#include "tools/snmp/agent.h"
#include "tools/snmp/agent_library.h"
#include "tools/snmp/module.h"
#include "tools/snmp/wire.h"

namespace snmp {
namespace {

static_assert(ASN_INTEGER == kInteger && ASN_OCTET_STR == kOctets && ASN_IPADDRESS == kAddress &&
              ASN_UNSIGNED == kUnsigned && ASN_COUNTER64 == kCounter64);

constexpr size_t kModuleLength = std::size(kModule);
Agent* answering = nullptr;  // the library calls back with a pointer of its own type

std::vector<oid> root() {
  std::vector<oid> name(std::begin(kModule), std::end(kModule));
  name.push_back(kObjects);
  return name;
}

// Behind the objects' own place. In front of them it is empty.
Place placeOf(const netsnmp_variable_list& variable) {
  if (variable.name_length <= kModuleLength + 1) return {};
  Place place;
  for (size_t i = kModuleLength + 1; i < variable.name_length; ++i) {
    place.push_back(static_cast<uint32_t>(variable.name[i]));
  }
  return place;
}

bool isObject(const netsnmp_variable_list& variable) {
  const std::vector<oid> own = root();
  return snmp_oidtree_compare(variable.name, variable.name_length, own.data(), own.size()) == 0;
}

uint32_t wordOf(const std::vector<uint8_t>& bytes) {
  uint32_t word = 0;
  memcpy(&word, bytes.data(), std::min(bytes.size(), sizeof word));
  return word;
}

void putCounter(netsnmp_variable_list& variable, const std::vector<uint8_t>& bytes) {
  uint64_t value = 0;
  memcpy(&value, bytes.data(), std::min(bytes.size(), sizeof value));
  const struct counter64 number = {static_cast<u_long>(value >> 32), static_cast<u_long>(value & UINT32_MAX)};
  snmp_set_var_typed_value(&variable, ASN_COUNTER64, &number, sizeof number);
}

void putNumber(netsnmp_variable_list& variable, const Field& field, const std::vector<uint8_t>& bytes) {
  const uint32_t word = wordOf(bytes);
  const bool isSigned = field.kind == Kind::kInteger || field.kind == Kind::kSwitch;
  const long value = isSigned ? static_cast<int32_t>(word) : static_cast<long>(word);
  snmp_set_var_typed_value(&variable, static_cast<u_char>(typeOf(field.kind)), &value, sizeof value);
}

void put(netsnmp_variable_list& variable, const Found& found) {
  const std::vector<uint8_t> bytes = answering->read(found);
  const Field& field = *found.leaf->field;
  switch (field.kind) {
    case Kind::kCounter: return putCounter(variable, bytes);
    case Kind::kAddress:
    case Kind::kAddress6:
    case Kind::kHardware:
    case Kind::kText:
      snmp_set_var_typed_value(&variable, static_cast<u_char>(typeOf(field.kind)), bytes.data(), bytes.size());
      return;
    default: return putNumber(variable, field, bytes);
  }
}

void get(netsnmp_agent_request_info* info, netsnmp_request_info* request) {
  const auto* data = answering->data();
  const auto found = data ? answering->tree().at(placeOf(*request->requestvb), *data) : std::nullopt;
  if (found) return put(*request->requestvb, *found);
  netsnmp_set_request_error(info, request, SNMP_NOSUCHINSTANCE);
}

// Without an answer the library goes on behind the module.
void getNext(netsnmp_request_info* request) {
  netsnmp_variable_list& variable = *request->requestvb;
  const auto* data = answering->data();
  const Place from = isObject(variable) ? placeOf(variable) : Place();
  const auto found = data ? answering->tree().behind(from, *data) : std::nullopt;
  if (!found) return;
  std::vector<oid> name = root();
  const Place place = found->place();
  name.insert(name.end(), place.begin(), place.end());
  snmp_set_var_objid(&variable, name.data(), name.size());
  put(variable, *found);
}

Refused checkSet(const netsnmp_variable_list& variable) {
  const auto* data = answering->data();
  const auto found = data ? answering->tree().at(placeOf(variable), *data) : std::nullopt;
  if (!found) return data ? SNMP_ERR_NOCREATION : SNMP_ERR_RESOURCEUNAVAILABLE;
  return check(*found, variable.type, variable.val_len, *data);
}

Refused set(const netsnmp_variable_list& variable) {
  const auto* data = answering->data();
  const auto found = data ? answering->tree().at(placeOf(variable), *data) : std::nullopt;
  if (!found) return SNMP_ERR_RESOURCEUNAVAILABLE;
  return answering->set(*found, {variable.val.string, variable.val_len});
}

// What the value was is kept with the request, for one that fails behind it.
void keepOld(netsnmp_request_info* request) {
  auto* old = snmp_clone_varbind(request->requestvb);
  const auto found = answering->tree().at(placeOf(*old), *answering->data());
  put(*old, *found);
  netsnmp_request_add_list_data(request, netsnmp_create_data_list("kestrove", old, [](void* list) {
                                  snmp_free_varbind(static_cast<netsnmp_variable_list*>(list));
                                }));
}

Refused act(netsnmp_request_info* request) {
  if (!answering->data()) return SNMP_ERR_RESOURCEUNAVAILABLE;
  keepOld(request);
  return set(*request->requestvb);
}

void undo(netsnmp_request_info* request) {
  const auto* old = static_cast<netsnmp_variable_list*>(netsnmp_request_get_list_data(request, "kestrove"));
  if (old) set(*old);
}

void refuse(netsnmp_agent_request_info* info, netsnmp_request_info* request, Refused refused) {
  if (refused != SNMP_ERR_NOERROR) netsnmp_set_request_error(info, request, refused);
}

void one(netsnmp_agent_request_info* info, netsnmp_request_info* request) {
  switch (info->mode) {
    case MODE_GET: return get(info, request);
    case MODE_GETNEXT: return getNext(request);
    case MODE_SET_RESERVE1: return refuse(info, request, checkSet(*request->requestvb));
    case MODE_SET_ACTION: return refuse(info, request, act(request));
    case MODE_SET_UNDO: return undo(request);
    default: return;
  }
}

int handle(netsnmp_mib_handler*, netsnmp_handler_registration*, netsnmp_agent_request_info* info,
           netsnmp_request_info* requests) {
  for (netsnmp_request_info* request = requests; request; request = request->next) {
    if (!request->processed) one(info, request);
  }
  return SNMP_ERR_NOERROR;
}

}  // namespace

void registerModule(Agent& agent) {
  answering = &agent;
  const std::vector<oid> own = root();
  netsnmp_register_handler(
      netsnmp_create_handler_registration("kestrove", handle, own.data(), own.size(), HANDLER_CAN_RWRITE));
}

}  // namespace snmp
