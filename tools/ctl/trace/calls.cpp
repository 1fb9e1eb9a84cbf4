// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/trace/calls.h"

#include <linux/net.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "sys/descriptor.h"
#include "tools/ctl/trace/file_calls.h"
#include "tools/ctl/trace/memory.h"
#include "tools/ctl/trace/netlink.h"
#include "tools/ctl/trace/requests.h"
#include "tools/ctl/trace/words.h"

namespace ctl {
namespace {

constexpr size_t kLongestMessage = 64 * 1024;
constexpr size_t kMostParts = 64;

// Of the socket behind a process's descriptor; AF_UNSPEC when it is none.
int familyOf(pid_t process, uint64_t fd) {
  kestrove::sys::Descriptor target(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
  kestrove::sys::Descriptor socket(static_cast<int>(syscall(SYS_pidfd_getfd, target.get(), static_cast<int>(fd), 0)));
  int family = AF_UNSPEC;
  socklen_t size = sizeof family;
  if (socket) getsockopt(socket.get(), SOL_SOCKET, SO_DOMAIN, &family, &size);
  return family;
}

// "sh -c LINE", or "sh -c -- LINE"; our own programs call the shell by its path.
const std::string* shellLine(const std::vector<std::string>& words) {
  if (words.size() < 3 || words[1] != "-c" || (words[0] != "sh" && words[0] != "/bin/sh")) return nullptr;
  return words[2] == "--" && words.size() > 3 ? &words[3] : &words[2];
}

std::optional<Effect> execution(pid_t process, const SystemCall& call) {
  std::vector<std::string> words = Memory(process).texts(call.arguments[1]);
  const std::string* line = shellLine(words);
  return line ? Effect{"shell", *line, ""} : Effect{"program", wordsText(words), ""};
}

std::optional<Effect> request(pid_t process, const SystemCall& call) {
  auto number = static_cast<uint32_t>(call.arguments[1]);  // the kernel looks at no more of it
  if (!changesNetwork(number)) return std::nullopt;
  std::string text = requestText(Memory(process), {number, call.arguments[2], familyOf(process, call.arguments[0])});
  if (text.empty()) return std::nullopt;
  return Effect{"ioctl", text, ""};
}

std::vector<unsigned char> gathered(const Memory& memory, const msghdr& message) {
  std::vector<unsigned char> bytes;
  auto place = reinterpret_cast<uintptr_t>(message.msg_iov);
  for (size_t i = 0; i < std::min<size_t>(message.msg_iovlen, kMostParts); ++i, place += sizeof(iovec)) {
    iovec part;
    if (!memory.read(place, part) || part.iov_len > kLongestMessage - bytes.size()) break;
    size_t before = bytes.size();
    bytes.resize(before + part.iov_len);
    if (!memory.read(reinterpret_cast<uintptr_t>(part.iov_base), bytes.data() + before, part.iov_len)) break;
  }
  return bytes;
}

std::optional<Effect> message(pid_t process, const SystemCall& call) {
  if (familyOf(process, call.arguments[0]) != AF_NETLINK) return std::nullopt;
  Memory memory(process);
  msghdr header;
  if (!memory.read(call.arguments[1], header)) return Effect{"netlink", kUnreadable, ""};
  std::string text = netlinkText(gathered(memory, header));
  if (text.empty()) return std::nullopt;
  return Effect{"netlink", text, ""};
}

// Signal 0 asks whether the process lives.
std::optional<Effect> signalling(pid_t, const SystemCall& call) {
  int signal = static_cast<int>(call.arguments[1]);
  if (signal == 0) return std::nullopt;
  const char* name = sigabbrev_np(signal);
  std::string text = name ? std::string("SIG") + name : "signal " + std::to_string(signal);
  return Effect{"signal", text + " to " + std::to_string(static_cast<int>(call.arguments[0])), ""};
}

struct CallRow {
  uint64_t number;
  std::optional<Effect> (*effect)(pid_t, const SystemCall&);
};

constexpr CallRow kCalls[] = {
    {SYS_execve, execution}, {SYS_ioctl, request}, {SYS_sendmsg, message}, {SYS_kill, signalling}};

#ifdef SYS_socketcall
constexpr struct {
  uint64_t part;
  uint64_t call;
} kSocketCalls[] = {{SYS_SENDMSG, SYS_sendmsg}, {SYS_RECV, SYS_recvfrom}, {SYS_RECVFROM, SYS_recvfrom}};
#endif

}  // namespace

SystemCall unpacked([[maybe_unused]] pid_t process, const SystemCall& call) {
#ifdef SYS_socketcall
  for (const auto& row : kSocketCalls) {
    if (call.number != SYS_socketcall || call.arguments[0] != row.part) continue;
    unsigned long words[4] = {};  // all that these calls need
    Memory(process).read(call.arguments[1], words);
    return {row.call, {words[0], words[1], words[2], words[3]}};
  }
#endif
  return call;
}

std::optional<Effect> effectOf(pid_t process, const SystemCall& call) {
  for (const CallRow& row : kCalls) {
    if (row.number == call.number) return row.effect(process, call);
  }
  return fileEffect(process, call);
}

bool receivesAfter(const SystemCall& sent, const SystemCall& call) {
  return sent.number == SYS_sendmsg && call.number == SYS_recvfrom && sent.arguments[0] == call.arguments[0];
}

std::optional<int> receivedAnswer(pid_t process, const SystemCall& call, int64_t length) {
  if (length <= 0) return std::nullopt;
  std::vector<unsigned char> reply(std::min(static_cast<size_t>(length), kLongestMessage));
  if (!Memory(process).read(call.arguments[1], reply.data(), reply.size())) return std::nullopt;
  return netlinkAnswer(reply);
}

}  // namespace ctl
