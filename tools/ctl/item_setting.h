// SPDX-License-Identifier: Apache-2.0
// One item read, asked for and changed, in whichever of its vocabularies it is named.
#pragma once

#include <string>

#include "tools/ctl/script/item_words.h"
#include "tools/ctl/script/wish.h"
#include "tools/ctl/session.h"

namespace ctl {

// What the store holds, as a command prints it.
Json itemValue(const ItemRow& row);
uint32_t itemWord(const ItemRow& row);
std::string itemText(const ItemRow& row);

// What a line asks of it. Throws kUsage for a word that it does not have, and kRefused where it cannot be set.
ItemWish itemWish(const NamedItem& item, const std::string& value);

// Hands it to the library's setter. 0, or -1 with the reason in shm_errno.
int storeWish(const Session& session, const ItemWish& wish);

// The change as a command of its own: waits for the store, changes the item, prints it in every vocabulary it has.
void setItem(const Session& session, const NamedItem& item, const std::string& value);

}  // namespace ctl
