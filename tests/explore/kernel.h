// SPDX-License-Identifier: Apache-2.0
// Addresses, routes and rules of the kernel, as text to compare and as messages to put them back.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

namespace kestrove::explore {

struct KernelEntry {
  std::string text;     // the same whenever the entry is the same
  std::string message;  // what the kernel said
  uint16_t kind;        // RTM_NEWADDR, RTM_NEWROUTE or RTM_NEWRULE
};

class Kernel {
 public:
  Kernel();
  ~Kernel();
  Kernel(const Kernel&) = delete;
  Kernel& operator=(const Kernel&) = delete;

  // Everything it has, sorted.
  std::vector<KernelEntry> entries();
  // Takes away and adds until it has these; false when it refuses.
  bool restore(const std::vector<KernelEntry>& wanted);

 private:
  void dump(uint16_t request, unsigned char family, std::vector<KernelEntry>& out);
  void change(const KernelEntry& entry, bool add);
  void changeAll(const std::vector<KernelEntry>& these, const std::vector<KernelEntry>& without, bool add);

  int socket_;
  uint32_t serial_ = 0;
};

std::string textOf(const std::vector<KernelEntry>& entries);

}  // namespace kestrove::explore
