/* SPDX-License-Identifier: Apache-2.0 */
/* What the library tells about itself, and whether a program fits it.

   Nothing here needs a store, takes the lock, saves, logs an event, signals the engine or touches the kernel, and no
   code is set where none is named. */
#ifndef KESTROVE_LIBRARY_H
#define KESTROVE_LIBRARY_H

#include <stdint.h>
#include "kestrove/api.h"

/* The version of these headers and the layout that they describe: what a program was built for. */
#define KESTROVE_HEADER_VERSION "1.1.0"
#define KESTROVE_LAYOUT_HASH 0x58a2cb6260745e64ULL

enum {
  KESTROVE_CHECK_BYTES = 256 /* room for any message of kestrove_check_layout() */
};

#ifdef __cplusplus
extern "C" {
#endif

/* Gives the version of the library, "major.minor.patch"; constant text. */
KESTROVE_API const char* kestrove_version(void);

/* Gives a number made from the offset and size of every member of the store's layout. Two builds that report the same
   number agree on every byte of the segment. Never fails. */
KESTROVE_API uint64_t kestrove_layout_hash(void);

/* Whether the library that is loaded serves a program that was built for the given version ("major.minor.patch") and
   layout hash: when the layouts are the same, the major versions are the same and the library's minor version is not
   the lower one. 0, the message then empty; -1 with code 3 when it does not, or when version is null or no version. The
   message is a sentence without a line end that names both versions, both layouts and the reason, cut to fit the buffer
   of size bytes and terminated; a null buffer or a size below 1 asks for none. Uses neither the store nor the lock; can
   be called first of all, without a segment and without rights. */
KESTROVE_API int kestrove_check_layout(const char* version, uint64_t layoutHash, char* message, int size);

/* kestrove_check_layout() for the headers that the caller was built with: the first call of a front end. */
static inline int kestrove_check_headers(char* message, int size) {
  return kestrove_check_layout(KESTROVE_HEADER_VERSION, KESTROVE_LAYOUT_HASH, message, size);
}

#ifdef __cplusplus
}
#endif

#endif
