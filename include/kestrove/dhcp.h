/* SPDX-License-Identifier: Apache-2.0 */
/* Obtaining an interface address through the DHCP client. */
#ifndef KESTROVE_DHCP_H
#define KESTROVE_DHCP_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Takes one setting of a lease: *kind tells which, the text is its value and valid during the call only. The result is
   ignored. */
typedef int (*DhcpCallback)(uint32_t* kind, const char* value);

/* Runs /sbin/dhcpcd for the interface, as the user that the caller is, in the foreground and with a time-out, after
   stopping a client that still runs for it (a number below 2 in its file of process ids stops nobody), then reads the
   lease and hands each of its lines on: the kind is written to *kindOut and the callback, unless it is null, called
   with kindOut and the value.

   Kinds: 0 IPADDR, 1 NETMASK, 2 GATEWAYS, 3 DHCPSID, 4 DNSSERVERS (all of them in one text, with blanks), 5 DNSDOMAIN,
   6 any other line. A line without a quoted value comes with the value of an earlier line, the first with an empty one.

   0 when the client got an address in less than timeoutSeconds, also when its lease cannot be read then. -1 when it did
   not, with the reason in the log and no code; a null name or kindOut sets SHM_EINVAL. A name with other characters
   than letters, digits and . _ - : @ or with a "-" at its head is refused. Nothing is applied to the interface here;
   the store is not used. Prints the seconds that it took on standard output.

   The client is a program that may use the store itself: a lock that the caller has is given up while it runs, inside
   kestrove_hold() until the client has ended, otherwise for good. Saves nothing, logs no event, signals no engine. */
KESTROVE_API int dhcp_start(const char* name, int timeoutSeconds, DhcpCallback callback, uint32_t* kindOut);

#ifdef __cplusplus
}
#endif

#endif
