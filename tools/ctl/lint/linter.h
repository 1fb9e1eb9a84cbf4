// SPDX-License-Identifier: Apache-2.0
// What becomes of each line of a configuration file.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tools/ctl/lint/config_line.h"
#include "tools/ctl/lint/finding.h"
#include "tools/ctl/lint/rows.h"
#include "tools/ctl/lint/trial.h"

namespace ctl::lint {

// Reads the text line by line into the attached store and compares what is there before and after: to be used on a copy
// of the appliance.
class Linter {
 public:
  // Keywords that a save leaves out are only worth a word in a file that saves replace.
  Linter(const std::string& scratch, bool savesReplaceIt) : trial_(scratch), saved_(savesReplaceIt) {}
  // In the order of their places.
  std::vector<Finding> run(std::string_view text);

 private:
  struct Line : ConfigLine {
    std::string_view whole;
    const tools::ConfigKeyword* known = nullptr;
    explicit Line(std::string_view given) : ConfigLine(readConfigLine(given)), whole(given) {}
  };
  struct Said {
    std::string_view keyword;
    size_t line;
  };

  void look(const Line& line);
  void lookAtSaving(const Line& line);
  void lookAtRow(const Line& line);
  void lookAtColumns(const Line& line, const Columns& stored);
  void lookAtFamily(const Line& line);
  void lookForSameRow(const Line& line, const Columns& stored);
  void lookAtField(const Line& line);
  void lookAtMethods(const Line& line, const Place& place);
  void lookForFormer(const Line& line, const Place& place);
  void note(const Word& place, const char* kind, const std::string& text);

  Trial trial_;
  bool saved_;
  Tables tables_;
  size_t number_ = 0;
  std::map<Place, Said> said_;
  std::map<std::string, size_t> rows_;  // the line of each
  std::vector<Finding> findings_;
};

}  // namespace ctl::lint
