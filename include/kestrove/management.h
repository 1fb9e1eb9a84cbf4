/* SPDX-License-Identifier: Apache-2.0 */
/* The management address list: up to seven IPv4 or IPv6 addresses, each on one interface.

   An entry has status 1 when it is on its interface and 2 when the operating mode does not use that interface, so that
   it is kept only. IPv4 addresses and masks are in network byte order. interfaceKind is an interface number as
   getInterfaceName takes it. All hold the store lock for their work, validateInterfaceStatus while it reads the mode;
   without it they give -1 with the lock's code. None logs an event or signals the engine; getters neither save nor
   touch the kernel. A null pointer: -1 with SHM_EINVAL. Results are 0 where nothing else is said. */
#ifndef KESTROVE_MANAGEMENT_H
#define KESTROVE_MANAGEMENT_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The record that the reader of the configuration file fills for the bridge address; kept between readings. */
KESTROVE_API extern ManagementAddress manAddrEnt;

/* Adds a copy of the entry; its status, in the caller's record too, follows from interface, operating mode and product.
   Outside Configuration Mode an entry of status 1 is put on its interface in the kernel, which is brought up; then the
   store is saved and the IPv4 routes are freshened (which leaves SHM_ENOENT). SHM_EFULL: seven are held. SHM_EEXIST:
   the IPv6 address is held, or the IPv4 address lies in the subnet of an IPv4 entry. SHM_ESYSTEM: the interface has no
   name or refuses; the caller's status is then 2 and nothing is added. An ipVersion other than 4 and 6 leaves
   SHM_EINVAL, and the entry is added all the same, as an IPv4 one. */
KESTROVE_API int addManagementAddr(ManagementAddress* entry);

/* Removes the entry with the caller's IPv6 address, or the first IPv4 entry whose subnet holds the caller's address.
   When the caller's record has status 1, the caller's address is taken off the caller's interface in the kernel, in
   Configuration Mode too. Outside Configuration Mode the store is saved and the IPv4 routes are freshened (which leaves
   SHM_ENOENT); in it, a removed IPv6 entry leaves SHM_EEXIST. -1 without a code when no entry matches. SHM_EINVAL:
   ipVersion is neither 4 nor 6. SHM_ESYSTEM: the interface has no name or refuses; the list is as before. */
KESTROVE_API int removeManagementAddr(ManagementAddress* entry);

/* Copies the entry with the address in the text, an IPv6 address among the entries of ipVersion 6, an IPv4 address
   among all others. 0, with out as it was when the list is empty; -1 without a code when none matches. SHM_EINVAL: the
   text is no address. */
KESTROVE_API int findManagementAddr(const char* text, ManagementAddress* out);

/* Copies the entry at the position, from 0. SHM_EINVAL: there is none. */
KESTROVE_API int getManagementAddr(int index, ManagementAddress* out);

/* Gives the count as the store holds it. */
KESTROVE_API int getManagementAddrCount(void);

/* Writes the addresses of status 1 as text into the buffer of size bytes, each after a blank; the first that does not
   fit ends the list. 0, or -1: size is below 16 (buffer untouched, no code), or the lock cannot be had (buffer
   empty, the lock's code). */
KESTROVE_API int getManagementAddressList(char* buffer, int size);

/* The status, 1 or 2, that an address on that interface gets in the current operating mode; -1 without a store. */
KESTROVE_API int validateInterfaceStatus(int interfaceKind);

#ifdef __cplusplus
}
#endif

#endif
