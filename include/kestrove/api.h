/* SPDX-License-Identifier: Apache-2.0 */
/* Marks what the shared object exports. */
#ifndef KESTROVE_API_H
#define KESTROVE_API_H

#define KESTROVE_API __attribute__((visibility("default")))

#endif
