// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/exit_codes.h"

#include <iterator>

namespace ctl {
namespace {

constexpr ExitCode kExitCodes[] = {
    {kDone, "done", "done, or nothing to do"},
    {kRefused, "refused by the library", "refused by the library; the message ends with the text of shm_errno"},
    {kUsage, "wrong usage", "the command line makes no sense; the usage line of the command follows"},
    {kNoStore, "there is no store",
     "there is no store, a foreign segment under its key, or a library of another layout"},
    {kFindings, "something was found, or two things differ",
     "a command that looks for faults or differences found some"},
    {kSystem, "a file, a program or standard output failed",
     "a file or a program failed outside the library, or standard output could not be written"},
    {kLocked, "another process held the store's lock longer than --wait",
     "another process held the store's lock for longer than --wait"},
    {kNotPermitted, "not permitted", "not permitted: the lock file, the segment or a file belongs to others"},
    {kNotSaved, "applied, but not saved, or without a revision",
     "applied, not saved: the store, the kernel and the engine have the change, the configuration file does not; or "
     "applied without a revision"},
    {kPartly, "partly applied", "partly applied: some steps of the change were made, others not; it says which"},
    {kUnconfirmed, "not confirmed in time, and taken back",
     "the change was not confirmed in time, and the former state is back"}};

constexpr bool everyNumberHasItsRow() {
  for (size_t i = 0; i < std::size(kExitCodes); ++i) {
    if (kExitCodes[i].exit != static_cast<Exit>(i)) return false;
  }
  return std::size(kExitCodes) == kUnconfirmed + 1;
}
static_assert(everyNumberHasItsRow());

}  // namespace

std::span<const ExitCode> exitCodes() { return kExitCodes; }

std::string exitCodesText() {
  std::string text = "Exit status:\n";
  for (const ExitCode& code : kExitCodes) {
    const std::string number = std::to_string(code.exit);
    text += std::string(4 - number.size(), ' ') + number + "  " + code.brief + "\n";
  }
  return text + kExitOfExplain;
}

}  // namespace ctl
