// SPDX-License-Identifier: Apache-2.0
// Commands that are tried in a sandbox first.
#pragma once

#include <string>
#include <vector>

#include "tools/ctl/session.h"

namespace ctl {

// A folder that is gone when the command ends.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

// Runs "kestrovectl INSIDE PATH -- COMMAND" in a sandbox that sees the path and the files that the command names, and
// gives the JSON that it prints. Throws kSystem where there is no sandbox or it fails.
Json runInSandbox(const Session& session, const std::string& inside, const std::string& path,
                  std::vector<std::string> command);

// Ends the way of the command that was tried.
void passStatus(const Session& session, int status);

}  // namespace ctl
