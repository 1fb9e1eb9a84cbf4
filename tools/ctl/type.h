// SPDX-License-Identifier: Apache-2.0
// What a value of a command line may be.
#pragma once

#include <climits>
#include <string>

#include "tools/ctl/vocabulary.h"

namespace ctl {

enum class Form {
  kFlag,       // there or not
  kText,       // any word; what it must be is looked at with the store
  kNumber,     // within the limits
  kRate,       // a number within the limits, or one with a suffix: 512k, 1M
  kPortRange,  // 80, 80-90
  kSeconds,    // within the limits, parts of a second, too
  kWord,       // one of the words, and nothing else
  kName,       // one of the words, or a number up to the limit
  kAddress,
  kPrefix,
  kCommandLine  // the rest of the line, as it stands
};

enum class Family { kBoth, kIpv4, kIpv6 };

// Where a shell finds what may stand there.
enum class Completion {
  kNothing,
  kWords,       // the type's own
  kFiles,       // of the file system
  kItems,       // names of the items
  kItemValues,  // what the item in front of it takes
  kUsers,       // of the store, and so on
  kRules,
  kRoutes,
  kRoutes6,
  kAddresses,
  kInterfaces,  // of the kernel
  kCommands     // this grammar again
};

struct Type {
  Form form = Form::kText;
  const char* shown = "TEXT";  // in help, where neither words nor limits say it
  Completion completion = Completion::kNothing;
  Vocabulary words = {};
  int least = INT_MIN;
  int most = INT_MAX;
  const char* unit = "";
  const char* meant = "";  // of a name, in its refusal: "256: no protocol (any, tcp, udp or 0 to 255)"
  Family family = Family::kBoth;

  bool limited() const { return least != INT_MIN || most != INT_MAX; }
  // The same with a unit, or completed from elsewhere.
  constexpr Type in(const char* text) const {
    Type type = *this;
    type.unit = text;
    return type;
  }
  constexpr Type from(Completion source) const {
    Type type = *this;
    type.completion = source;
    return type;
  }
};

// "accelerate|bridge|drop", "0..2147483 kbit/s", "ADDRESS[/LENGTH]".
std::string typeText(const Type& type);

// Reads as in "--sport takes a number from 0 to 65535": takes::number(0, 65535).
namespace takes {

constexpr Type text() { return {}; }
constexpr Type flag() { return {.form = Form::kFlag, .shown = ""}; }
constexpr Type number(int least = INT_MIN, int most = INT_MAX) {
  return {.form = Form::kNumber, .shown = "NUMBER", .least = least, .most = most};
}
constexpr Type kilobits(int most) {
  return {.form = Form::kRate, .shown = "NUMBER", .least = 0, .most = most, .unit = "kbit/s"};
}
constexpr Type ports() { return {.form = Form::kPortRange, .shown = "PORT[-PORT]"}; }
constexpr Type seconds(int least, int most) {
  return {.form = Form::kSeconds, .shown = "NUMBER", .least = least, .most = most, .unit = "seconds"};
}
constexpr Type word(Vocabulary words) {
  return {.form = Form::kWord, .completion = Completion::kWords, .words = words};
}
constexpr Type onOrOff() { return word(kSwitches); }
constexpr Type name(Vocabulary words, int most, const char* shown, const char* meant) {
  return {.form = Form::kName,
          .shown = shown,
          .completion = Completion::kWords,
          .words = words,
          .least = 0,
          .most = most,
          .meant = meant};
}
// A word, or any number that a field of the store can hold: what it means is looked at later.
constexpr Type code(Vocabulary words, const char* shown, const char* meant) {
  return name(words, INT_MAX, shown, meant);
}
constexpr Type address(Family family) { return {.form = Form::kAddress, .shown = "ADDRESS", .family = family}; }
constexpr Type prefix(Family family) { return {.form = Form::kPrefix, .shown = "ADDRESS[/LENGTH]", .family = family}; }
constexpr Type list() { return {.shown = "NAME,..."}; }
constexpr Type rule() { return number().from(Completion::kRules); }
// A rule, or the place in front of the default rule.
constexpr Type place() {
  return name(kPlaces, INT_MAX - 1, "NUMBER|last", "position (a number from 0, or last)").from(Completion::kRules);
}
constexpr Type user() { return text().from(Completion::kUsers); }
constexpr Type item() { return text().from(Completion::kItems); }
constexpr Type interface() { return text().from(Completion::kInterfaces); }
constexpr Type file() { return text().from(Completion::kFiles); }
constexpr Type commandLine() {
  return {.form = Form::kCommandLine, .shown = "COMMAND", .completion = Completion::kCommands};
}

}  // namespace takes

}  // namespace ctl
