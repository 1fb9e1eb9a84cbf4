// SPDX-License-Identifier: Apache-2.0
// Socket calls, ioctls and shell lines of the library, written down in order and made to fail at will.
//
// The definitions stand before the C library's for a test program that lists kernel_calls.cpp among its sources.
#pragma once

#include <string>
#include <vector>

namespace kestrove::testing {

enum class Kernel {
  kReal,     // calls go through
  kPretend,  // ioctls on interfaces, routes and ARP succeed untouched, shell lines are not run
};

// Forgets what was written down and every failure asked for.
void watchKernel(Kernel kernel);

// In order: "SIOCSIFADDR eth0 10.0.0.1", "SIOCSIFFLAGS eth0 0x1003", "run ifconfig br0 up ", ... Sockets are left out.
std::vector<std::string> kernelCalls();

// The n-th call (1 is the next) of "socket", "bind", "sendmsg", "recv" or "ioctl" fails with the error.
void failCall(const std::string& call, int n, int error);

// How many calls of that name were made.
int callsOf(const std::string& call);

// Type and protocol of each socket opened, as "family/type/protocol" of numbers.
std::vector<std::string> socketsOpened();

// Bytes of each message sent, in hexadecimal.
std::vector<std::string> messagesSent();

// The next call of recv gives these bytes instead of the kernel's.
void answerReceive(const std::string& bytes);

// Interface flags that reading them gives while the kernel is pretended.
void pretendFlags(short flags);

int openDescriptors();

}  // namespace kestrove::testing
