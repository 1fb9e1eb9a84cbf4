/* SPDX-License-Identifier: Apache-2.0 */
/* Saving and restoring a whole system state.

   A saved state is a command script, state-TIME.txt, that makes the settings, routes, management addresses and policy
   rules anew through the command line, and an archive, config-TIME.zip, of the configuration file, the two files of the
   SNMP agent and /etc/passwd. Both stand in /usr/local/apache2/htdocs/; there is only one saved state at a time. TIME
   is a text such as 20240131-235959.

   A failure is -1. A null timestamp, stream or route sets SHM_EINVAL and nothing is written; other failures set no code
   but that of the lock, the log tells of most. A success is 0. source (SHM_SOURCE_*) and user stamp the event; a null
   user counts as an empty one. All but loadSystemState and the two line printers take the lock. None changes the store
   (but for the event log), saves it, signals the engine or touches the kernel.

   The files pass through the folder state/ beside the archive, which is made private to the caller. Something else of
   that name, a link above all, is not used: -1, and nothing is run. */
#ifndef KESTROVE_STATE_H
#define KESTROVE_STATE_H

#include <stdio.h>
#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Deletes the previous saved state and, with the programs zip and cp, saves this one, under the store lock throughout.
   Both halves are tried; -1 when one of them failed, which may leave no saved state at all. Logs event 39 with the
   source and the user name. */
KESTROVE_API int saveSystemState(uint32_t source, const char* user);

/* Unpacks the archive and copies its files, with the programs unzip and cp, back to where they came from; the
   configuration takes effect when the store is next built, unless a save has replaced it by then. The script is left
   alone. Takes no lock for that, attaches the store where needed (SHM_EATTACH). Only what this archive brought is
   copied, and nothing at all when one of its members is no regular file. Stops at the first copy that fails, so the
   files may then be of two states. Logs event 40, under the lock. 0, or -1. */
KESTROVE_API int loadSystemState(uint32_t source, const char* user);

/* Writes the script. 0, or -1 when it cannot be made or not be written whole; no part of it is left. */
KESTROVE_API int __saveCliState(const char* timestamp);

/* Makes the archive with the programs zip and cp and logs event 39. 0 once its files are together, whatever zip and
   the event come to. */
KESTROVE_API int __saveShmState(const char* timestamp, uint32_t source, const char* user);

/* The sections of the script, written from the store under its lock, the stream flushed. which: 0 LAN, 1 WAN,
   3 management port, another one sets SHM_EINVAL. The default rule is left out. */
KESTROVE_API int __saveManagement(FILE* stream);
KESTROVE_API int __saveLink(FILE* stream, int which);
KESTROVE_API int __saveSARules(FILE* stream);
KESTROVE_API int __saveRoutes(FILE* stream);
KESTROVE_API int __saveIpv6Routes(FILE* stream);

/* The script's line for one route. The store is not needed. */
KESTROVE_API int __printRoute(FILE* stream, const RouteEntry* route);
KESTROVE_API int __printIpv6Route(FILE* stream, const Route6Entry* route);

#ifdef __cplusplus
}
#endif

#endif
