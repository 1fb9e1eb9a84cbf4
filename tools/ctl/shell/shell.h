// SPDX-License-Identifier: Apache-2.0
// The shell: one command after the other, from a person or from standard input.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "tools/ctl/session.h"
#include "tools/ctl/shell/editor.h"
#include "tools/ctl/shell/history_file.h"
#include "tools/ctl/shell/prompt.h"

namespace ctl {

class Filters;
class InputLines;
class Screen;

class Shell {
 public:
  explicit Shell(const Session& session);

  // Prompts, until the person leaves.
  void talk();
  // The lines of standard input, all of them; gives the exit status of the first that failed. Empty input gives none.
  std::optional<int> readAll();

 private:
  std::optional<int> runNext(InputLines& lines);
  int run(const std::string& line);
  int runWords(const std::string& line);
  int runCommand(const Session& session, const std::vector<std::string>& words, Filters& filters, Screen& screen) const;
  int filtered(const Session& session, const std::vector<std::string>& words, Filters& filters, Screen& screen) const;
  bool refreshRights();
  void keep(const std::string& line, const std::vector<std::string>& words);
  std::string prompt();

  Session session_;
  std::string readsOnly_;
  KnownUnsaved known_;
  bool talks_ = false;
  bool left_ = false;
  std::unique_ptr<Editor> editor_;
  HistoryFile history_;
};

// What the program does without a command: talks to who types, runs what stands in standard input. None where there is
// neither, or where a line of the shell itself has no command.
std::optional<int> shellWithoutCommand(const Session& session);

}  // namespace ctl
