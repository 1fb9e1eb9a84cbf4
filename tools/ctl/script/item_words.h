// SPDX-License-Identifier: Apache-2.0
// A value of an item in its three vocabularies: the item's own, the saved script's and the configuration file's.
#pragma once

#include <cstdint>
#include <string>

#include "tools/ctl/item_names.h"

namespace ctl {

enum class Tongue { kItem, kScript, kFile };

// The item by its own name, or by its keyword in the configuration file, with the vocabulary that goes with it. Throws
// kUsage with the nearest name.
struct NamedItem {
  const ItemRow* row;
  Tongue tongue;
};
NamedItem itemNamed(const std::string& name);

// "wanLinkRate takes 10000..2147483647 bit/s". With the bounds of the attached store, or with their names.
std::string acceptedText(const ItemRow& row);

// The number that a word stands for. Throws kUsage with what is accepted.
uint32_t itemWordOf(const ItemRow& row, Tongue tongue, const std::string& value);

// "wanLinkRate 2048000", "rateLimit WAN 2048", "INTERNET_RATE 2048000"; empty where that vocabulary has no word for it.
std::string itemPhrase(const ItemRow& row, Tongue tongue, uint32_t word, uint32_t product);

}  // namespace ctl
