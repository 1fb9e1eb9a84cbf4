// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/change.h"

#include <cerrno>
#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/ctl/held_look.h"

namespace ctl {
namespace {

bool configuring() { return shm->operationalState == SHM_STATE_CONFIGURATION; }

// Codes that a save leaves which did not reach the file; other steps leave them, too.
bool mayBeLost(uint32_t code) { return code == SHM_ESYSTEM || code == SHM_EIO; }

}  // namespace

Change::Change(const Session& session) : session_(session) {
  if (!session.changes) throw Refusal(kSystem, "a command that says it only reads was about to change the store");
  recording_.emplace(session);
  awaitLock(session);
  if (!hold_.emplace()) throw refusal("the store cannot be locked");
  HeldLook::call(false);
  recording_->begin();
  shm_errno = SHM_OK;
  errno = 0;
}

int Change::made(int result, const std::string& what, const Question& inStore) {
  const uint32_t code = shm_errno;
  const int error = errno;
  const bool suspicious = mayBeLost(code);
  if (result < 0 && !(suspicious && inStore && inStore())) {
    shm_errno = code;
    errno = error;
    throw refusal(what);
  }
  shm_errno = code;
  errno = error;
  if (suspicious) ask(what);
  return result;
}

// Whether the file has the change is found out by saving again: the code alone may be another step's.
void Change::ask(const std::string& what) {
  const std::string reason = reasonText();
  const int code = static_cast<int>(shm_errno);
  if (configuring()) return;
  shm_errno = SHM_OK;
  errno = 0;
  if (save_shared_memory() == 0 && shm_errno == SHM_OK)
    return warn(what + ": made and saved; a step of it failed: " + reason);
  lost_ = "applied, not saved: " + text(shm->config.configFileName) + ": " + (errno != 0 ? strerror(errno) : reason);
  code_ = code;
  error_ = errno;
}

std::string Change::notSaved() const {
  if (configuring()) return "the store is in Configuration Mode";
  return unsaved_;
}

Json Change::resultJson(Json result, const std::string& stored) const {
  if (lost_.empty() && stored.empty()) return result;
  if (!result.is_object()) result = Json{{"result", result}};
  result["saved"] = false;
  if (!lost_.empty()) result["error"] = errorJson({kNotSaved, lost_, code_, error_});
  if (!stored.empty()) result["reason"] = stored;
  return result;
}

Recorded Change::giveBack() {
  HeldLook::call(true);
  Recorded recorded = recording_->finish();
  hold_.reset();
  recording_.reset();
  return recorded;
}

// What is not saved is told first: the output may fail.
void Change::tell(const Json& result, const std::function<void()>& print) {
  const std::string stored = notSaved();
  const Recorded recorded = giveBack();
  if (!session_.json && !lost_.empty()) warn(lost_);
  if (!session_.json) recorded.warn();
  if (session_.json) {
    Json whole = resultJson(result, stored);
    recorded.addTo(whole);
    session_.show(whole);
  } else {
    print();
    const std::string said = stored.empty() ? "" : "stored, not saved: " + stored;
    if (!said.empty() && session_.forPeople()) session_.print(said + "\n");
    if (!said.empty() && !session_.forPeople()) warn(said);
    if (session_.forPeople()) session_.print(recorded.text());
  }
  if (!lost_.empty() || !recorded.missing.empty()) throw Refusal(kNotSaved, "");
}

void Change::show(const Json& result) {
  tell(result, [&] { session_.show(result); });
}

void Change::done(const std::string& text) {
  tell(Json{{"done", text}}, [&] { session_.done(text); });
}

}  // namespace ctl
