// SPDX-License-Identifier: Apache-2.0
// One change of the store: what came of it, and whether the configuration file has it.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "tools/common/hold.h"
#include "tools/ctl/history/recording.h"
#include "tools/ctl/session.h"

namespace ctl {

class Change {
 public:
  using Question = std::function<bool()>;

  // Waits for the locks as long as the session says, holds the store from here on, so that what is read for the change
  // is still so when it is made, and forgets the codes of earlier steps: what stands there afterwards is of this
  // change.
  explicit Change(const Session& session);

  // Takes the result of the operation. Throws its refusal when it failed; where a save that failed may be all that the
  // result tells, the question says whether the change was made.
  int made(int result, const std::string& what, const Question& inStore = nullptr);

  // What was changed is no setting, and is to have a revision all the same.
  void leavesRevision() { recording_->always(); }

  // Why the library only stores what was changed; empty when it saves it.
  void leavesUnsaved(const char* reason) { unsaved_ = reason; }

  // Give the store back and print what came of it, and tell where it was not saved; throw kNotSaved when the file could
  // not be written.
  void show(const Json& result);
  void done(const std::string& text);

 private:
  void ask(const std::string& what);
  std::string notSaved() const;
  Json resultJson(Json result, const std::string& stored) const;
  Recorded giveBack();
  void tell(const Json& result, const std::function<void()>& print);

  const Session& session_;
  std::optional<tools::Hold> hold_;
  std::optional<Recording> recording_;  // ends with the store still held
  const char* unsaved_ = "";
  std::string lost_;  // why the file does not have it
  int code_ = -1;
  int error_ = 0;
};

}  // namespace ctl
