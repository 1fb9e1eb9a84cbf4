// SPDX-License-Identifier: Apache-2.0
#include "tools/monitor/notes.h"

#include <syslog.h>

#include <fstream>

#include "tools/ctl/session.h"
#include "tools/ctl/watch/new_file.h"

namespace monitor {

void writeNote(const std::string& path, const std::string& text) {
  try {
    ctl::NewFile file(path, 0600);
    file.write(text);
    file.putInPlace();
  } catch (const ctl::Refusal& refusal) {
    syslog(LOG_WARNING, "%s", refusal.what());
  }
}

Notes::Notes(std::string path) : path_(std::move(path)) {
  std::ifstream file(path_);
  int slot = 0;
  for (Line line; file >> slot >> line.pid >> line.since;) lines_[slot] = line;
}

unsigned long long Notes::since(int slot, int pid) const {
  const auto found = lines_.find(slot);
  return found != lines_.end() && found->second.pid == pid ? found->second.since : 0;
}

void Notes::note(int slot, int pid, unsigned long long since) {
  lines_[slot] = {pid, since};
  write();
}

void Notes::forget(int slot) {
  if (lines_.erase(slot) != 0) write();
}

void Notes::write() const {
  std::string text;
  for (const auto& [slot, line] : lines_) {
    text += std::to_string(slot) + " " + std::to_string(line.pid) + " " + std::to_string(line.since) + "\n";
  }
  writeNote(path_, text);
}

}  // namespace monitor
