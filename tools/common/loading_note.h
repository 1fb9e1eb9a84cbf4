// SPDX-License-Identifier: Apache-2.0
// A note beside the store's files of who is loading a configuration: loading holds Configuration Mode, and a loader
// that dies would leave every later change unsaved.
#pragma once

#include <cstdint>
#include <string>

namespace tools {

// Notes this process and the state to go back to; erased when the load is over.
class LoadingNote {
 public:
  explicit LoadingNote(uint32_t state);
  ~LoadingNote();
  LoadingNote(const LoadingNote&) = delete;
  LoadingNote& operator=(const LoadingNote&) = delete;
  bool written() const { return written_; }

 private:
  bool written_;
};

// Erases this process's note, also from a signal handler.
void forgetLoading();

// Where the attached store is in Configuration Mode because of a noted loader that no longer lives: puts the old state
// back and says so. Otherwise empty, and nothing is changed.
std::string repairAbandonedLoad();

}  // namespace tools
