// SPDX-License-Identifier: Apache-2.0
// A manager that reads a table as managers do: all its columns side by side, many rows in a request.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tools/snmp/agent_library.h"

namespace kestrove::testing {

using Oid = std::vector<oid>;

class Manager {
 public:
  explicit Manager(const char* peer) {
    netsnmp_session session;
    snmp_sess_init(&session);
    session.version = SNMP_VERSION_2c;
    session.peername = const_cast<char*>(peer);
    session.community = reinterpret_cast<u_char*>(const_cast<char*>("public"));
    session.community_len = 6;
    session.timeout = 30 * 1000000L;
    session_ = snmp_open(&session);
  }
  ~Manager() { snmp_close(session_); }
  Manager(const Manager&) = delete;
  Manager& operator=(const Manager&) = delete;

  // The values below these columns, which have the same rows.
  long walk(const std::vector<Oid>& columns) {
    long values = 0;
    for (std::vector<Oid> at = columns; !at.empty();) {
      netsnmp_pdu* response = ask(at);
      const long before = values;
      if (!take(response, columns, at, values)) at.clear();
      if (values == before) at.clear();
      snmp_free_pdu(response);
    }
    return values;
  }

 private:
  static constexpr long kValuesAtOnce = 900;

  netsnmp_pdu* ask(const std::vector<Oid>& at) {
    netsnmp_pdu* request = snmp_pdu_create(SNMP_MSG_GETBULK);
    request->non_repeaters = 0;
    request->max_repetitions = std::max(1L, kValuesAtOnce / static_cast<long>(at.size()));
    for (const Oid& name : at) snmp_add_null_var(request, name.data(), name.size());
    netsnmp_pdu* response = nullptr;
    EXPECT_EQ(STAT_SUCCESS, snmp_synch_response(session_, request, &response));
    return response;
  }
  static bool isBelow(const Oid& column, const netsnmp_variable_list& value) {
    return value.name_length > column.size() && std::equal(column.begin(), column.end(), value.name);
  }
  // False behind the last row.
  static bool take(const netsnmp_pdu* response, const std::vector<Oid>& columns, std::vector<Oid>& at, long& values) {
    size_t column = 0;
    for (const auto* value = response ? response->variables : nullptr; value; value = value->next_variable) {
      if (!isBelow(columns[column], *value)) return false;
      at[column].assign(value->name, value->name + value->name_length);
      column = (column + 1) % columns.size();
      ++values;
    }
    return response && column == 0;
  }

  netsnmp_session* session_;
};

}  // namespace kestrove::testing
