// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/trace/tracer.h"

#include <linux/audit.h>
#include <signal.h>
#include <stddef.h>
#include <sys/ptrace.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <optional>

#include "tools/ctl/session.h"
#include "tools/ctl/trace/calls.h"
#include "tools/ctl/trace/file_calls.h"
#include "tools/ctl/trace/words.h"

namespace ctl {
namespace {

#ifdef __x86_64__
constexpr uint32_t kOwnWidth = AUDIT_ARCH_X86_64;
constexpr size_t kCallRegister = offsetof(struct user, regs.orig_rax);
constexpr size_t kResultRegister = offsetof(struct user, regs.rax);
#else
constexpr uint32_t kOwnWidth = AUDIT_ARCH_I386;
constexpr size_t kCallRegister = offsetof(struct user, regs.orig_eax);
constexpr size_t kResultRegister = offsetof(struct user, regs.eax);
#endif

constexpr int kCallStop = SIGTRAP | 0x80;
constexpr long kNoCall = -1;
constexpr int kOptions = PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK | PTRACE_O_TRACECLONE | PTRACE_O_TRACEEXEC |
                         PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL;
constexpr int kSignalled = 128;

[[noreturn]] void refuse(const std::string& what, int error) {
  throw Refusal(kSystem, "tracing: " + what + ": " + strerror(error), -1, error);
}

// Ends with the error's number where it cannot become the program.
[[noreturn]] void becomeWatched(std::vector<char*>& arguments) {
  if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(errno);
  raise(SIGSTOP);
  execv(arguments[0], arguments.data());
  _exit(errno);
}

int waitFor(pid_t process, pid_t& stopped) {
  int status = 0;
  do {
    stopped = waitpid(process, &status, __WALL);
  } while (stopped == -1 && errno == EINTR);
  if (stopped == -1) refuse("waitpid", errno);
  return status;
}

bool isEvent(int status, int event) { return status >> 16 == event; }

// One process, between the stops at which it is seen.
struct Watched {
  SystemCall call = {};           // the one it is in
  std::optional<size_t> begun;    // the effect of that call
  std::optional<size_t> program;  // the program that it has tried to become
  std::optional<size_t> sent;     // the message whose answer it has not read yet
  SystemCall sending = {};
};

class Tracer {
 public:
  Tracer(pid_t command, const std::string& name) : command_(command), name_(name) {}

  Trace follow() {
    start();
    for (;;) {
      pid_t process;
      int status = waitFor(-1, process);
      if (WIFSTOPPED(status)) {
        stopped(process, status);
      } else if (process == command_) {
        return finish(status);
      } else {
        watched_.erase(process);
      }
    }
  }

 private:
  void start() {
    pid_t process;
    int status = waitFor(command_, process);
    if (WIFEXITED(status)) refuse(name_, WEXITSTATUS(status));
    if (!WIFSTOPPED(status)) throw Refusal(kSystem, "tracing: " + name_ + " was killed before it started");
    if (ptrace(PTRACE_SETOPTIONS, command_, nullptr, kOptions) != 0) {
      int error = errno;
      kill(command_, SIGKILL);
      refuse("options", error);
    }
    watched_[command_];
    resume(command_, 0);
  }

  Trace finish(int status) {
    if (!running_) refuse(name_, WEXITSTATUS(status));
    std::erase_if(trace_.effects, [](const Effect& effect) { return effect.kind.empty(); });
    trace_.status = WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status);
    return std::move(trace_);
  }

  // A process that is gone when it is resumed shows at the next wait.
  void resume(pid_t process, int signal) { ptrace(PTRACE_SYSCALL, process, nullptr, signal); }

  void stopped(pid_t process, int status) {
    bool known = watched_.count(process) != 0;
    Watched& watched = watched_[process];
    int signal = WSTOPSIG(status);
    if (isEvent(status, PTRACE_EVENT_EXEC)) return becameProgram(process, watched);
    if (signal == kCallStop) atCall(process, watched);
    bool own = signal == kCallStop || signal == SIGTRAP || (signal == SIGSTOP && !known);  // each starts with a stop
    resume(process, own ? 0 : signal);
  }

  void becameProgram(pid_t process, Watched& watched) {
    if (!running_) {
      running_ = true;
      return resume(process, 0);
    }
    if (watched.begun) trace_.effects[*watched.begun].result = answerText(0);
    watched_.erase(process);
    ptrace(PTRACE_DETACH, process, nullptr, nullptr);
  }

  void atCall(pid_t process, Watched& watched) {
    __ptrace_syscall_info info = {};
    if (ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof info, &info) < 0) {
      if (errno == ESRCH) return;  // killed in the meantime
      refuse("system calls cannot be seen", errno);
    }
    if (!running_ || info.arch != kOwnWidth) return;
    if (info.op == PTRACE_SYSCALL_INFO_ENTRY) entered(process, watched, info);
    if (info.op == PTRACE_SYSCALL_INFO_EXIT) left(process, watched, info.exit.rval);
  }

  void entered(pid_t process, Watched& watched, const __ptrace_syscall_info& info) {
    SystemCall call = {info.entry.nr, {}};
    memcpy(call.arguments, info.entry.args, sizeof call.arguments);
    watched.call = unpacked(process, call);
    watched.begun.reset();
    std::optional<Effect> effect = effectOf(process, watched.call);
    if (!effect) return;
    watched.begun = place(watched, *effect);
    if (effect->kind == "signal") ptrace(PTRACE_POKEUSER, process, kCallRegister, kNoCall);
  }

  // A program is sought in folder after folder: that is one effect, with the last answer.
  size_t place(Watched& watched, const Effect& effect) {
    std::vector<Effect>& effects = trace_.effects;
    bool program = effect.kind == "program" || effect.kind == "shell";
    if (program && watched.program && effects[*watched.program].text == effect.text) return *watched.program;
    effects.push_back(effect);
    if (program) watched.program = effects.size() - 1;
    return effects.size() - 1;
  }

  void left(pid_t process, Watched& watched, int64_t answer) {
    if (watched.begun) {
      answered(process, watched, answer);
      watched.begun.reset();
    } else if (watched.sent && receivesAfter(watched.sending, watched.call)) {
      std::optional<int> received = receivedAnswer(process, watched.call, answer);
      if (!received) return;
      trace_.effects[*watched.sent].result = answerText(*received);
      watched.sent.reset();
    }
  }

  void answered(pid_t process, Watched& watched, int64_t answer) {
    Effect& effect = trace_.effects[*watched.begun];
    if (effect.kind == "file") return settleFile(trace_.effects, *watched.begun, answer);
    effect.result = answerText(answer);
    if (effect.kind == "signal") {
      effect.result = "held back";
      ptrace(PTRACE_POKEUSER, process, kResultRegister, 0L);
    } else if (effect.kind == "netlink" && answer >= 0) {
      effect.result = "unanswered";  // until the answer is read
      watched.sent = watched.begun;
      watched.sending = watched.call;
    }
  }

  pid_t command_;
  std::string name_;
  std::map<pid_t, Watched> watched_;
  Trace trace_;
  bool running_ = false;  // the command has become its program
};

}  // namespace

Trace traceProgram(std::vector<std::string> words) {
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  pid_t command = fork();
  if (command == -1) refuse("fork", errno);
  if (command == 0) becomeWatched(arguments);
  return Tracer(command, words[0]).follow();
}

}  // namespace ctl
