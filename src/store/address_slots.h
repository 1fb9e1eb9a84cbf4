// SPDX-License-Identifier: Apache-2.0
// Changes of the management addresses and of the bridge's IPv6 addresses that leave no torn table behind a death.
// To be used under the store lock.
#pragma once

#include "store/journal.h"

namespace kestrove {

// There must be room. The entry is whole before it counts.
void appendAddress(ShmData& store, const ManagementAddress& entry);
void appendAddress6(ShmData& store, const Ip6Address& entry);

// Closes the gap that an entry in use leaves.
void dropAddress(ShmData& store, int index);
void dropAddress6(ShmData& store, int index);

void changeAddress6(ShmData& store, int index, const Ip6Address& value);

Outcome finishAddressClosing(ShmData& store, const Note& note);
Outcome finishAddress6Closing(ShmData& store, const Note& note);
Outcome finishAddress6Changing(ShmData& store, const Note& note);

}  // namespace kestrove
