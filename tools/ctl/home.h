// SPDX-License-Identifier: Apache-2.0
// The folder in which kestrovectl keeps files of its own: revisions, the journal, histories of shells.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sys/descriptor.h"

namespace ctl {

// /var/lib/kestrove, or what KESTROVE_HOME says. Where that is set and empty, nothing is kept: for a command that works
// on a copy of the store.
std::string homePath();
inline bool keepsNothing() { return homePath().empty(); }

// The folder, open: its files are reached through it, so that nobody can put another one in its place meanwhile. A
// folder that belongs to others, is a link or may be written by others is refused. All throw a Refusal.
class Home {
 public:
  // Made, 0700, where it is missing.
  static Home make();
  // None where there is no folder yet, or where nothing is kept.
  static std::optional<Home> find();

  std::string pathOf(const std::string& name) const { return homePath() + "/" + name; }
  std::vector<std::string> names() const;
  // None where there is no such file.
  std::optional<std::string> read(const std::string& name) const;
  // Whole and on the disk, or not at all.
  void write(const std::string& name, const std::string& text) const;
  // Gone from the disk, too. A file that is not there is no failure.
  void remove(const std::string& name) const;
  void rename(const std::string& from, const std::string& to) const;
  int folder() const { return folder_.get(); }

 private:
  explicit Home(kestrove::sys::Descriptor folder) : folder_(std::move(folder)) {}
  void sync(const std::string& name) const;

  kestrove::sys::Descriptor folder_;
};

// Whoever changes the store through kestrovectl, or touches the journal, has this lock. It is asked for in front of the
// store's own, and the kernel drops it when its process dies: a journal that nobody works on is abandoned.
class HomeLock {
 public:
  // None when it is not free within that many seconds.
  static std::optional<HomeLock> wait(const Home& home, double seconds);
  // As long as it takes.
  static HomeLock take(const Home& home);

 private:
  explicit HomeLock(kestrove::sys::Descriptor file) : file_(std::move(file)) {}

  kestrove::sys::Descriptor file_;
};

}  // namespace ctl
