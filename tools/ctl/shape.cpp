// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/shape.h"

#include <algorithm>
#include <map>
#include <stdexcept>

#include "tools/common/plain_text.h"
#include "tools/ctl/output/fields.h"

namespace ctl {
namespace {

using Kind = Shape::Kind;

constexpr struct {
  const char* word;
  Kind kind;
} kKinds[] = {{"text", Kind::kText}, {"number", Kind::kNumber}, {"bool", Kind::kBool},
              {"null", Kind::kNull}, {"any", Kind::kAny},       {"time", Kind::kTime}};

Shape made(Kind kind, std::string word = {}, std::vector<Shape> parts = {}) {
  Shape shape;
  shape.kind = kind;
  shape.word = std::move(word);
  shape.parts = std::move(parts);
  return shape;
}

class Parser {
 public:
  explicit Parser(const std::string& text) : text_(text) {}

  Shape whole() {
    Shape shape = choice();
    if (at_ != text_.size()) fail("more than a shape");
    return shape;
  }

 private:
  [[noreturn]] void fail(const std::string& what) const {
    throw std::runtime_error(what + " at " + std::to_string(at_) + " of " + text_);
  }
  void skipBlanks() { at_ = std::min(text_.find_first_not_of(" \n", at_), text_.size()); }
  bool take(char c) {
    skipBlanks();
    if (at_ == text_.size() || text_[at_] != c) return false;
    ++at_;
    skipBlanks();
    return true;
  }
  void need(char c) {
    if (!take(c)) fail(std::string(1, c) + " expected");
  }

  std::string until(char end) {
    const size_t stop = text_.find(end, at_);
    if (stop == std::string::npos) fail(std::string(1, end) + " expected");
    std::string found = text_.substr(at_, stop - at_);
    at_ = stop + 1;
    skipBlanks();
    return found;
  }

  std::string word() {
    if (take('"')) return until('"');
    const size_t end = std::min(text_.find_first_of(" \n,:?|()[]{}\"", at_), text_.size());
    if (end == at_) fail("a word expected");
    std::string found = text_.substr(at_, end - at_);
    at_ = end;
    skipBlanks();
    return found;
  }

  Shape choice() {
    Shape first = single();
    if (!take('|')) return first;
    Shape all = made(Kind::kChoice, {}, {first});
    do all.parts.push_back(single());
    while (take('|'));
    return all;
  }

  Shape holding(Kind kind, char end) {
    Shape shape = made(kind, {}, {choice()});
    need(end);
    return shape;
  }

  Shape single() {
    if (take('[')) return holding(Kind::kList, ']');
    if (take('{')) return object();
    if (at_ < text_.size() && text_[at_] == '"') return made(Kind::kWord, word());
    if (take('@')) return made(Kind::kNamed, word());
    const std::string name = word();
    if (name == "change" && take('(')) return holding(Kind::kChange, ')');
    if (name == "lines" && take('(')) return holding(Kind::kLines, ')');
    for (const auto& one : kKinds) {
      if (name == one.word) return made(one.kind);
    }
    fail(name + " is no kind");
  }

  Shape object() {
    Shape shape = made(Kind::kObject);
    if (take('}')) return shape;
    do addMember(shape.members);
    while (take(','));
    need('}');
    return shape;
  }

  void addMember(std::vector<Member>& members) {
    if (take('@')) {
      const Shape& other = shapeNamed(word());
      members.insert(members.end(), other.members.begin(), other.members.end());
      return;
    }
    Member& one = members.emplace_back();
    one.name = word();
    one.optional = take('?');
    one.shape = made(Kind::kText);
    if (take(':')) one.shape = choice();
    if (take('(')) one.remark = until(')');
  }

