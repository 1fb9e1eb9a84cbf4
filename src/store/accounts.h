// SPDX-License-Identifier: Apache-2.0
// The table of user accounts, without the password file. To be used under the store lock. Both counts and the accounts
// agree after a death at any instant, too.
#pragma once

#include <string_view>

#include "kestrove/layout.h"
#include "store/journal.h"
#include "store/text.h"

namespace kestrove {

inline std::string_view accountName(const UserAccount& account) { return fieldView(account.username); }

// The slot with exactly that name, -1 without one. All slots are searched, those behind the accounts in use too.
[[nodiscard]] int findAccount(std::string_view name);

// There must be room. The name fills its field without a terminator when it is 32 characters long.
void appendAccount(const UserAccount& account);

// Closes the gap that the account leaves.
void dropAccount(int slot);

// Takes the last account of that name back; false without one. For an account whose password could not be added: the
// password file is left alone, it has no line of that account's, and one from before is the machine's own.
[[nodiscard]] bool takeBackAccount(std::string_view name);

Outcome finishUserClosing(ShmData& store, const Note& note);
Outcome finishUserAdding(ShmData& store, const Note& note);

}  // namespace kestrove
