// SPDX-License-Identifier: Apache-2.0
// What the JSON of a command looks like, written down beside the command: its document and its test are made from that,
// and --fields knows the names.
//
//   text number bool null any   a value of that kind; "on" with its quotes is that word alone
//   time                        text as "2026-11-21T22:17:46Z", or null, which is never
//   text|null                   one of several
//   [text]                      a list of any length
//   {name, mask: text, notes?: [text]}   members in any order; without a kind they are text, with ? they may be absent
//   {@account, more: text}  the members of a shape with a name, and more
//   {*: number}                 members of any name
//   @rule                       a shape that stands in shapes.cpp, as several commands have it
//   change(@rule)               what a change says: with "saved", "reason" and "error" where it is not saved
//   lines(@event)               one value a line, for as long as the command runs
//   kind (a remark)             what the document says of the member
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tools/ctl/grammar.h"

namespace ctl {

struct Member;

struct Shape {
  enum class Kind {
    kText,
    kNumber,
    kBool,
    kNull,
    kAny,
    kTime,
    kWord,
    kList,
    kObject,
    kChoice,
    kNamed,
    kChange,
    kLines
  };
  Kind kind = Kind::kAny;
  std::string word;          // of kWord; the name of kNamed
  std::vector<Shape> parts;  // of kList, kChange and kLines one; of kChoice all
  std::vector<Member> members;
};

struct Member {
  std::string name;  // "*" for any
  bool optional = false;
  std::string remark;
  Shape shape;
};

// Throws std::runtime_error for what is no shape.
Shape parseShape(const std::string& text);

// The shapes that have names.
struct NamedShape {
  const char* name;
  const char* help;
  const char* shape;
};
std::span<const NamedShape> namedShapes();
const Shape& shapeNamed(const std::string& name);

// Empty, or where a value is not as it should be: "[0].gateway: no text".
std::string mismatch(const Shape& shape, const Json& value);

// The shape of a command's result, as its row says it or else as command_shapes.cpp does; empty where neither does.
const char* shapeOf(const Command& row);

// The names that --fields takes; empty where the result has none.
std::vector<std::string> fieldsIn(const Shape& shape);

// Refuses what is no field of the command, and --json together with --terse or --fields.
void requireOutput(const Session& session, const Command& row);

// Markdown from one mark of doc/json.md to the other: a line for each command and a table for each name.
std::string shapesDocument(const std::vector<Command>& rows);

}  // namespace ctl
