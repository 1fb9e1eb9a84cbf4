// SPDX-License-Identifier: Apache-2.0
// The columns of the file's rows, each row listed once for its reader and its writer.
#pragma once

#include <string.h>

#include <string_view>
#include <type_traits>

#include "config/line_text.h"
#include "config/line_writer.h"
#include "config/values.h"
#include "kestrove/codes.h"
#include "kestrove/layout.h"
#include "store/text.h"

namespace kestrove::rows {

// A column reads itself into a field of an entry and writes itself from there; what it writes fills Width characters. A
// row is a column, too: its columns, one after the other. What a row that ends early leaves in an entry counts for
// nothing.
template <class... Column>
struct Row {
  template <class Entry>
  static void read(Columns& columns, Entry& entry) {
    (Column::read(columns, entry), ...);
  }
  template <class Entry>
  static void write(LineWriter& line, const Entry& entry) {
    (Column::write(line, entry), ...);
  }
};

template <auto Field, size_t Width = 0>
struct Number {
  template <class Entry>
  static void read(Columns& columns, Entry& entry) {
    entry.*Field = static_cast<std::remove_reference_t<decltype(entry.*Field)>>(columns.number());
  }
  template <class Entry>
  static void write(LineWriter& line, const Entry& entry) {
    line.number<Width>(entry.*Field);
  }
};

template <auto Field, size_t Width>
struct Switch {
  template <class Entry>
  static void read(Columns& columns, Entry& entry) {
    entry.*Field = storedSwitch(columns.number());
  }
  template <class Entry>
  static void write(LineWriter& line, const Entry& entry) {
    line.number<Width>(fileSwitch(entry.*Field));
  }
};

template <auto Field, size_t Width>
struct Quad {
  template <class Entry>
  static void read(Columns& columns, Entry& entry) {
    entry.*Field = columns.address();
  }
  template <class Entry>
  static void write(LineWriter& line, const Entry& entry) {
    line.quad<Width>(entry.*Field);
  }
};

template <auto Field, size_t Width>
struct Address6 {
  template <class Entry>
  static void read(Columns& columns, Entry& entry) {
    columns.address6(entry.*Field);
  }
  template <class Entry>
  static void write(LineWriter& line, const Entry& entry) {
    line.address6<Width>(entry.*Field);
  }
};

// Read, one that fills its field has no terminator there.
template <auto Field, size_t Width>
struct Text {
  template <class Entry>
  static void read(Columns& columns, Entry& entry) {
    if (const char* word = columns.word()) setField(entry.*Field, word);
  }
  template <class Entry>
  static void write(LineWriter& line, const Entry& entry) {
    line.text<Width>(columnText(fieldView(entry.*Field)));
  }
};

// Nothing to read, and written no more than the blank before it.
struct Empty {
  template <class Entry>
  static void read(Columns&, Entry&) {}
  template <class Entry>
  static void write(LineWriter& line, const Entry&) {
    line.emptyColumn();
  }
};

// Some columns for IPv6, others for any other family: an earlier column says which.
template <class Six, class Other>
struct ByFamily {
  template <class Entry>
  static void read(Columns& columns, Entry& entry) {
    if (entry.ipVersion == SHM_FAMILY_IPV6) {
      Six::read(columns, entry);
    } else {
      Other::read(columns, entry);
    }
  }
  template <class Entry>
  static void write(LineWriter& line, const Entry& entry) {
    if (entry.ipVersion == SHM_FAMILY_IPV6) {
      Six::write(line, entry);
    } else {
      Other::write(line, entry);
    }
  }
};

// Without a blank before it: padding keeps it from the last port as long as that has less than nine digits. A dropping
// or bridging rule has its priority negated, so that the row carries the target twice: kept on purpose.
class PriorityAndTarget {
 public:
  static void read(Columns& columns, FilterRule& rule) {
    rule.priority = columns.number();
    const char* word = columns.word();
    if (!word) return;
    rule.target = strcmp(word, "DROP") == 0 ? 0 : strcmp(word, "BRIDGE") == 0 ? -1 : 1;
    rule.priority = signedPriority(rule);
  }
  static void write(LineWriter& line, const FilterRule& rule) {
    line.adjacent<9>(signedPriority(rule)).word(wordOf(rule.target));
  }

 private:
  using Word = char[7];
  static constexpr Word kDrop = "  DROP";
  static constexpr Word kBridge = "BRIDGE";
  static constexpr Word kAccelerate = "  NONE";

  static const Word& wordOf(int32_t target) { return target == 0 ? kDrop : target == -1 ? kBridge : kAccelerate; }
  static int32_t signedPriority(const FilterRule& rule) {
    if (rule.target != 0 && rule.target != -1) return rule.priority;
    return static_cast<int32_t>(0 - static_cast<uint32_t>(rule.priority));
  }
};

using Route = Row<Quad<&RouteEntry::destination, 18>, Quad<&RouteEntry::netmask, 18>, Quad<&RouteEntry::gateway, 18>,
                  Number<&RouteEntry::status, 18>, Empty>;

using Route6 = Row<Address6<&Route6Entry::destination, 32>, Number<&Route6Entry::prefixLength, 3>,
                   Address6<&Route6Entry::gateway, 32>, Number<&Route6Entry::status, 18>, Empty>;

using Ip6 = Row<Address6<&Ip6Address::address, 32>, Number<&Ip6Address::prefixLength>>;

using Management =
    Row<Number<&ManagementAddress::ipVersion>,
        ByFamily<Row<Address6<&ManagementAddress::address6, 32>, Number<&ManagementAddress::prefixLength6>>,
                 Row<Quad<&ManagementAddress::address, 16>, Quad<&ManagementAddress::mask, 16>>>,
        Number<&ManagementAddress::interfaceKind>>;

using User = Row<Text<&UserAccount::username, 25>, Switch<&UserAccount::superUser, 12>,
                 Number<&UserAccount::lastLoginSeconds, 12>, Number<&UserAccount::lastPasswdChange>>;

// A rule's row: its ends, if its keyword has any, then the columns of every rule.
using RuleEnds = Row<Quad<&FilterRule::srcAddr, 16>, Quad<&FilterRule::srcMask, 16>, Quad<&FilterRule::dstAddr, 16>,
                     Quad<&FilterRule::dstMask, 16>>;
using RuleSource6 = Row<Address6<&FilterRule::srcAddr6, 40>, Number<&FilterRule::srcPrefixLen6>>;
using RuleDestination6 = Row<Address6<&FilterRule::dstAddr6, 40>, Number<&FilterRule::dstPrefixLen6>>;
using AnyRule =
    Row<Number<&FilterRule::proto, 9>, Number<&FilterRule::srcPort, 9>, Number<&FilterRule::srcPortEnd, 9>,
        Number<&FilterRule::destPort, 9>, Number<&FilterRule::destPortEnd, 9>, PriorityAndTarget,
        Number<&FilterRule::bandwidth, 9>, Number<&FilterRule::accel, 9>, Number<&FilterRule::ruleAction, 9>>;

}  // namespace kestrove::rows
