#include "tools/ctl/trace.h"

#include <sstream>
#include <string_view>

namespace ctl {
namespace {

constexpr std::string_view kShellStart = "execve(\"/bin/sh\", [\"sh\", \"-c\", ";

// Requests that change something; the rest only looks.
constexpr const char* kChangingRequests[] = {"SIOCSIFADDR", "SIOCSIFNETMASK", "SIOCSIFBRDADDR", "SIOCSIFFLAGS",
                                             "SIOCDIFADDR", "SIOCADDRT",      "SIOCDELRT",      "SIOCSARP",
                                             "SIOCDARP",    "SIOCSIFBR",      "SIOCDEVPRIVATE", "SIOCGIFBR"};

bool startsWith(std::string_view text, std::string_view start) { return text.substr(0, start.size()) == start; }

// Undoes the quoting of a string literal that begins at the text's quote; stops at its end.
std::string unquoted(std::string_view text) {
  std::string plain;
  if (text.empty() || text[0] != '"') return plain;
  for (size_t i = 1; i < text.size() && text[i] != '"'; ++i) {
    if (text[i] == '\\' && i + 1 < text.size()) {
      ++i;
      plain += text[i] == 'n' ? '\n' : text[i] == 't' ? '\t' : text[i];
    } else {
      plain += text[i];
    }
  }
  return plain;
}

bool changing(std::string_view call) {
  for (const char* request : kChangingRequests) {
    if (call.find(std::string(", ") + request + ",") != std::string_view::npos) return true;
  }
  return false;
}

// The text between the first and the last bracket that stand for the vector of an execve.
std::string vectorText(std::string_view call) {
  size_t start = call.find('[');
  size_t end = call.find("], ", start);
  if (start == std::string_view::npos || end == std::string_view::npos) return std::string(call);
  return std::string(call.substr(start + 1, end - start - 1));
}

class TraceReader {
 public:
  std::vector<Effect> read(const std::string& trace) {
    std::istringstream lines(trace);
    for (std::string line; std::getline(lines, line);) take(line);
    return std::move(effects_);
  }

 private:
  void add(const char* kind, std::string text) { effects_.push_back({kind, std::move(text)}); }

  void take(const std::string& line) {
    size_t digits = line.find_first_not_of("0123456789");
    size_t start = line.find_first_not_of(' ', digits);
    if (digits == 0 || digits == std::string::npos || start == std::string::npos) return;
    call(line.substr(0, digits), std::string_view(line).substr(start));
  }

  // What a shell starts belongs to its line: it is passed over until the shell ends.
  void call(const std::string& process, std::string_view text) {
    if (!shell_.empty()) {
      if (process == shell_ && startsWith(text, "+++")) shell_.clear();
      return;
    }
    if (startsWith(text, kShellStart)) {
      shell_ = process;
      return add("shell", unquoted(text.substr(kShellStart.size())));
    }
    if (startsWith(text, "execve(")) return execution(text);
    if (startsWith(text, "ioctl(") && changing(text)) return add("ioctl", std::string(text));
    if (startsWith(text, "sendmsg(") && text.find("AF_NETLINK") != std::string_view::npos) {
      return add("netlink", std::string(text));
    }
    if (startsWith(text, "kill(") && text.find(", 0)") == std::string_view::npos) add("signal", std::string(text));
  }

  void execution(std::string_view text) {
    bool own = !started_;  // the first is the traced command itself
    started_ = true;
    if (!own && text.find("= -1 ENOENT") == std::string_view::npos) add("program", vectorText(text));
  }

  std::vector<Effect> effects_;
  std::string shell_;
  bool started_ = false;
};

}  // namespace

std::vector<Effect> effectsOf(const std::string& trace) { return TraceReader().read(trace); }

}  // namespace ctl
