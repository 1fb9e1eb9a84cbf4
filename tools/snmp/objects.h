// SPDX-License-Identifier: Apache-2.0
// What SNMP shows of the store: one row for each scalar and each column. The MIB is printed from the same rows that the
// agent walks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tools/ctl/item_names.h"

namespace snmp {

enum class Kind { kNumber, kInteger, kGauge, kSwitch, kCounter, kAddress, kAddress6, kHardware, kText };

// A field of the store, or of a row of one of its tables.
struct Field {
  std::string name;  // behind the prefix of the module: "lanLinkRate"
  Kind kind;
  size_t place;
  size_t width;
  std::string unit;
  std::string description;
};

struct Scalar {
  uint32_t group;
  uint32_t arc;
  Field field;
  const ctl::ItemRow* settable = nullptr;  // by this item; null for one that is read only
};

enum class Rows { kAll, kCounted, kMarked };

struct Table {
  uint32_t arc;
  const char* name;  // "rule"
  const char* description;
  size_t place;   // of its first row
  size_t stride;  // from row to row
  uint32_t most;
  Rows rows;
  size_t marks;  // where their number is in the store, or the mark in each row
  std::vector<Field> columns;
};

struct Group {
  uint32_t arc;
  const char* name;
};

std::span<const Group> groups();
const std::vector<Scalar>& scalars();  // in the order of their numbers
const std::vector<Table>& tables();

// "lanLinkRate" becomes "kestLanLinkRate".
std::string descriptor(const std::string& name);

}  // namespace snmp
