// SPDX-License-Identifier: Apache-2.0
// Where programs named without a path are looked for.
//
// Commands run as root, so a PATH that somebody else chose, or can put programs into, is not followed.
#pragma once

namespace kestrove::sys {

// The folders used in place of a PATH that may not be trusted.
constexpr char kSystemFolders[] = "/usr/sbin:/usr/bin:/sbin:/bin";

// A PATH may be trusted when this process was not started with more rights than its caller's (a setuid program, say)
// and when every entry is an absolute path to a folder that only root, or the present user, can change: the folder and
// those above it belong to one of them and nobody else may write there. Without a PATH there is nothing to distrust.
bool searchPathIsTrusted();

// For a scope: programs started within are looked for in the system's folders unless the PATH may be trusted. The
// caller's PATH is back at the end.
class TrustedSearchPath {
 public:
  TrustedSearchPath();
  ~TrustedSearchPath();
  TrustedSearchPath(const TrustedSearchPath&) = delete;
  TrustedSearchPath& operator=(const TrustedSearchPath&) = delete;

 private:
  char** place_ = nullptr;  // of the caller's PATH in the environment
  char* callers_ = nullptr;
};

}  // namespace kestrove::sys
