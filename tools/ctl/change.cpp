#include "tools/ctl/change.h"

#include <cerrno>
#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/render.h"

namespace ctl {
namespace {

bool configuring() { return shm->operationalState == SHM_STATE_CONFIGURATION; }

// Codes that a save leaves which did not reach the file; other steps leave them, too.
bool mayBeLost(uint32_t code) { return code == SHM_ESYSTEM || code == SHM_EIO; }

}  // namespace

Change::Change(const Session& session) : session_(session) {
  awaitLock(session);
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
  lost_ = text(shm->config.configFileName) + ": " + (errno != 0 ? strerror(errno) : reason);
  code_ = code;
}

std::string Change::notSaved() const {
  if (configuring()) return "the store is in Configuration Mode";
  return unsaved_;
}

void Change::tell(Json result, const std::string& text) const {
  const std::string stored = notSaved();
  const std::string message = "applied, not saved: " + lost_;
  if (session_.json) {
    if (!result.is_object()) result = Json{{"result", result}};
    if (!lost_.empty() || !stored.empty()) result["saved"] = false;
    if (!lost_.empty()) result["error"] = errorJson(kNotSaved, message, code_);
    if (!stored.empty()) result["reason"] = stored;
    session_.show(result);
  } else {
    session_.print(text + (stored.empty() ? "" : "stored, not saved: " + stored + "\n"));
  }
  if (lost_.empty()) return;
  if (!session_.json) warn(message);
  throw Refusal(kNotSaved, "");
}

void Change::show(Json result) const { tell(result, session_.json ? "" : render(result)); }

void Change::done(const std::string& text) const { tell(Json{{"done", text}}, tools::escaped(text) + "\n"); }

}  // namespace ctl
