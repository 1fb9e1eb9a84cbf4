// SPDX-License-Identifier: Apache-2.0
// The grammar of kestrovectl: one row for each command, with its words, the values that follow them, its help and what
// carries it out. The parser, the help and the reference in doc/kestrovectl.md are made from these rows.
#pragma once

#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include "tools/ctl/script/wish.h"
#include "tools/ctl/session.h"
#include "tools/ctl/values.h"

namespace ctl {

// One value of a command line. Those without "--" stand in the order of the row. Options of saved scripts have one
// dash.
struct Value {
  std::string name;  // "POSITION", "--kbps", "-srcPort"
  Type type;
  const char* help = "";
  bool needed = false;
  bool several = false;   // takes every word that is left
  bool lastWins = false;  // may be given again
  bool wordless = false;  // an option that may stand without its value
  std::string preset;     // what holds when it is not given; empty where that is nothing to show

  bool isOption() const { return name.starts_with("-"); }
};

// A value with its place in the record that the handler gets.
template <typename Line>
struct Argument : Value {
  std::function<void(Line&, const std::string&)> put;
};

// The words that were given for each value of a row, in the row's order; none where a value is absent.
using Given = std::vector<std::vector<std::string>>;

struct Command {
  std::vector<std::string> words;  // "rule", "add"
  const char* help = "";
  std::vector<Value> values = {};
  // Makes the handler's record of the words and runs the handler; both throw a Refusal. Empty for a group, which only
  // has commands below it. A row that has both is what its words alone do.
  std::function<void(const Session&, const Given&)> run = nullptr;
  std::string more = {};  // below the help of this command
  bool hidden = false;    // for the program's own use
  bool changes = false;   // the store, the kernel or a file; what does not may be run by who may only read
  bool secret = false;    // asks for a password: its lines are kept nowhere
  const char* json = "";  // the shape of its result, in the words of shape.h

  Command gives(const char* shape) && {
    json = shape;
    return std::move(*this);
  }
  bool script = false;  // a line of saved scripts; may have the words of the row in front of it, with other values
  // What the line asks the store to hold, where it is a setting: what apply makes a whole store of. Throws a Refusal.
  std::function<Wish(const Given&)> wish = nullptr;
};

// The whole table, groups in front of their commands, in the order in which help lists them.
const std::vector<Command>& grammar();

// What goes with every command, before or behind its words.
const std::vector<Argument<Session>>& sharedOptions();

// The builders of rows.

template <typename Line, typename Field>
Argument<Line> argument(const char* name, Field Line::*field, const Type& type, const char* help) {
  Argument<Line> made;
  made.name = name;
  made.type = type;
  made.help = help;
  made.put = [field, type](Line& line, const std::string& word) { convert(type, word, line.*field); };
  return made;
}

template <typename Line, typename Field>
Argument<Line> needed(const char* name, Field Line::*field, const Type& type, const char* help) {
  Argument<Line> made = argument(name, field, type, help);
  made.needed = true;
  return made;
}

// An option, or a word that may be left out.
template <typename Line, typename Field>
Argument<Line> option(const char* name, Field Line::*field, const Type& type, const char* help) {
  Argument<Line> made = argument(name, field, type, help);
  made.preset = presetText(type, Line{}.*field);
  return made;
}

template <typename Line>
Argument<Line> flag(const char* name, bool Line::*field, const char* help) {
  return argument(name, field, takes::flag(), help);
}

template <typename Line>
Argument<Line> several(const char* name, std::vector<std::string> Line::*field, const Type& type, const char* help) {
  Argument<Line> made = argument(name, field, type, help);
  made.several = true;
  return made;
}

// The record of a handler, made of the words.
template <typename Line>
Line lineOf(const std::vector<Argument<Line>>& arguments, const Given& given) {
  Line line;
  for (size_t i = 0; i < given.size(); ++i) {
    for (const std::string& word : given[i]) arguments[i].put(line, word);
  }
  return line;
}

// "rule add" as its words.
std::vector<std::string> wordsOf(const std::string& text);

inline Command group(const std::string& words, const char* help) { return {.words = wordsOf(words), .help = help}; }

inline Command command(const std::string& words, const char* help, void (*handler)(const Session&)) {
  Command row = group(words, help);
  row.run = [handler](const Session& session, const Given&) { handler(session); };
  return row;
}

template <typename Line>
Command command(const std::string& words, const char* help, void (*handler)(const Session&, const Line&),
                std::type_identity_t<std::vector<Argument<Line>>> arguments, const std::string& more = "") {
  Command row = group(words, help);
  row.values.assign(arguments.begin(), arguments.end());
  row.more = more;
  row.run = [handler, arguments](const Session& session, const Given& given) {
    handler(session, lineOf(arguments, given));
  };
  return row;
}

// Rows that change something, made as the others are.
inline Command changing(const std::string& words, const char* help, void (*handler)(const Session&)) {
  Command row = command(words, help, handler);
  row.changes = true;
  return row;
}

template <typename Line>
Command changing(const std::string& words, const char* help, void (*handler)(const Session&, const Line&),
                 std::type_identity_t<std::vector<Argument<Line>>> arguments, const std::string& more = "") {
  Command row = command(words, help, handler, std::move(arguments), more);
  row.changes = true;
  return row;
}

// The same row, whose handler asks for a password.
inline Command askingPassword(Command row) {
  row.secret = true;
  return row;
}

// A changing row that says what the store shall hold.
template <typename Line>
Command setting(const std::string& words, const char* help, void (*handler)(const Session&, const Line&),
                Wish (*wish)(const Line&), std::type_identity_t<std::vector<Argument<Line>>> arguments,
                const std::string& more = "") {
  Command row = changing(words, help, handler, arguments, more);
  row.wish = [wish, arguments](const Given& given) { return wish(lineOf(arguments, given)); };
  return row;
}

// The same row as one of saved scripts.
inline Command ofScripts(Command row) {
  row.script = true;
  return row;
}

// Two lists of values as one.
template <typename Line>
std::vector<Argument<Line>> operator+(std::vector<Argument<Line>> first, std::vector<Argument<Line>> second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

}  // namespace ctl
