/* SPDX-License-Identifier: Apache-2.0 */
/* What the library tells about itself. */
#ifndef KESTROVE_LIBRARY_H
#define KESTROVE_LIBRARY_H

#include <stdint.h>
#include "kestrove/api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Version of the library, "major.minor.patch"; constant text. */
KESTROVE_API const char* kestrove_version(void);

/* A number made from the offset and size of every member of the store's layout. Two builds that report the same
   number agree on every byte of the segment. */
KESTROVE_API uint64_t kestrove_layout_hash(void);

#ifdef __cplusplus
}
#endif

#endif
