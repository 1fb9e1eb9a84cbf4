// SPDX-License-Identifier: Apache-2.0
#include "dump/fields.h"

#include <stdarg.h>
#include <stdio.h>

#include "dump/print.h"
#include "store/codes.h"

namespace kestrove {
namespace {

constexpr size_t kTab = 8;

template <class Value>
Value valueAt(const uint8_t* place) {
  Value value;
  memcpy(&value, place, sizeof value);
  return value;
}

int wordAt(const uint8_t* place) { return valueAt<int32_t>(place); }

void dumpText(sys::TextWriter& out, const uint8_t* place, size_t width) {
  const char* text = reinterpret_cast<const char*>(place);
  out.text({text, strnlen(text, width)});
}

void dumpMac(sys::TextWriter& out, const uint8_t* byte) {
  print(out, "%02X:%02X:%02X:%02X:%02X:%02x", byte[0], byte[1], byte[2], byte[3], byte[4], byte[5]);
}

void dumpName(sys::TextWriter& out, const MessageTable& names, int code) { out.text(shm_getMessage(&names, code)); }

void dumpValue(sys::TextWriter& out, const DumpField& field) {
  const uint8_t* place = reinterpret_cast<const uint8_t*>(shm) + field.offset;
  switch (field.kind) {
    case DumpKind::kText: return dumpText(out, place, field.width);
    case DumpKind::kSigned: return print(out, "%d", wordAt(place));
    case DumpKind::kUnsigned: return print(out, "%u", valueAt<uint32_t>(place));
    case DumpKind::kWide: return print(out, "%llu", static_cast<unsigned long long>(valueAt<uint64_t>(place)));
    case DumpKind::kHex: return print(out, "0x%.2x", valueAt<uint32_t>(place));
    case DumpKind::kSwitch: return dumpName(out, kOperationalStateNames, *place);
    case DumpKind::kState: return dumpName(out, kOperationalStateNames, wordAt(place));
    case DumpKind::kCompression: return dumpName(out, kCompressionNames, wordAt(place));
    case DumpKind::kCongestion: return dumpName(out, kCongestionNames, *place);
    case DumpKind::kLink: return dumpName(out, kLinkNames, wordAt(place));
    case DumpKind::kAddress: return out.quad(valueAt<uint32_t>(place));
    case DumpKind::kMac: return dumpMac(out, place);
    case DumpKind::kGatewayId: return print(out, "%02X%02X%02X%02X", place[0], place[1], place[2], place[3]);
  }
}

}  // namespace

void print(sys::TextWriter& out, const char* format, ...) {
  va_list values;
  va_start(values, format);
  char* at = out.room(kLongestLine);
  int length = vsnprintf(at, kLongestLine, format, values);
  va_end(values);
  if (length < 0) return;
  auto written = static_cast<size_t>(length);
  out.advance(at + (written < kLongestLine ? written : kLongestLine - 1));
}

void dumpLabel(sys::TextWriter& out, std::string_view label, size_t column) {
  constexpr std::string_view kIndent = "  ", kColon = ": ", kTabs = "\t\t\t\t\t";
  size_t width = kIndent.size() + label.size() + kColon.size();
  size_t tabs = width < column ? column / kTab - width / kTab : 1;
  out.text(kIndent);
  out.text(label);
  out.text(kColon);
  out.text(kTabs.substr(0, tabs));
}

void dumpField(sys::TextWriter& out, const DumpField& field, size_t column) {
  dumpLabel(out, field.label, column);
  dumpValue(out, field);
  out.text("\n");
}

}  // namespace kestrove
