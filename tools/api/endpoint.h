// SPDX-License-Identifier: Apache-2.0
// The table of what can be asked for: one row each. The router, the words of the command that a row stands for, the
// rights and the document doc/api.yaml are made from it.
#pragma once

#include <algorithm>
#include <span>
#include <string>
#include <vector>

namespace api {

enum class Right { kNone, kRead, kChange };

// How a member of the body, or of the query of a GET, reaches the command.
enum class Form {
  kWord,    // at its place in the words: "{position}"
  kOption,  // behind its option, where it is there
  kFlag,    // true: the option alone
  kSwitch,  // true and false are the words on and off, at its place or behind its option
  kState,   // a state of the settings, at its place
  kLine,    // a line of standard input: a password
  kInput    // standard input as a whole
};

struct Field {
  const char* name;
  Form form;
  const char* option = "";  // "--kbps"; empty for a word
  const char* type = "string";
  bool needed = false;
  const char* help = "";
};

struct Endpoint {
  const char* method;
  const char* path;  // "/rules/{position}", below /api/1
  Right right;
  const char* words;  // "rule change {position}"; empty where special is what carries it out
  const char* help;
  std::vector<Field> fields = {};
  const char* table = "";    // the command whose result the ETag is of; empty where there is none
  const char* pick = "";     // of a list the one row whose member of this name is the path's last part
  const char* special = "";  // what the program does itself: "log-in", "batch", "stream", ...
  int done = 200;            // the status of a success
  const char* result = "";   // the shape of what the program does itself; a command has its own

  bool reads() const { return std::string(method) == "GET"; }
  bool takesSecret() const {
    return std::ranges::any_of(fields, [](const Field& field) { return field.form == Form::kLine; });
  }
};

constexpr char kPrefix[] = "/api/1";

std::span<const Endpoint> endpoints();

}  // namespace api
