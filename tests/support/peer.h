// SPDX-License-Identifier: Apache-2.0
// Another process of the appliance.
#pragma once

#include <sys/types.h>

#include <functional>

namespace kestrove::testing {

// A forked process that meets its parent at a pair of pipes. It ends with the result of its body; a parent that is done
// with it kills it.
class Peer {
 public:
  // What the body is given, and what the parent holds: one end of the line.
  class Line {
   public:
    Line(int in, int out) : in_(in), out_(out) {}
    void say(char word) const;
    char hear() const;                       // 0 when the other side is gone
    bool silentFor(int milliseconds) const;  // nothing was said in that time

   private:
    int in_;
    int out_;
  };

  explicit Peer(const std::function<int(const Line&)>& body);
  ~Peer();
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

  const Line& line() const { return line_; }
  pid_t pid() const { return pid_; }
  // Waits for its end: the body's result, or -1 when it was killed.
  int join();
  void kill();

 private:
  Line line_;
  pid_t pid_;
  int in_;
  int out_;
};

// The result of a body run in a process of its own, 0 to 255; -1 when it was killed.
int inOtherProcess(const std::function<int()>& body);

// Whether some process holds the file lock of the store, as another process sees it.
bool fileLockHeld();

// The descriptor of this process that the lock file is open on, -1 when it is not.
int lockDescriptor();

}  // namespace kestrove::testing
