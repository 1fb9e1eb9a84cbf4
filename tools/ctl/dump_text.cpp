// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/dump_text.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include "kestrove/kestrove.h"
#include "tools/common/hold.h"
#include "tools/common/plain_text.h"
#include "tools/ctl/session.h"

namespace ctl {
namespace {

// Bytes that stand in no UTF-8 text, for the two control characters that the dump has itself.
constexpr char kLineFeed = '\xfe';
constexpr char kTab = '\xff';

template <size_t N>
void mark(char (&field)[N]) {
  for (char& c : field) {
    if (c == '\n') c = kLineFeed;
    if (c == '\t') c = kTab;
  }
}

template <typename... Fields>
void markAll(Fields&... fields) {
  (mark(fields), ...);
}

void markTexts(ShmData& store) {
  ConfigRecord& config = store.config;
  markAll(config.kestroveFullVersion, config.kestroveVersion, config.drelmFullVersion, config.drelmVersion,
          config.unitId, config.configFileName, config.eventLogFileName, config.httpEncryptedId, config.sysName,
          config.sysLocation, config.sysContact, config.sysDescription);
  markAll(config.lanInterfaceName, config.physicalLanInterfaceName, config.bridgeRouterPhysicalName,
          config.managementInterfaceName, config.wanInterfaceName, config.physicalWanInterfaceName);
  markAll(store.eventSourceUsername, store.oldAdminUsername, store.oldAdminPassword, store.ddupStartupOptions);
  for (UserAccount& user : config.users) mark(user.username);
  for (Route6Entry& route : store.routes6.slot) mark(route.interfaceName);
  for (EventRecord& event : store.eventLog.record) mark(event.userName);
}

// The library works on what shm points to: for a while that is a copy.
class Copy {
 public:
  Copy() : own_(shm), copy_(std::make_unique<ShmData>()) {
    memcpy(copy_.get(), own_, sizeof(ShmData));
    markTexts(*copy_);
    shm = copy_.get();
  }
  ~Copy() { shm = own_; }
  Copy(const Copy&) = delete;
  Copy& operator=(const Copy&) = delete;

 private:
  ShmData* own_;
  std::unique_ptr<ShmData> copy_;
};

std::string librarysDump() {
  char* text = nullptr;
  size_t size = 0;
  FILE* stream = open_memstream(&text, &size);
  if (!stream) throw Refusal(kSystem, "no memory for the dump");
  const int result = dumpSharedMemory(stream);
  fclose(stream);
  std::string dump(text, size);
  free(text);
  accept(result, "dump");
  return dump;
}

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
  for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
    text.replace(at, from.size(), to);
}

std::string escapedLines(const std::string& dump) {
  std::string out;
  for (size_t start = 0; start < dump.size();) {
    const size_t end = std::min(dump.find_first_of("\n\t", start), dump.size());
    out += tools::escaped(dump.substr(start, end - start)) + dump.substr(end, 1);
    start = end + 1;
  }
  return out;
}

}  // namespace

std::string dumpText() {
  tools::Hold hold;
  if (!hold) throw refusal("the store cannot be locked");
  Copy copy;
  std::string text = escapedLines(librarysDump());
  replaceAll(text, "\\xfe", "\\x0a");
  replaceAll(text, "\\xff", "\\x09");
  return text;
}

}  // namespace ctl
