// SPDX-License-Identifier: Apache-2.0
#include "tests/support/syslog.h"

#include <gtest/gtest.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>

#include "sys/descriptor.h"
#include "tests/support/store.h"

namespace kestrove::testing {
namespace {

constexpr char kLog[] = "/run/kestrove/syslog";
constexpr char kSocket[] = "/dev/log";
constexpr char kMark[] = "collected up to ";
constexpr char kMessageEnd[] = {'\0', '\n'};
constexpr size_t kStampLength = sizeof "Jan  1 00:00:00 " - 1;
constexpr int kPatience = 5000;  // milliseconds

constexpr const char* kLevels[] = {"emerg", "alert", "crit", "err", "warning", "notice", "info", "debug"};

size_t forgotten = 0;  // bytes of the log that the last clear left behind

void send(const std::string& message) {
  sys::Descriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  strcpy(address.sun_path, kSocket);
  ssize_t sent =
      sendto(socket.get(), message.data(), message.size(), 0, reinterpret_cast<sockaddr*>(&address), sizeof address);
  ASSERT_EQ(static_cast<ssize_t>(message.size()), sent) << strerror(errno);
}

// The whole log, once everything sent before has arrived: messages keep their order, so a mark tells.
std::string collected() {
  static int marks = 0;
  const std::string mark = kMark + std::to_string(getpid()) + "." + std::to_string(++marks);
  send(mark);
  for (int waited = 0; waited < kPatience; ++waited) {
    std::string log = readFile(kLog);
    if (log.find(mark + kMessageEnd[0]) != log.npos) return log;
    usleep(1000);
  }
  ADD_FAILURE() << "the collector does not answer";
  return {};
}

// "<3>Jan  1 00:00:00 prog[12]: text" becomes "err: text".
std::string strip(const std::string& message) {
  size_t close = message.find('>');
  if (message.empty() || message[0] != '<' || close == message.npos) return message;
  const char* level = kLevels[atoi(message.c_str() + 1) & 7];
  size_t tag = std::min(message.size(), close + 1 + kStampLength);
  size_t text = message.find(": ", tag);
  return std::string(level) + ": " + message.substr(text == message.npos ? tag : text + 2);
}

}  // namespace

std::vector<std::string> syslogLines() {
  const std::string log = collected();
  const std::string end(kMessageEnd, sizeof kMessageEnd);
  std::vector<std::string> lines;
  for (size_t at = forgotten; at < log.size();) {
    size_t next = log.find(end, at);
    if (next == log.npos) break;
    std::string message = log.substr(at, next - at);
    if (!message.starts_with(kMark)) lines.push_back(strip(message));
    at = next + end.size();
  }
  return lines;
}

long timesLogged(const std::string& words) {
  const auto lines = syslogLines();
  return std::ranges::count_if(lines, [&](const std::string& line) { return line.find(words) != line.npos; });
}

void clearSyslog() { forgotten = collected().size(); }

}  // namespace kestrove::testing
