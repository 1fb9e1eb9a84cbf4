// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/tables_back.h"

#include <unistd.h>

#include <cstring>
#include <memory>

#include "kestrove/segment.h"
#include "tools/common/loading_note.h"

namespace ctl {
namespace {

struct Range {
  size_t begin;
  size_t end;
};

constexpr Range kRanges[] = {
    {offsetof(ShmData, operationalState), offsetof(ShmData, qos)},
    {offsetof(ShmData, oldAdminUsername), offsetof(ShmData, reserved30b)},
    {offsetof(ShmData, reserved32), sizeof(ShmData)},  // with the word of a shift of rules in progress
};

std::unique_ptr<unsigned char[]> copy;

unsigned char* store() { return reinterpret_cast<unsigned char*>(shm); }

// Only what is safe wherever the signal came.
void putBack(int signal) {
  constexpr char kSaid[] = "kestrovectl: interrupted; the tables are as before\n";
  for (const Range& range : kRanges) memcpy(store() + range.begin, copy.get() + range.begin, range.end - range.begin);
  tools::forgetLoading();
  [[maybe_unused]] const ssize_t said = write(STDERR_FILENO, kSaid, sizeof kSaid - 1);
  struct sigaction action = {};
  action.sa_handler = SIG_DFL;
  sigaction(signal, &action, nullptr);
  raise(signal);  // taken when this returns
}

}  // namespace

TablesBack::TablesBack() {
  copy = std::make_unique<unsigned char[]>(sizeof(ShmData));
  memcpy(copy.get(), shm, sizeof(ShmData));
  struct sigaction action = {};
  action.sa_handler = putBack;
  sigfillset(&action.sa_mask);
  for (size_t i = 0; i < kSignalCount; ++i) {
    sigaction(kSignals[i], nullptr, &before_[i]);
    if (before_[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
  }
}

TablesBack::~TablesBack() {
  for (size_t i = 0; i < kSignalCount; ++i) sigaction(kSignals[i], &before_[i], nullptr);
  copy.reset();
}

}  // namespace ctl
