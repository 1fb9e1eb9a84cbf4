// SPDX-License-Identifier: Apache-2.0
// What an order of operations leaves: the store, the saved files, the kernel's tables.
#pragma once

#include <stdint.h>
#include <sys/types.h>
#include <time.h>

#include <array>
#include <string>
#include <vector>

#include "kestrove/layout.h"
#include "tests/explore/kernel.h"

namespace kestrove::explore {

enum Component {
  kResults,
  kStore,
  kConfiguration,
  kEvents,
  kPasswords,
  kResolver,
  kStarted,    // programs, and whether one was started under the lock that may not be
  kLeftovers,  // files beside the saved ones
  kKernelTables,
  kComponents
};
extern const char* const kComponentNames[kComponents];

struct Outcome {
  std::array<uint64_t, kComponents> mark = {};  // equal when the component is
  std::array<std::string, kComponents> text;    // where asked for
  bool operator==(const Outcome& other) const { return mark == other.mark; }
};

uint64_t markOf(const void* data, size_t size, uint64_t mark = 0);

// The segment, and what it held at the start.
class StoreImage {
 public:
  bool attach();
  void keep();
  void destroy();  // the segment: for orders that begin without one
  void recreate();
  // Of what differs from the start, but for what no two runs have in common.
  uint64_t mark();
  std::string differences() const;
  // What differed when it was marked last.
  void restore();
  bool there() const { return now_ != nullptr; }
  ShmData& data() { return *now_; }

 private:
  void detach();

  ShmData* now_ = nullptr;
  std::vector<char> base_;
  std::vector<size_t> changed_;  // pages
};

struct FileState {
  std::string path;
  bool there = false;
  std::string text;
  bool changed = false;  // since it was kept
  void read();
  void sortLines();
  void write() const;
};

// The names in a folder, read again only when something was put in or taken out.
class Folder {
 public:
  explicit Folder(const char* path) : path_(path) {}
  void keep();
  // Files that were not there before.
  std::vector<std::string> added();

 private:
  std::vector<std::string> names() const;

  const char* path_;
  std::vector<std::string> kept_;
  timespec changed_ = {};
  off_t size_ = -1;
};

class World {
 public:
  void keep();  // as it is now, it is before every order
  Outcome look(bool kernel, bool killed, bool inWords);
  // As the last look saw: one that uses the store was started under its lock.
  bool programWaits() const { return programWaits_; }
  // What the last look saw changed is put back.
  void restore(bool withStore);

  StoreImage& store() { return store_; }

 private:
  void lookAtFiles(Outcome& outcome, bool inWords);
  void lookForLeftovers(Outcome& outcome, bool killed, bool inWords);
  void lookAtKernel(Outcome& outcome, bool inWords);
  void restoreFiles();

  StoreImage store_;
  std::vector<FileState> files_;
  std::vector<Folder> folders_;
  std::vector<std::string> leftovers_;
  Kernel kernel_;
  std::vector<KernelEntry> tables_;
  uint64_t tablesMark_ = 0;
  bool tablesChanged_ = false;
  bool programWaits_ = false;
};

}  // namespace kestrove::explore
