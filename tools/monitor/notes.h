// SPDX-License-Identifier: Apache-2.0
// Which processes the tasks were, for a monitor that comes after this one: a slot of the store holds a number alone,
// and that may belong to another process by then.
#pragma once

#include <map>
#include <string>

namespace monitor {

// Whole, in a file for root alone. What cannot be written is said in the system log, and missed by the next monitor.
void writeNote(const std::string& path, const std::string& text);

class Notes {
 public:
  explicit Notes(std::string path);

  // When the process began that had this number in this slot; 0 where nothing is known of it.
  unsigned long long since(int slot, int pid) const;
  void note(int slot, int pid, unsigned long long since);
  void forget(int slot);

 private:
  struct Line {
    int pid = 0;
    unsigned long long since = 0;
  };
  void write() const;

  std::string path_;
  std::map<int, Line> lines_;
};

}  // namespace monitor
