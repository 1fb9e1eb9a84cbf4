// SPDX-License-Identifier: Apache-2.0
// The lines that a person has typed, kept from one shell to the next.
#pragma once

#include <string>
#include <vector>

namespace ctl {

class HistoryFile {
 public:
  // Of this user: in the folder that KESTROVE_HOME names, else in the user's home; of who has logged in here in the
  // appliance's own folder, since the home there is everybody's.
  HistoryFile(const std::string& user, bool loggedIn);

  // The newest, oldest first. A long file is cut to them.
  std::vector<std::string> lines() const;
  // A failure is nobody's business: the line is lost.
  void add(const std::string& line) const;

 private:
  void rewrite(const std::vector<std::string>& lines) const;

  std::string path_;  // empty where nothing is kept
};

// Whether a line is of a command that asks for a password, or sets a secret: it is kept nowhere.
bool holdsSecret(const std::vector<std::string>& words);

// Whether a command takes the line at all. What none takes may be a password that was typed too early: no file has it.
bool isCommand(const std::vector<std::string>& words);

}  // namespace ctl
