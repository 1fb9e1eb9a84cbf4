// SPDX-License-Identifier: Apache-2.0
// What every fuzz target needs: an appliance around it, a store, quiet.
#pragma once

#include <stddef.h>
#include <stdint.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace kestrove::fuzzing {

// Ends the program outside a sandbox; opens the lock file, silences syslog and standard output. Once for a process.
void prepareProcess();

// A store as a fresh segment is: zeroed, route tables empty, the default rule alone, in Configuration Mode and with
// IPv6 support. It lies in this process alone.
void freshStore();

// Ends the program when a count or a head of the store is out of its table, so that the fuzzer keeps the input.
void checkStore();

}  // namespace kestrove::fuzzing
