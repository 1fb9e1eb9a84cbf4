// SPDX-License-Identifier: Apache-2.0
// Where the output of a command goes: to the terminal, or through a pager when it is longer than that.
#pragma once

#include <sys/types.h>

#include <cstdio>
#include <string>

namespace ctl {

struct ScreenSize {
  size_t rows = 24;
  size_t columns = 80;
};

// Of the terminal; no terminal has the usual one.
ScreenSize screenSize(FILE* terminal);

// Whether colours may be used there: a terminal that knows them, and nobody who asked for none.
bool showsColours(FILE* terminal);

class Screen {
 public:
  // Without a pager everything is shown as it comes.
  Screen(FILE* terminal, bool pager);
  ~Screen();
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  void line(const std::string& line);
  void end();
  // Whether the reader has gone.
  bool left() const { return left_; }

 private:
  void startPager();
  void write(const std::string& text);

  FILE* terminal_;
  bool waits_;       // for more than the screen holds
  size_t rows_ = 0;  // that this takes so far
  std::string kept_;
  FILE* pager_ = nullptr;
  pid_t process_ = -1;
  bool left_ = false;
};

}  // namespace ctl
