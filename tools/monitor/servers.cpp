// SPDX-License-Identifier: Apache-2.0
#include "tools/monitor/servers.h"

#include <sys/mman.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>

#include "kestrove/kestrove.h"
#include "tools/monitor/notes.h"

namespace monitor {
namespace {

constexpr Milliseconds kCalm = 1000;  // several changes in a row are told as one
constexpr int kListSize = 322;        // the library gives the servers as much
constexpr size_t kMostWords = 4096;
constexpr char kUnheard[] = "\nnot heard by the web server";
constexpr const char* kScripts[] = {"/usr/bin/apacheConfig.sh", "/usr/bin/snmpdConfig.sh", "/usr/bin/sshdConfig.sh"};

bool isThere(const char* script) { return access(script, X_OK) == 0; }

// A machine without one of the servers lacks its script, too.
bool namesMissingScript(const std::string& line) {
  return std::ranges::any_of(kScripts,
                             [&](const char* script) { return line.find(script) != line.npos && !isThere(script); });
}

std::string tableOf(const ShmData& data) {
  std::string bytes(reinterpret_cast<const char*>(data.managementAddress), sizeof data.managementAddress);
  return bytes + std::to_string(+data.managementAddressCount) + (data.config.httpOperState == SHM_ON ? "+" : "-");
}

std::optional<std::string> contentOf(const std::string& path) {
  std::ifstream file(path);
  if (!file) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(file), {});
}

// The first line that matters.
std::string complaintIn(int words) {
  std::string text(kMostWords, '\0');
  const ssize_t length = pread(words, text.data(), text.size(), 0);
  std::istringstream lines(text.substr(0, static_cast<size_t>(std::max<ssize_t>(length, 0))));
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && !namesMissingScript(line)) return line;
  }
  return "";
}

}  // namespace

Servers::Servers(std::string note) : path_(std::move(note)), told_(contentOf(path_)) {}

void Servers::look(Store& store, Milliseconds now) {
  if (!takeIn() || !store.data() || !settled(*store.data(), now)) return;
  char addresses[kListSize] = "";
  {
    Visit visit(store);
    if (!visit || getManagementAddressList(addresses, sizeof addresses) != 0) return;
  }
  const bool webIsOn = store.data()->config.httpOperState == SHM_ON;
  compared_ = seen_;
  if (told_ == addresses || (!webIsOn && told_ == std::string(addresses) + kUnheard)) return;
  if (std::ranges::any_of(kScripts, isThere)) tell(addresses, webIsOn);
}

// While a configuration is loaded nothing is settled, nor while somebody only collects changes.
bool Servers::settled(const ShmData& data, Milliseconds now) {
  std::string table = tableOf(data);
  if (+data.operationalState == SHM_STATE_CONFIGURATION || table != seen_) {
    seen_ = std::move(table);
    since_ = now;
  }
  return seen_ != compared_ && now >= since_ + kCalm;
}

// In a process of its own: the servers' scripts may hang, and so may whoever has the lock. The web server is only made
// to read its site again while it is switched on.
void Servers::tell(const std::string& addresses, bool webIsOn) {
  words_ = kestrove::sys::Descriptor(memfd_create("words", MFD_CLOEXEC));
  telling_ = Process::call(refresh_userinterface_apps, words_.get());
  if (!telling_) {
    complain(strerror(errno));
    compared_.clear();  // it is tried again
    return;
  }
  syslog(LOG_NOTICE, "the servers are told of the management addresses:%s",
         addresses.empty() ? " none" : addresses.c_str());
  toNote_ = addresses + (webIsOn ? "" : kUnheard);
}

// Whether nothing is under way.
bool Servers::takeIn() {
  if (!telling_) return true;
  if (!telling_.ended()) return false;
  telling_ = {};
  complain(complaintIn(words_.get()));
  told_ = toNote_;
  writeNote(path_, *told_);
  return true;
}

void Servers::complain(const std::string& complaint) {
  if (!complaint.empty() && complaint != complaint_) syslog(LOG_WARNING, "telling the servers: %s", complaint.c_str());
  complaint_ = complaint;
}

}  // namespace monitor
