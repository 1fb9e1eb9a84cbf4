// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/session.h"

#include <arpa/inet.h>
#include <sys/shm.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include "kestrove/kestrove.h"
#include "tools/common/loading_note.h"
#include "tools/common/lock_wait.h"
#include "tools/common/plain_text.h"
#include "tools/common/standard_output.h"
#include "tools/common/store_refusal.h"
#include "tools/ctl/history/finish.h"
#include "tools/ctl/output/fields.h"
#include "tools/ctl/output/screen.h"
#include "tools/ctl/output/terse.h"
#include "tools/ctl/render.h"

namespace ctl {
namespace {

constexpr char kLockFile[] = "/var/lock/shm";

bool forbidden(int error) { return error == EACCES || error == EPERM; }

// JSON has escapes for the control characters of ASCII alone, and for these not for the last.
std::string withoutControls(std::string json) {
  constexpr std::string_view kDelete = "\x7f";
  for (size_t at = 0; (at = json.find_first_of("\x7f\xc2", at)) != std::string::npos; ++at) {
    const bool second = json[at] != kDelete[0];
    if (second && (at + 1 == json.size() || static_cast<unsigned char>(json[at + 1]) >= 0xA0)) continue;
    char escape[8];
    snprintf(escape, sizeof escape, "\\u%04x", second ? static_cast<unsigned char>(json[at + 1]) : 0x7Fu);
    json.replace(at, second ? 2 : 1, escape);
  }
  return json;
}

// The code of a call of the library in front of which errno was cleared.
bool systemFailed() { return shm_errno == SHM_ESYSTEM || shm_errno == SHM_EOPEN || shm_errno == SHM_EIO; }

void requireSegment() {
  if (shmget(SHM_KEY, SHM_SIZE, 0) != -1) return;
  if (errno != ENOENT && errno != EINVAL) throw systemRefusal("the store", errno);
  throw Refusal(kNoStore, tools::segmentRefusal(errno), SHM_EATTACH);
}

void tellWaiting() {
  const tools::LockAnswer answer = tools::tryLock();
  if (answer.state == tools::LockState::kHeld) warn("waiting for the store: locked by " + describe(answer.holder));
}

Json errnoJson(int error) {
  const char* name = strerrorname_np(error);
  return {{"number", error}, {"name", name ? Json(name) : Json()}, {"text", strerror(error)}};
}

}  // namespace

std::string reasonText() {
  const char* reason = shm_strerror(static_cast<int>(shm_errno));
  if (!reason) return "unknown reason";
  if (const int error = reasonError()) return std::string(reason) + ": " + strerror(error);
  return reason;
}

int reasonError() { return systemFailed() ? errno : 0; }

Refusal refusal(const std::string& what) {
  if (shm_errno == SHM_OK) return {kRefused, what + ": refused; the library gives no reason"};
  const bool notPermitted = systemFailed() && forbidden(errno);
  return {notPermitted ? kNotPermitted : kRefused, (notPermitted ? "not permitted: " : "") + what + ": " + reasonText(),
          static_cast<int>(shm_errno), reasonError()};
}

Refusal systemRefusal(const std::string& what, int error) {
  if (forbidden(error)) return {kNotPermitted, "not permitted: " + what + ": " + strerror(error), -1, error};
  return {kSystem, what + ": " + strerror(error), -1, error};
}

int accept(int result, const std::string& what) {
  if (result < 0) throw refusal(what);
  return result;
}

void Session::print(const std::string& text) const {
  const std::string failure = tools::writeOut(out, text);
  if (!failure.empty()) throw Refusal(kSystem, failure, -1, errno);
}

Json Session::chosen(const Json& result) const {
  return fields.empty() ? result : fieldsOf(result, fieldNames(fields));
}

std::string Session::recordLine(const Json& record) const {
  return json ? jsonText(record, -1) + "\n" : terseText(chosen(record));
}

void Session::show(const Json& result) const {
  if (json) return print(jsonText(result, 2) + "\n");
  print(terse ? terseText(chosen(result)) : render(chosen(result), wide ? 0 : columns.value_or(screenColumns(out))));
}

void Session::done(const std::string& text) const {
  if (!forPeople()) return show({{"done", text}});
  print(tools::escaped(text) + "\n");
}

// A text of the store may hold any bytes: what is no UTF-8 is shown as a replacement character.
std::string jsonText(const Json& value, int indent) {
  return withoutControls(value.dump(indent, ' ', false, Json::error_handler_t::replace));
}

Json errorJson(const Refusal& refusal) {
  Json error = {{"message", refusal.what()}, {"exit", static_cast<int>(refusal.exit())}};
  if (refusal.code() >= 0) error["code"] = refusal.code();
  if (refusal.error() != 0) error["errno"] = errnoJson(refusal.error());
  return error;
}

void warn(const std::string& text) { fprintf(stderr, "kestrovectl: %s\n", tools::escaped(text).c_str()); }

void awaitLock(const Session& session) {
  if (session.tellsWaiting && session.waitSeconds > 0) tellWaiting();
  const tools::LockAnswer answer = tools::waitForLock(session.waitSeconds);
  switch (answer.state) {
    case tools::LockState::kFree: return;
    case tools::LockState::kHeld: throw Refusal(kLocked, tools::heldTooLong(answer.holder, session.waitSeconds));
    case tools::LockState::kMissing:
    case tools::LockState::kDenied:
    case tools::LockState::kFailed: throw systemRefusal(kLockFile, answer.error);
  }
}

void attachStore(const Session& session) {
  requireSegment();
  awaitLock(session);
  shm_errno = SHM_OK;
  errno = 0;
  if (kestrove_hold() != 0) {
    if (shm_errno == SHM_EATTACH && forbidden(errno)) throw systemRefusal("the store", errno);
    if (shm_errno == SHM_EATTACH) throw Refusal(kNoStore, tools::segmentRefusal(ENOENT), SHM_EATTACH);
    throw refusal("the store cannot be locked");
  }
  std::string note = tools::repairAbandonedLoad();
  kestrove_release();
  if (!note.empty()) warn(note);
}

void requireStore(const Session& session) {
  attachStore(session);
  finishAbandoned(session);
}

std::string addressText(uint32_t address) { return ipv4_to_a(address); }

std::string address6Text(const uint8_t (&address)[16]) {
  char buffer[INET6_ADDRSTRLEN];
  return inet_ntop(AF_INET6, address, buffer, sizeof buffer) ? buffer : "::";
}

std::string hardwareText(const uint8_t (&address)[6]) {
  char buffer[18];
  snprintf(buffer, sizeof buffer, "%02X:%02X:%02X:%02X:%02X:%02X", address[0], address[1], address[2], address[3],
           address[4], address[5]);
  return buffer;
}

Json timeJson(int32_t seconds) {
  if (seconds == 0) return nullptr;
  const time_t when = seconds;
  struct tm utc = {};
  char text[32];
  if (!gmtime_r(&when, &utc) || strftime(text, sizeof text, "%FT%TZ", &utc) == 0) return seconds;
  return text;
}

}  // namespace ctl
