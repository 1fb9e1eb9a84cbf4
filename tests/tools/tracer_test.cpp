// SPDX-License-Identifier: Apache-2.0
// The tracer on a program whose deeds are known: this one, which does what the environment asks for instead of testing.
#include "tools/ctl/trace/tracer.h"

#include <errno.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>

#include "kestrove/kestrove.h"
#include "sys/interface_request.h"
#include "tools/ctl/session.h"

namespace ctl {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr char kDeed[] = "KESTROVE_TRACED_DEED";

void runInChild(const char* program) {
  pid_t child = fork();
  if (child == 0) {
    execlp(program, program, "-x", nullptr);
    _exit(0);
  }
  waitpid(child, nullptr, 0);
}

// The tracer sees the requests, whatever comes of them.
int raiseLoopback() {
  kestrove::sys::Descriptor socket = kestrove::sys::openSocket(AF_INET, SOCK_DGRAM);
  kestrove::sys::InterfaceRequest request("lo");
  static_cast<void>(request.issue(socket.get(), SIOCGIFFLAGS));
  static_cast<void>(request.issue(socket.get(), SIOCSIFFLAGS));
  kestrove::sys::InterfaceRequest unknown("none0");
  static_cast<void>(unknown.issue(socket.get(), SIOCSIFFLAGS));
  return 0;
}

int addTwice() {
  for (int i = 0; i < 2; ++i) shm_netlinkConfig("lo", 0x0100000A, 0xFFFFFFFF, 0, 0);
  return 0;
}

int runShell() { return system("kill -0 $$; exit 5") == 5 << 8 ? 3 : 4; }

int runPrograms() {
  setenv("PATH", "/none:/bin", 1);
  runInChild("true");
  runInChild("no-such-program");
  return 0;
}

int signalItself() { return kill(getpid(), SIGKILL) == 0 ? 7 : 8; }

int dieOfASignal() { return raise(SIGTERM); }

#ifdef __x86_64__
// A call of the other width, whose number is that of kill in this one.
int callNarrow() {
  long answer = SYS_kill;
  asm volatile("int $0x80" : "+a"(answer) : "b"(77), "c"(SIGUSR1) : "memory");
  return answer < 0 ? 6 : 5;
}
#else
int callNarrow() { return 6; }
#endif

const std::map<std::string, int (*)()> kDeeds = {
    {"flags", raiseLoopback}, {"netlink", addTwice},   {"shell", runShell},    {"programs", runPrograms},
    {"signal", signalItself}, {"death", dieOfASignal}, {"narrow", callNarrow},
};

// Before main, which would run the tests.
[[maybe_unused]] const bool kTraced = [] {
  const char* deed = getenv(kDeed);
  if (deed) _exit(kDeeds.at(deed)());
  return false;
}();

Trace traced(const char* deed) {
  setenv(kDeed, deed, 1);
  Trace trace = traceProgram({"/proc/self/exe"});
  unsetenv(kDeed);
  return trace;
}

// "KIND RESULT TEXT" of each effect.
std::vector<std::string> lines(const Trace& trace) {
  std::vector<std::string> all;
  for (const Effect& effect : trace.effects) all.push_back(effect.kind + " " + effect.result + " " + effect.text);
  return all;
}

TEST(Tracer, RequestsCarryTheKernelsAnswerAndLookUpsAreLeftOut) {
  EXPECT_THAT(lines(traced("flags")),
              ElementsAre("ioctl 0 SIOCSIFFLAGS lo UP|LOOPBACK|RUNNING", "ioctl ENODEV SIOCSIFFLAGS none0 0"));
}

TEST(Tracer, TheAnswerToAMessageIsItsAcknowledgement) {
  Trace trace = traced("netlink");
  ASSERT_EQ(2u, trace.effects.size());
  EXPECT_EQ("0", trace.effects[0].result);
  EXPECT_EQ("EEXIST", trace.effects[1].result);
  EXPECT_THAT(trace.effects[1].text, HasSubstr("seq 2 AF_INET prefix 32 "));
}

TEST(Tracer, WhatAShellDoesBelongsToItsLine) {
  Trace trace = traced("shell");
  EXPECT_THAT(lines(trace), ElementsAre("shell 0 kill -0 $$; exit 5"));
  EXPECT_EQ(3, trace.status) << "the command has seen its shell end as ever";
}

TEST(Tracer, AProgramIsOneEffectWhereverItIsSought) {
  EXPECT_THAT(lines(traced("programs")), ElementsAre("program 0 true -x", "program ENOENT no-such-program -x"));
}

TEST(Tracer, SignalsAreHeldBackAndSeemToHaveArrived) {
  Trace trace = traced("signal");
  ASSERT_EQ(1u, trace.effects.size());
  EXPECT_THAT(lines(trace)[0], HasSubstr("signal held back SIGKILL to "));
  EXPECT_EQ(7, trace.status);
}

TEST(Tracer, CallsOfTheOtherWidthArePassedOver) {
  Trace trace = traced("narrow");
  EXPECT_THAT(trace.effects, IsEmpty());
  EXPECT_EQ(6, trace.status);
}

TEST(Tracer, ADeathBySignalShowsInTheStatus) {
  Trace trace = traced("death");
  EXPECT_EQ(128 + SIGTERM, trace.status);
  EXPECT_THAT(trace.effects, IsEmpty());
}

TEST(Tracer, AProgramThatCannotBeStartedIsNamed) {
  try {
    traceProgram({"/none/such"});
    FAIL() << "traced a program that is not there";
  } catch (const Refusal& refusal) {
    EXPECT_EQ(kSystem, refusal.exit());
    EXPECT_EQ(std::string("tracing: /none/such: ") + strerror(ENOENT), refusal.what());
  }
}

}  // namespace
}  // namespace ctl
