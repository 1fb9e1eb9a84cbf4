// SPDX-License-Identifier: Apache-2.0
// Words for the requests of the bridge.
#include <net/if.h>
#include <netinet/in.h>

#include <cstring>
#include <span>

// The kernel's header, after the C library's, which it gives way to.
#include <linux/if_bridge.h>

#include "tools/ctl/trace/requests.h"
#include "tools/ctl/trace/words.h"

namespace ctl {
namespace {

enum class Arguments { kLooks, kName, kIndex, kNumber, kPortAndNumber };

struct BridgeCommand {
  unsigned long number;
  const char* name;
  Arguments arguments;
};

constexpr BridgeCommand kCommands[] = {{BRCTL_GET_VERSION, "GET_VERSION", Arguments::kLooks},
                                       {BRCTL_GET_BRIDGES, "GET_BRIDGES", Arguments::kLooks},
                                       {BRCTL_ADD_BRIDGE, "ADD_BRIDGE", Arguments::kName},
                                       {BRCTL_DEL_BRIDGE, "DEL_BRIDGE", Arguments::kName},
                                       {BRCTL_ADD_IF, "ADD_IF", Arguments::kIndex},
                                       {BRCTL_DEL_IF, "DEL_IF", Arguments::kIndex},
                                       {BRCTL_GET_BRIDGE_INFO, "GET_BRIDGE_INFO", Arguments::kLooks},
                                       {BRCTL_GET_PORT_LIST, "GET_PORT_LIST", Arguments::kLooks},
                                       {BRCTL_SET_BRIDGE_FORWARD_DELAY, "SET_BRIDGE_FORWARD_DELAY", Arguments::kNumber},
                                       {BRCTL_SET_BRIDGE_HELLO_TIME, "SET_BRIDGE_HELLO_TIME", Arguments::kNumber},
                                       {BRCTL_SET_BRIDGE_MAX_AGE, "SET_BRIDGE_MAX_AGE", Arguments::kNumber},
                                       {BRCTL_SET_AGEING_TIME, "SET_AGEING_TIME", Arguments::kNumber},
                                       {BRCTL_SET_GC_INTERVAL, "SET_GC_INTERVAL", Arguments::kNumber},
                                       {BRCTL_GET_PORT_INFO, "GET_PORT_INFO", Arguments::kLooks},
                                       {BRCTL_SET_BRIDGE_STP_STATE, "SET_BRIDGE_STP_STATE", Arguments::kNumber},
                                       {BRCTL_SET_BRIDGE_PRIORITY, "SET_BRIDGE_PRIORITY", Arguments::kNumber},
                                       {BRCTL_SET_PORT_PRIORITY, "SET_PORT_PRIORITY", Arguments::kPortAndNumber},
                                       {BRCTL_SET_PATH_COST, "SET_PATH_COST", Arguments::kPortAndNumber},
                                       {BRCTL_GET_FDB_ENTRIES, "GET_FDB_ENTRIES", Arguments::kLooks}};

const BridgeCommand* find(unsigned long number) {
  for (const BridgeCommand& command : kCommands) {
    if (command.number == number) return &command;
  }
  return nullptr;
}

std::string numbersText(std::span<const unsigned long> numbers) {
  std::string text;
  for (unsigned long number : numbers) text += " " + std::to_string(number);
  return text;
}

std::string argumentsText(const Memory& memory, Arguments kind, const unsigned long* words) {
  switch (kind) {
    case Arguments::kName: return " " + memory.text(words[0]).substr(0, IFNAMSIZ - 1);
    case Arguments::kIndex: return " index " + std::to_string(words[0]);
    case Arguments::kNumber: return numbersText({words, 1});
    case Arguments::kPortAndNumber: return " port" + numbersText({words, 2});
    case Arguments::kLooks: break;
  }
  return {};
}

// The first word is the command, the others are its arguments. Empty for a command that only looks.
std::string commandText(const Memory& memory, std::span<const unsigned long> words) {
  const BridgeCommand* command = find(words[0]);
  if (!command) return "command" + numbersText(words);
  if (command->arguments == Arguments::kLooks) return {};
  return command->name + argumentsText(memory, command->arguments, words.data() + 1);
}

}  // namespace

std::string bridgeText(const Memory& memory, const SocketRequest& request) {
  unsigned long words[3];
  return memory.read(request.argument, words) ? commandText(memory, words) : kUnreadable;
}

std::string bridgePortText(const Memory& memory, const SocketRequest& request) {
  ifreq record;
  unsigned long words[4];
  if (!memory.read(request.argument, record)) return kUnreadable;
  std::string name(record.ifr_name, strnlen(record.ifr_name, sizeof record.ifr_name));
  if (!memory.read(reinterpret_cast<uintptr_t>(record.ifr_data), words)) return name + " " + kUnreadable;
  std::string command = commandText(memory, words);
  return command.empty() ? command : name + " " + command;
}

}  // namespace ctl
