// SPDX-License-Identifier: Apache-2.0
// The shapes as the part of doc/json.md that lists them.
#include <set>
#include <stdexcept>

#include "tools/ctl/reference.h"
#include "tools/ctl/shape.h"

namespace ctl {
namespace {

using Kind = Shape::Kind;

constexpr char kBegin[] = "<!-- The shapes begin: printed by kestrovectl-reference json -->\n";
constexpr char kEnd[] = "<!-- The shapes end -->\n";

// Anchors of Markdown have small letters, and names of shapes and commands may be the same: the shapes say what they
// are.
std::string anchor(std::string name) {
  for (char& c : name) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return "shape-" + name;
}

std::string kindText(const Shape& shape);

std::string listed(const std::vector<Shape>& parts, const char* between) {
  std::string text;
  for (const Shape& part : parts) text += (text.empty() ? "" : between) + kindText(part);
  return text;
}

std::string membersText(const Shape& shape) {
  std::string text;
  for (const Member& one : shape.members) {
    text +=
        (text.empty() ? "" : ", ") + one.name + (one.shape.kind == Kind::kText ? "" : " (" + kindText(one.shape) + ")");
  }
  return "object of " + text;
}

std::string kindText(const Shape& shape) {
  switch (shape.kind) {
    case Kind::kText: return "text";
    case Kind::kNumber: return "number";
    case Kind::kBool: return "true or false";
    case Kind::kNull: return "null";
    case Kind::kAny: return "any value";
    case Kind::kTime: return "time or null";
    case Kind::kWord: return "`\"" + shape.word + "\"`";
    case Kind::kNamed: return "[" + shape.word + "](#" + anchor(shape.word) + ")";
    case Kind::kChoice: return listed(shape.parts, " or ");
    case Kind::kList: return "list of " + kindText(shape.parts.front());
    case Kind::kLines: return "a line each: " + kindText(shape.parts.front());
    case Kind::kChange: return kindText(shape.parts.front()) + ", with [change](#shape-change)";
    case Kind::kObject: return membersText(shape);
  }
  return {};
}

std::string memberTable(const Shape& shape) {
  std::string text = "\n| Member | Kind | Remark |\n|---|---|---|\n";
  for (const Member& one : shape.members) {
    const std::string name = one.name == "*" ? "any name" : "`" + one.name + "`";
    const std::string absent = one.optional ? "may be absent" : "";
    text += "| " + name + " | " + kindText(one.shape) + " | " + absent +
            (one.optional && !one.remark.empty() ? "; " : "") + one.remark + " |\n";
  }
  return text;
}

// The object whose members a table tells, and what stands around it.
struct Told {
  std::string before;
  const Shape* object = nullptr;
  std::string behind;
};

Told toldOf(const Shape& shape) {
  if (shape.kind == Kind::kObject) return {"An object", &shape, ""};
  const bool around = shape.kind == Kind::kList || shape.kind == Kind::kLines || shape.kind == Kind::kChange;
  if (!around || shape.parts.front().kind != Kind::kObject) return {};
  if (shape.kind == Kind::kList) return {"A list of objects", &shape.parts.front(), ""};
  if (shape.kind == Kind::kLines) return {"An object a line", &shape.parts.front(), ""};
  return {"An object", &shape.parts.front(), ", with [change](#shape-change)"};
}

std::string described(const Shape& shape) {
  const Told told = toldOf(shape);
  if (told.object) return told.before + told.behind + ":\n" + memberTable(*told.object);
  return kindText(shape) + ".\n";
}

// Those without members of their own in one table, the others below it.
std::string commandsText(const std::vector<Command>& rows) {
  std::string brief = "| Command | JSON |\n|---|---|\n";
  std::string sections;
  std::set<std::string> told;  // two rows may have the same words
  for (const Command& row : rows) {
    const std::string words = joined(row.words, " ");
    if (row.hidden || !row.run || !told.insert(words).second) continue;
    if (!*shapeOf(row)) throw std::runtime_error(words + ": no shape of its JSON (.gives in its row)");
    const Shape shape = parseShape(shapeOf(row));
    if (!toldOf(shape).object) brief += "| `" + words + "` | " + kindText(shape) + " |\n";
    if (toldOf(shape).object) sections += "\n### " + words + "\n\n" + described(shape);
  }
  return brief + sections;
}

}  // namespace

std::string shapesDocument(const std::vector<Command>& rows) {
  std::string text = std::string(kBegin) + "## Commands\n\n" + commandsText(rows) + "\n## Shapes with names\n";
  for (const NamedShape& one : namedShapes()) {
    text += "\n### Shape " + std::string(one.name) + "\n\n" + one.help + ". " + described(shapeNamed(one.name));
  }
  return text + kEnd;
}

}  // namespace ctl
