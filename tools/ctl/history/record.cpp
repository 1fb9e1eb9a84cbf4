// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/history/record.h"

#include <cstring>

#include "tools/ctl/history/mixer.h"

namespace ctl {
namespace {

constexpr char kFieldEnd = '\t';
constexpr char kLineEnd = '\n';

struct Escape {
  char plain;
  char letter;
};

constexpr Escape kEscapes[] = {{'\\', '\\'}, {kFieldEnd, 't'}, {kLineEnd, 'n'}};

constexpr char kEscaped[] = {'\\', kFieldEnd, kLineEnd, '\0'};

// Hardly a field has one of them.
void append(std::string& body, const std::string& field, char end) {
  const size_t plain = strcspn(field.c_str(), kEscaped);
  body.append(field, 0, plain);
  for (const char c : std::string_view(field).substr(plain)) {
    char letter = 0;
    for (const Escape& escape : kEscapes) {
      if (escape.plain == c) letter = escape.letter;
    }
    if (letter) body += '\\';
    body += letter ? letter : c;
  }
  body += end;
}

char unescaped(char letter) {
  for (const Escape& escape : kEscapes) {
    if (escape.letter == letter) return escape.plain;
  }
  return letter;
}

// From the place on to the end of the field; the place goes behind it.
std::string nextField(const std::string& body, size_t& at, char end) {
  std::string field;
  for (; at < body.size() && body[at] != end; ++at) {
    const bool escaped = body[at] == '\\' && at + 1 < body.size();
    field += escaped ? unescaped(body[++at]) : body[at];
  }
  ++at;
  return field;
}

}  // namespace

std::string bodyOf(const std::vector<SettingLine>& lines) {
  std::string body;
  body.reserve(lines.size() * 128);
  for (const SettingLine& line : lines) {
    append(body, line.section, kFieldEnd);
    append(body, line.key, kFieldEnd);
    append(body, line.text, kLineEnd);
  }
  return body;
}

std::vector<SettingLine> settingsIn(const std::string& body) {
  std::vector<SettingLine> lines;
  for (size_t at = 0; at < body.size();) {
    SettingLine& line = lines.emplace_back();
    line.section = nextField(body, at, kFieldEnd);
    line.key = nextField(body, at, kFieldEnd);
    line.text = nextField(body, at, kLineEnd);
  }
  return lines;
}

std::string sumOf(std::string_view text) {
  Mixer mixer;
  mixer.take(text.data(), text.size());
  return mixer.text();
}

// The sum takes its place in front when the rest stands: a full state is copied once.
std::string recordText(const Record& record) {
  std::string text(sumOf("").size(), ' ');
  text += kLineEnd;
  const size_t rest = text.size();
  text += jsonText(record.head, -1) + kLineEnd;
  text += record.body;
  const std::string sum = sumOf(std::string_view(text).substr(rest));
  return text.replace(0, sum.size(), sum);
}

std::optional<Record> readRecord(const std::string& text) {
  const size_t sumEnd = text.find(kLineEnd);
  if (sumEnd == std::string::npos) return std::nullopt;
  if (sumOf(std::string_view(text).substr(sumEnd + 1)) != text.substr(0, sumEnd)) return std::nullopt;
  const size_t headEnd = text.find(kLineEnd, sumEnd + 1);
  if (headEnd == std::string::npos) return std::nullopt;
  Record record;
  record.head = Json::parse(text.substr(sumEnd + 1, headEnd - sumEnd - 1), nullptr, false);
  if (!record.head.is_object()) return std::nullopt;
  record.body = text.substr(headEnd + 1);
  return record;
}

}  // namespace ctl
