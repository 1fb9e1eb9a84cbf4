// SPDX-License-Identifier: Apache-2.0
// Stores drawn by lot, of what the rows of the configuration file can hold.
#pragma once

#include "kestrove/kestrove.h"

namespace kestrove::testing {

// A new store in place of the old one. With IPv6 support, since the file carries neither that nor the mode, which
// decide how its rows are read.
void makeFreshStore();

// A new store with every field that the file carries drawn by lot, in Configuration Mode.
void drawStore(unsigned seed);

// This store equals the other one in every field that the file carries; lists in their order, whatever their slots.
void expectSameStore(const ShmData& saved);

}  // namespace kestrove::testing
