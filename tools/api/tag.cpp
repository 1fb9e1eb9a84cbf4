// SPDX-License-Identifier: Apache-2.0
#include "tools/api/tag.h"

#include <algorithm>

#include "tools/api/digest.h"
#include "tools/api/failure.h"

namespace api {
namespace {

constexpr size_t kTagDigits = 32;

bool mayBeInTag(char one) {
  const auto byte = static_cast<unsigned char>(one);
  return byte > ' ' && byte != '"' && byte != 0x7f;
}

// Reads what a list has: each word takes what it finds, and leaves the rest.
class Reader {
 public:
  explicit Reader(const std::string& text) : rest_(text) {}

  bool atEnd() const { return rest_.empty(); }
  void skipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t"), rest_.size())); }
  bool take(std::string_view word) {
    const bool there = rest_.starts_with(word);
    if (there) rest_.remove_prefix(word.size());
    return there;
  }
  // Between quotes.
  std::optional<std::string> takeTag() {
    if (!rest_.starts_with('"')) return std::nullopt;
    const auto end = std::find_if_not(rest_.begin() + 1, rest_.end(), mayBeInTag);
    if (end == rest_.end() || *end != '"') return std::nullopt;
    std::string tag(rest_.begin(), end + 1);
    rest_.remove_prefix(tag.size());
    return tag;
  }

 private:
  std::string_view rest_;
};

// A list may have empty places: "a", , "b".
bool skipCommas(Reader& reader) {
  bool found = false;
  for (reader.skipBlanks(); reader.take(","); reader.skipBlanks()) found = true;
  return found;
}

}  // namespace

std::string tagOf(const std::string& text) { return '"' + digest(text).substr(0, kTagDigits) + '"'; }

bool GivenTags::hasStrong(const std::string& tag) const {
  return any || std::ranges::any_of(all, [&](const GivenTag& one) { return !one.weak && one.text == tag; });
}

bool GivenTags::has(const std::string& tag) const {
  return any || std::ranges::any_of(all, [&](const GivenTag& one) { return one.text == tag; });
}

std::optional<GivenTags> tagsIn(const std::string& header) {
  Reader reader(header);
  GivenTags given;
  skipCommas(reader);
  if (reader.take("*")) {
    reader.skipBlanks();
    given.any = true;
    return reader.atEnd() ? std::optional(given) : std::nullopt;
  }
  for (bool more = true; more && !reader.atEnd(); more = skipCommas(reader)) {
    const bool weak = reader.take("W/");
    const std::optional<std::string> tag = reader.takeTag();
    if (!tag) return std::nullopt;
    given.all.push_back({*tag, weak});
  }
  return reader.atEnd() && !given.all.empty() ? std::optional(given) : std::nullopt;
}

std::optional<GivenTags> wantedTags(const Request& request) {
  if (!request.has("if-match")) return std::nullopt;
  std::optional<GivenTags> wanted = tagsIn(request.header("if-match"));
  if (!wanted) throw Failure(400, "If-Match: tags as ETag has them are needed, with their quotes, or *");
  return wanted;
}

}  // namespace api