  const std::string& text_;
  size_t at_ = 0;
};

bool isTime(const Json& value) {
  constexpr std::string_view kForm = "0000-00-00T00:00:00Z";
  if (value.is_null()) return true;
  if (!value.is_string()) return false;
  const auto& text = value.get_ref<const std::string&>();
  return std::equal(text.begin(), text.end(), kForm.begin(), kForm.end(),
                    [](char c, char form) { return form == '0' ? c >= '0' && c <= '9' : c == form; });
}

const char* kindName(Kind kind) {
  for (const auto& one : kKinds) {
    if (one.kind == kind) return one.word;
  }
  return "";
}

bool isOfKind(Kind kind, const Json& value) {
  switch (kind) {
    case Kind::kText: return value.is_string();
    case Kind::kNumber: return value.is_number();
    case Kind::kBool: return value.is_boolean();
    case Kind::kNull: return value.is_null();
    case Kind::kTime: return isTime(value);
    default: return true;
  }
}

const Member* memberNamed(const Shape& shape, const std::string& name) {
  const Member* other = nullptr;
  for (const Member& one : shape.members) {
    if (one.name == name) return &one;
    if (one.name == "*") other = &one;
  }
  return other;
}

std::string objectMismatch(const Shape& shape, const Json& value) {
  if (!value.is_object()) return ": no object";
  for (const Member& one : shape.members) {
    if (one.name != "*" && !one.optional && !value.contains(one.name)) return "." + one.name + ": absent";
  }
  for (const auto& [name, member] : value.items()) {
    const Member* known = memberNamed(shape, name);
    if (!known) return "." + name + ": not in the shape";
    const std::string wrong = mismatch(known->shape, member);
    if (!wrong.empty()) return "." + name + wrong;
  }
  return {};
}

std::string listMismatch(const Shape& element, const Json& value) {
  if (!value.is_array()) return ": no list";
  for (size_t i = 0; i < value.size(); ++i) {
    const std::string wrong = mismatch(element, value[i]);
    if (!wrong.empty()) return "[" + std::to_string(i) + "]" + wrong;
  }
  return {};
}

std::string choiceMismatch(const Shape& shape, const Json& value) {
  std::string all;
  for (const Shape& part : shape.parts) {
    const std::string wrong = mismatch(part, value);
    if (wrong.empty()) return {};
    all += (all.empty() ? "" : ", and") + wrong;
  }
  return all;
}

const Shape& resolved(const Shape& shape) {
  return shape.kind == Kind::kNamed ? resolved(shapeNamed(shape.word)) : shape;
}

// With what every change may say besides; a list then stands in a member of its own.
Shape changed(const Shape& of) {
  const Shape inner = resolved(of);
  const Shape more = shapeNamed("change");
  Shape whole = inner;
  if (inner.kind == Kind::kObject) {
    whole.members.insert(whole.members.end(), more.members.begin(), more.members.end());
    return whole;
  }
  Shape around = made(Kind::kObject);
  around.members = more.members;
  around.members.emplace_back().name = "result";
  around.members.back().shape = inner;
  return made(Kind::kChoice, {}, {inner, around});
}

void addNames(const Shape& given, std::vector<std::string>& names) {
  const Shape& shape = resolved(given);
  for (const Shape& part : shape.parts) addNames(part, names);
  for (const Member& member : shape.members) {
    if (std::find(names.begin(), names.end(), member.name) == names.end()) names.push_back(member.name);
  }
}

// An object whose only member is a list of objects is that list, as recordsOf has it.
const Shape& recordShape(const Shape& given) {
  const Shape& shape = resolved(given);
  if (shape.kind != Kind::kObject || shape.members.size() != 1) return shape;
  const Shape& only = resolved(shape.members.front().shape);
  const bool table = only.kind == Kind::kList && resolved(only.parts.front()).kind == Kind::kObject;
  return table ? only : shape;
}

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

}  // namespace

Shape parseShape(const std::string& text) { return Parser(text).whole(); }

const Shape& shapeNamed(const std::string& name) {
  static std::map<std::string, Shape> known;
  if (const auto found = known.find(name); found != known.end()) return found->second;
  for (const NamedShape& one : namedShapes()) {
    if (name == one.name) return known.emplace(name, parseShape(one.shape)).first->second;
  }
  throw std::runtime_error(name + " is no name of a shape");
}

std::string mismatch(const Shape& shape, const Json& value) {
  switch (shape.kind) {
    case Kind::kNamed: return mismatch(shapeNamed(shape.word), value);
    case Kind::kChange: return mismatch(changed(shape.parts.front()), value);
    case Kind::kLines: return mismatch(shape.parts.front(), value);
    case Kind::kList: return listMismatch(shape.parts.front(), value);
    case Kind::kChoice: return choiceMismatch(shape, value);
    case Kind::kObject: return objectMismatch(shape, value);
    case Kind::kWord: return value == shape.word ? "" : ": not \"" + shape.word + "\"";
    default: return isOfKind(shape.kind, value) ? "" : std::string(": no ") + kindName(shape.kind);
  }
}

std::vector<std::string> fieldsIn(const Shape& shape) {
  std::vector<std::string> names;
  addNames(recordShape(shape), names);
  return names;
}

void requireOutput(const Session& session, const Command& row) {
  if (session.json && (session.terse || !session.fields.empty())) {
    throw Refusal(kUsage, "--json prints all there is: it goes without --terse and --fields");
  }
  const std::string shape = shapeOf(row);
  if (session.fields.empty() || shape.empty()) return;
  const std::vector<std::string> known = fieldsIn(parseShape(shape));
  for (const std::string& name : fieldNames(session.fields)) {
    if (std::find(known.begin(), known.end(), name) != known.end()) continue;
    if (std::find(known.begin(), known.end(), "*") != known.end()) continue;
    throw Refusal(kUsage,
                  name + ": no such field; " + (known.empty() ? "there are none" : "there are " + joined(known)));
  }
}

}  // namespace ctl
