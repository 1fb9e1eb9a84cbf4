// SPDX-License-Identifier: Apache-2.0
#include "tests/explore/judge.h"

#include <stdio.h>

#include <algorithm>
#include <sstream>

namespace kestrove::explore {
namespace {

bool anyOf(const std::vector<Ending>& endings, const Outcome& outcome) {
  return std::any_of(endings.begin(), endings.end(), [&](const Ending& one) { return one.outcome == outcome; });
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// The lines that one text has and the other lacks.
void tellLines(const char* mark, const std::string& text, const std::string& other) {
  std::vector<std::string> lines = linesOf(text), others = linesOf(other);
  for (const std::string& line : lines) {
    if (std::find(others.begin(), others.end(), line) == others.end()) printf("      %s %s\n", mark, line.c_str());
  }
}

bool readable(size_t component) { return component != kEvents; }

}  // namespace

std::string Judge::title(const Combination& combination) const {
  std::string text;
  for (int number : combination) text += (text.empty() ? "" : " | ") + search_.operation(number).name;
  return text;
}

Judge::Serial Judge::serialEndings(const Combination& combination, Victim victim) {
  Serial endings;
  search_.visit(combination, Search::Orders::kSerial, victim, [&](const Ending& ending) {
    if (!anyOf(endings, ending.outcome)) endings.push_back(ending);
    return true;
  });
  return endings;
}

bool Judge::check(const Combination& combination, Victim victim) {
  if (victim.process < 0) ++combinations_;
  Serial serial = serialEndings(combination, victim);
  Ending first;
  bool found = false;
  search_.visit(combination, Search::Orders::kAll, victim, [&](const Ending& ending) {
    ++orders_;
    kills_ += ending.killed;
    if (!ending.stuck && anyOf(serial, ending.outcome)) return true;
    found = true;
    first = ending;
    return false;
  });
  findings_ += found;
  if (found && !quiet_) tell(combination, victim, first);
  return !found;
}

// At its start none has done anything.
bool Judge::checkKills(const Combination& combination) {
  bool good = true;
  for (size_t process = 0; process < combination.size(); ++process) {
    int number = static_cast<int>(process);
    int parks = static_cast<int>(search_.trace(number, combination[process]).size());
    for (int park = 1; park < parks; ++park) good = check(combination, {number, park}) && good;
  }
  return good;
}

void Judge::tellDifference(const Outcome& outcome, const Serial& serial) const {
  for (const Ending& one : serial) {
    printf("    beside the serial order %s\n", one.schedule.c_str());
    for (size_t component = 0; component < kComponents; ++component) {
      if (outcome.mark[component] == one.outcome.mark[component]) continue;
      printf("     %s\n", kComponentNames[component]);
      if (!readable(component)) continue;
      tellLines("here  ", outcome.text[component], one.outcome.text[component]);
      tellLines("serial", one.outcome.text[component], outcome.text[component]);
    }
  }
}

// All is run once more, for the words.
void Judge::tell(const Combination& combination, Victim victim, const Ending& ending) {
  printf("NOT SERIAL: %s\n    %s\n", title(combination).c_str(), ending.schedule.c_str());
  search_.describe(true);
  Serial serial = serialEndings(combination, victim);
  search_.visit(combination, Search::Orders::kAll, victim, [&](const Ending& again) {
    if (again.schedule != ending.schedule) return true;
    tellDifference(again.outcome, serial);
    return false;
  });
  search_.describe(false);
  fflush(stdout);
}

}  // namespace kestrove::explore
