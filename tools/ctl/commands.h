// The groups of commands. Each registers its subcommands; a callback works with the session and throws a Refusal.
#pragma once

#include "CLI/CLI.hpp"
#include "tools/ctl/session.h"

namespace ctl {

void addStoreCommands(CLI::App& app, Session& session);      // status, save, check
void addLoadCommand(CLI::App& app, Session& session);        // load
void addEventCommands(CLI::App& app, Session& session);      // events
void addStatsCommands(CLI::App& app, Session& session);      // stats
void addItemCommands(CLI::App& app, Session& session);       // show, set
void addRuleCommands(CLI::App& app, Session& session);       // rule
void addUserCommands(CLI::App& app, Session& session);       // user
void addEngineCommands(CLI::App& app, Session& session);     // engine, task
void addInterfaceCommands(CLI::App& app, Session& session);  // interface, mode
void addAddressCommands(CLI::App& app, Session& session);    // address
void addRouteCommands(CLI::App& app, Session& session);      // route, route6
void addKernelCommands(CLI::App& app, Session& session);     // kernel
void addStateCommands(CLI::App& app, Session& session);      // state
void addDhcpCommand(CLI::App& app, Session& session);        // dhcp
void addDumpCommands(CLI::App& app, Session& session);       // dump
void addExplainCommand(CLI::App& app, Session& session);     // explain

}  // namespace ctl
