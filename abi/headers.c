/* SPDX-License-Identifier: Apache-2.0 */
/* What the headers alone tell a program: the values of the enumerations, and the records that functions take without
   naming their type. scripts/abi compiles it with debug information and dumps every type; nobody links it. */
#include "kestrove/kestrove.h"

EngineConfiguration kestrove_headers; /* a dump begins at a symbol */
