// SPDX-License-Identifier: Apache-2.0
// A script read whole: what each of its lines asks for, and what is wrong in it.
#pragma once

#include <string>
#include <vector>

#include "tools/ctl/grammar.h"

namespace ctl {

struct ScriptLine {
  size_t number = 0;  // from 1
  std::string text;
  Wish wish;
};

struct Complaint {
  size_t line = 0;
  Refusal refusal;
};

struct Script {
  std::string name;  // as it was given; "-" for standard input
  std::vector<ScriptLine> lines = {};
  std::vector<Complaint> complaints = {};
  bool wholly = true;  // otherwise the reading was given up

  std::string place(size_t line) const { return name + ":" + std::to_string(line) + ": "; }
};

// More complaints than this end the reading.
inline constexpr size_t kMostComplaints = 100;

// Takes every line that says how a setting shall be: of a saved script, in kestrovectl's own words, and as
// settingLines() writes them. With the store attached, whose bounds the complaints name. Throws kSystem or
// kNotPermitted when the file cannot be read.
Script readScript(const std::string& path);
Script scriptOf(const std::string& name, FILE* in);

// "wanLinkRate 2048000 = rateLimit WAN 2048" of a line about an item; otherwise the line.
std::string meaningOf(const ScriptLine& line);

// Ends a command whose script is wrong: every complaint with its line, as JSON or on standard error. Throws the refusal
// of the first that makes no sense, or of the first.
[[noreturn]] void refuseScript(const Session& session, const Script& script, const std::vector<Complaint>& complaints);

}  // namespace ctl
