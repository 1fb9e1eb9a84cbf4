/* SPDX-License-Identifier: Apache-2.0 */
/* Packet-filter reset and policy routing in the kernel.

   The packet filter is reset through one file, /tmp/restore_file, and one stream, so one caller at a time on the whole
   machine. It is always a new file, never what stands under the name. Programs read from and write to /dev/null; what
   they report changes nothing but the results named here: exit status of a program, raw status of a shell line, -1 when
   it could not be started. Only pbrPolicyRule uses the store; all others take no lock. None saves, logs an event or
   signals the engine, and where nothing is said of a code, shm_errno is left as it was. */
#ifndef KESTROVE_KERNELRULES_H
#define KESTROVE_KERNELRULES_H

#include <stdio.h>

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The stream of the restore file while one is built, else null. */
KESTROVE_API extern FILE* fp;

/* Empties the mangle and filter tables of IPv4, with accepting policies, and the filter table of IPv6. 0, or -1 with
   the reason in the system log when the restore file cannot be opened: then nothing runs. */
KESTROVE_API int updateKernelRules(void);

/* Appends the text and a newline to the open restore file. The number of characters written; -1 without a stream.
   SHM_EINVAL: line is null. */
KESTROVE_API int addToRestoreFile(const char* line);

/* Empty the chains of IPv4 filter, IPv4 mangle and IPv6 filter. The result of the last program. */
KESTROVE_API int flushExistingChains(void);

/* Delete the callers' chains of IPv4 filter and IPv4 mangle. The result of the last program. */
KESTROVE_API int deleteExistingChains(void);

/* Writes the closing lines, makes the stream's file readable and writable for everybody, closes the stream (fp is null
   afterwards), loads /tmp/restore_file and removes it. The result of the removal, 0 or -1; -1 with nothing done without
   a stream. */
KESTROVE_API int commitHandler(void);

/* Makes the kernel drop all forwarded IPv6 traffic. Gives the program's result. */
KESTROVE_API int addIp6tablesDropRule(void);

/* Empties the routing tables 100 to 103 and leaves the plain routing rules. The result of the last line. */
KESTROVE_API int resetPolicyRules(void);

/* After a reset, routes what comes in on the physical LAN port through the LAN VLAN to the LAN gateway (table 103) and
   what comes in on the VLAN through the port to the WAN gateway (table 102), and sets the two route-state words of the
   configuration. lock 0: the caller holds the store lock; else the lock is taken, and nothing is done where it cannot
   be had, which leaves its code. Saves nothing, signals nobody. */
KESTROVE_API void pbrPolicyRule(int lock);

#ifdef __cplusplus
}
#endif

#endif
