// SPDX-License-Identifier: Apache-2.0
#include "sandbox/options.h"

#include <getopt.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

#include "sandbox/report.h"

namespace kestrove::sandbox {
namespace {

constexpr char kHelp[] =
    "usage: kestrove-sandbox [OPTION...] [--] COMMAND [ARGUMENT...]\n"
    "\n"
    "Runs a command as root of a throw-away appliance. Nothing outside is changed, nothing is left behind.\n"
    "\n"
    "  --real       programs of the machine do the work; what must not run is recorded (default)\n"
    "  --record     every program of the appliance is recorded instead of run\n"
    "  --ports      eth0 (WAN side), eth1 (LAN side) and eth2 (management), with a host behind each (default)\n"
    "  --no-ports   no ports, a quicker start\n"
    "  --state DIR  keep /etc/config and /var/log/kestrove in DIR between runs\n"
    "  --share DIR  what the command changes in DIR is really changed, for measurements that are written there\n"
    "  --bind PATH  show PATH, read-only, even where the appliance has its own files (/tmp, /run); may be repeated\n"
    "  --no-overlay as on a system that gives no overlay file system: most of the root is read-only, the start slower\n"
    "  --help       this text\n"
    "\n"
    "The exit status is the command's, 128 and the signal's number when it was killed, 125 when the sandbox could not\n"
    "be made, 126 when the command cannot be run and 127 when it is not found.\n";

enum Choice { kReal = 1, kRecord, kPorts, kNoPorts, kState, kShare, kBind, kNoOverlay, kHelpWanted };

constexpr option kOptions[] = {
    {"real", no_argument, nullptr, kReal},         {"record", no_argument, nullptr, kRecord},
    {"ports", no_argument, nullptr, kPorts},       {"no-ports", no_argument, nullptr, kNoPorts},
    {"state", required_argument, nullptr, kState}, {"share", required_argument, nullptr, kShare},
    {"bind", required_argument, nullptr, kBind},   {"no-overlay", no_argument, nullptr, kNoOverlay},
    {"help", no_argument, nullptr, kHelpWanted},   {nullptr, 0, nullptr, 0},
};

std::string realName(const char* name) {
  char* path = realpath(name, nullptr);
  if (!path) giveUp("%s: %m", name);
  std::string real = path;
  free(path);
  return real;
}

[[noreturn]] void help() {
  fputs(kHelp, stdout);
  exit(0);
}

void apply(int choice, Options& options) {
  switch (choice) {
    case kReal: options.record = false; return;
    case kRecord: options.record = true; return;
    case kPorts: options.ports = true; return;
    case kNoPorts: options.ports = false; return;
    case kBind: options.shown.push_back(realName(optarg)); return;
    case kNoOverlay: options.overlay = false; return;
    case kState:
      mkdir(optarg, 0755);
      options.state = realName(optarg);
      return;
    case kShare: options.shared = realName(optarg); return;
    case kHelpWanted: help();
    default: exit(kLauncherFailed);  // getopt has said what is wrong
  }
}

// Used by a person, who wants a shell to have the terminal to itself; not one of many tests in parallel.
bool interactive() { return isatty(STDOUT_FILENO) && isatty(STDERR_FILENO) && tcgetpgrp(STDIN_FILENO) == getpgrp(); }

}  // namespace

Options readOptions(int argc, char** argv) {
  Options options;
  options.program = realName(reinterpret_cast<const char*>(getauxval(AT_EXECFN)));  // a bare chroot has no /proc
  int choice = 0;
  while ((choice = getopt_long(argc, argv, "+", kOptions, nullptr)) != -1) apply(choice, options);
  options.command = argv + optind;
  options.terminal = interactive();
  if (!*options.command) giveUp("no command given, see --help");
  return options;
}

}  // namespace kestrove::sandbox
