// SPDX-License-Identifier: Apache-2.0
/* What the preloaded library (park.c) offers to the worker, which finds it by name. */
#ifndef KESTROVE_EXPLORE_PARK_H
#define KESTROVE_EXPLORE_PARK_H

#include <fcntl.h>
#include <stdint.h>

#include "tests/explore/report.h"

#ifdef __cplusplus
extern "C" {
#endif

#define PARK_API __attribute__((visibility("default")))

/* From here on this process stands still at its places and talks over the line; the first place is this one. */
PARK_API void parkEnable(int fd);
PARK_API void parkHere(int park);
/* Notes what a call gave, for the reports that follow. */
PARK_API void parkResult(int32_t result, uint32_t code);
/* From here on the kernel has no lock to give. */
PARK_API void parkRefuseLock(int refused);

#ifdef __cplusplus
}
#endif

#endif
