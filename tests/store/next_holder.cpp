// SPDX-License-Identifier: Apache-2.0
// A process that takes the store lock once, built in the width that the tests are not.
#include "kestrove/segment.h"

int main() { return shm_lock() != 0 || shm_unlock() != 0; }
