// SPDX-License-Identifier: Apache-2.0
// The rows of the grammar, each family's beside what carries them out.
#pragma once

#include "tools/ctl/grammar.h"

namespace ctl {

std::vector<Command> storeCommands();      // status, save, check
std::vector<Command> loadCommands();       // load
std::vector<Command> lintCommands();       // lint
std::vector<Command> diffCommands();       // diff
std::vector<Command> settingsCommands();   // settings
std::vector<Command> previewCommands();    // preview
std::vector<Command> itemCommands();       // show, set
std::vector<Command> ruleCommands();       // rule
std::vector<Command> userCommands();       // user
std::vector<Command> eventCommands();      // events
std::vector<Command> statsCommands();      // stats
std::vector<Command> engineCommands();     // engine, task
std::vector<Command> interfaceCommands();  // interface, mode
std::vector<Command> addressCommands();    // address
std::vector<Command> routeCommands();      // route, route6
std::vector<Command> kernelCommands();     // kernel
std::vector<Command> stateCommands();      // state
std::vector<Command> dhcpCommands();       // dhcp
std::vector<Command> dumpCommands();       // dump
std::vector<Command> controlCommands();    // clock, reboot, poweroff
std::vector<Command> resetCommands();      // factory-reset
std::vector<Command> stateModeCommands();  // configuration-mode, debug-mode, notifications
std::vector<Command> lockCommands();       // lock
std::vector<Command> applyCommands();      // apply
std::vector<Command> lostCommands();       // lost
std::vector<Command> metricsCommands();    // metrics
std::vector<Command> supportCommands();    // support
std::vector<Command> helpCommands();       // help
std::vector<Command> explainCommands();    // explain
std::vector<Command> historyCommands();    // history, rollback
std::vector<Command> confirmCommands();    // confirm
std::vector<Command> shellCommands();      // shell, completion

}  // namespace ctl
