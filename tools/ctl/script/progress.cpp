// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/script/progress.h"

#include <unistd.h>

#include <cstdio>
#include <string>

namespace ctl {
namespace {

constexpr size_t kWidth = 30;
constexpr std::chrono::milliseconds kSilence(500);
constexpr std::chrono::milliseconds kPause(100);
constexpr char kErase[] = "\r\x1b[K";

}  // namespace

Progress::Progress() : terminal_(isatty(STDERR_FILENO) == 1), next_(Clock::now() + kSilence) {}

void Progress::end() {
  if (shown_) fputs(kErase, stderr);
  shown_ = false;
}

void Progress::show(size_t done, size_t all) {
  if (!terminal_ || all == 0 || Clock::now() < next_) return;
  next_ = Clock::now() + kPause;
  shown_ = true;
  const size_t filled = done * kWidth / all;
  const std::string bar = std::string(filled, '#') + std::string(kWidth - filled, '.');
  fprintf(stderr, "%s[%s] %zu of %zu", kErase, bar.c_str(), done, all);
  fflush(stderr);
}

}  // namespace ctl
