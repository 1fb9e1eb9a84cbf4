// The policy rules, two lines of columns each; IPv6 addresses, too long for a column, follow on lines of their own.
#include <array>

#include "config/dump_print.h"
#include "config/dump_sections.h"
#include "store/bounds.h"
#include "store/codes.h"

namespace kestrove {
namespace {

using sys::putText;
using Text = std::string_view;

constexpr size_t kLongestBlock = 512;

// "%-5.5s %-15.15s %-15.15s %-5.5s %-6.6s %-6.6s %-4.4s %-6.6s %-5.5s %12.12s %12.12s\n"
struct Column {
  size_t width;
  bool toTheRight;
};
constexpr std::array<Column, 11> kColumns = {{{5, false},
                                              {15, false},
                                              {15, false},
                                              {5, false},
                                              {6, false},
                                              {6, false},
                                              {4, false},
                                              {6, false},
                                              {5, false},
                                              {12, true},
                                              {12, true}}};
using Line = std::array<Text, kColumns.size()>;

constexpr Line kFirstLabels = {"order", "srcAddr", "dstAddr", "proto",     "srcPort",   "destPort",
                               "prio",  "target",  "accel",   "bandwidth", "ruleAction"};
constexpr Line kSecondLabels = {"ipVersion", "srcMask", "dstMask", "", "to", "to", "", "", "", "", ""};

// A number or an address as text, for a column.
class Value {
 public:
  template <class Put>
  explicit Value(Put put) {
    length_ = static_cast<size_t>(put(text_) - text_);
  }
  static Value number(int32_t value) {
    return Value([value](char* at) { return sys::putNumber(at, value); });
  }
  static Value quad(uint32_t address) {
    return Value([address](char* at) { return sys::putQuad(at, address); });
  }
  operator Text() const { return {text_, length_}; }

 private:
  char text_[sys::kLongestNumber];
  size_t length_;
};

char* putColumn(char* at, Text text, const Column& column) {
  text = text.substr(0, column.width);
  size_t blanks = column.width - text.size();
  if (!column.toTheRight) at = putText(at, text);
  memset(at, ' ', blanks);
  at += blanks;
  return column.toTheRight ? putText(at, text) : at;
}

char* putLine(char* at, const Line& line) {
  for (size_t i = 0; i < line.size(); ++i) {
    at = putColumn(at, line[i], kColumns[i]);
    *at++ = i + 1 < line.size() ? ' ' : '\n';
  }
  return at;
}

Text familyName(uint32_t ipVersion) {
  if (ipVersion == 4) return "4";
  return ipVersion == 6 ? "6" : "Any";
}

Text protocolOr(uint32_t proto, Text number) {
  switch (proto) {
    case 0: return "ANY";
    case 6: return "TCP";
    case 17: return "UDP";
    default: return number;
  }
}

Text targetOr(int32_t target, Text number) {
  if (target == 0) return "DROP";
  return target == -1 ? "BRIDGE" : number;
}

Text nameOf(const MessageTable& names, uint32_t code) { return shm_getMessage(&names, static_cast<int>(code)); }

char* putFirstLine(char* at, const FilterRule& rule, int32_t position) {
  bool quads = rule.ipVersion != 6;
  Value source = Value::quad(rule.srcAddr), destination = Value::quad(rule.dstAddr);
  Value order = Value::number(position), proto = Value::number(static_cast<int32_t>(rule.proto));
  Value srcPort = Value::number(rule.srcPort), destPort = Value::number(rule.destPort);
  Value priority = Value::number(rule.priority), target = Value::number(rule.target);
  Value bandwidth = Value::number(rule.bandwidth);
  return putLine(at, {order, quads ? source : Text(), quads ? destination : Text(), protocolOr(rule.proto, proto),
                      srcPort, destPort, priority, targetOr(rule.target, target), nameOf(kStateNames, rule.accel),
                      bandwidth, nameOf(kRowStatusNames, rule.ruleAction)});
}

char* putSecondLine(char* at, const FilterRule& rule) {
  bool quads = rule.ipVersion != 6;
  Value source = Value::quad(rule.srcMask), destination = Value::quad(rule.dstMask);
  Value srcPortEnd = Value::number(rule.srcPortEnd), destPortEnd = Value::number(rule.destPortEnd);
  return putLine(at, {familyName(rule.ipVersion), quads ? source : Text(), quads ? destination : Text(), "", srcPortEnd,
                      destPortEnd, "", "", "", "", ""});
}

char* putSubnet6(char* at, Text label, const uint8_t* address, uint32_t prefixLength) {
  at = putText(sys::putIp6(putText(at, label), address), "/");
  return putText(sys::putNumber(at, static_cast<int32_t>(prefixLength)), "\n");
}

char* putRule(char* at, const FilterRule& rule, int32_t position) {
  at = putSecondLine(putFirstLine(at, rule, position), rule);
  if (rule.ipVersion != 6) return at;
  at = putSubnet6(at, "      srcAddr6: ", rule.srcAddr6, rule.srcPrefixLen6);
  return putSubnet6(at, "      dstAddr6: ", rule.dstAddr6, rule.dstPrefixLen6);
}

}  // namespace

void dumpRules(sys::TextWriter& out) {
  const FilterTable& table = shm->filterTable;
  print(out, "  ruleCount: \t\t%d\n", table.ruleCount);
  out.advance(putLine(putLine(out.room(kLongestBlock), kFirstLabels), kSecondLabels));
  int count = boundedCount(table.ruleCount, SHM_RULES);
  for (int i = 0; i < count; ++i) {
    if (i > 0) out.text("\n");
    out.advance(putRule(out.room(kLongestBlock), table.rule[i], i + 1));
  }
}

}  // namespace kestrove
