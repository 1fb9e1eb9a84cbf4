/* SPDX-License-Identifier: Apache-2.0 */
/* IPv6 addresses of the bridge and static IPv6 routes.

   Addresses are 16 bytes in network order, prefix lengths plain numbers. Operations on the tables work under the store
   lock unless said otherwise; without it they give -1 with the lock's code. A save that fails leaves the result as it
   is, with SHM_ESYSTEM. None logs an event or signals the engine, and readers leave the kernel alone. A null pointer:
   -1 with SHM_EINVAL. Counts and chains that are damaged in the store lead nobody out of a table. Results are 0 where
   nothing else is said. */
#ifndef KESTROVE_IPV6_H
#define KESTROVE_IPV6_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Up to six addresses, without gaps, all on the bridge br0. Outside Configuration Mode each change is saved. */

/* Adds an address to the table and, outside Configuration Mode, to the bridge in the kernel; saves. SHM_EFULL: six are
   held. SHM_EEXIST: the address is held, whatever its prefix length. -1 with the code of shm_if6config when the bridge
   refuses: nothing is stored. */
KESTROVE_API int shm_addIp6(const Ip6Address* entry);

/* The same as shm_addIp6. */
KESTROVE_API int addIp6(const Ip6Address* entry);

/* Change the address, or the prefix length, of an entry, on the kernel's bridge too, in Configuration Mode too; save.
   SHM_EINVAL: index is not that of an entry in use. SHM_EEXIST: another entry has the address; the entry's own address
   is a success without any effect. A refusal of the bridge: -1; when it refused to give the old address up the entry is
   as before, when it refused the new one that is stored, unsaved. */
KESTROVE_API int shm_editIp6Address(int index, const void* address16);
KESTROVE_API int shm_editIp6Prefix(int index, uint32_t prefixLength);

/* Takes an address off the kernel's bridge, in Configuration Mode too, and out of the table; saves. -1 without a code
   when it is not held; -1 as shm_if6config leaves it when the bridge does not give it up: then it stays. */
KESTROVE_API int removeIp6(const void* address16);

/* Position of the address, from 0; -1 without a code when it is not held. No lock; attaches the store where needed. */
KESTROVE_API int checkIp6(const void* address16);

/* Copies the entry at the index, from 0. SHM_EINVAL: index is not that of an entry in use. */
KESTROVE_API int getIp6TableEntry(int index, Ip6Address* out);

/* Copies the last entry with that address. -1 without a code when the text is no IPv6 address or none has it. */
KESTROVE_API int getIp6TableEntryByAddr(const char* text, Ip6Address* out);

/* The count as the store holds it. */
KESTROVE_API int getIp6Count(void);

/* Up to 1024 routes, ordered descending by prefix length, then by destination byte by byte. Destination and prefix
   length are the key. All else is as for IPv4 routes (kestrove/routes.h), without the check of a netmask; callers give
   and get all but inUse and next. */

/* As addUserRoute. When an active route goes into the kernel, the name of the interface that reaches its gateway is
   written into the caller's record; the table keeps the name that the caller gave. */
KESTROVE_API int addUserRoute6(Route6Entry* route);

/* As replaceUserRoute; the caller's record as in addUserRoute6. */
KESTROVE_API int replaceUserRoute6(const void* oldDestination, uint32_t oldPrefixLength, Route6Entry* route,
                                   uint32_t source, const char* user);

/* As deleteUserRoute. */
KESTROVE_API int deleteUserRoute6(const void* destination16, uint32_t prefixLength);

/* As getFirstRouteTableEntry, getRouteTableEntry and getNextRouteTableEntry. */
KESTROVE_API int getFirstRoute6TableEntry(Route6Entry* out);
KESTROVE_API int getRoute6TableEntry(const void* destination16, uint32_t prefixLength, Route6Entry* out);
KESTROVE_API int getNextRoute6TableEntry(const void* destination16, uint32_t prefixLength, Route6Entry* out);

/* As freshenRouteTable. */
KESTROVE_API int freshenRoute6Table(uint32_t source, const char* user);

/* Ask the kernel to add or delete a route on the interface that interfaceName names, as a host route when the prefix
   length is 128. Deleting without a name asks for any interface. No lock, no table. 0, or -1 with SHM_ESYSTEM and
   errno when a socket cannot be had, the interface is not known or the kernel refuses. */
KESTROVE_API int addKernelRoute6(const Route6Entry* route);
KESTROVE_API int deleteKernelRoute6(const Route6Entry* route);

/* 1 when the gateway is in the subnet of an IPv6 entry of the management addresses: the name of the first such entry's
   interface is then written into the route (at most 15 characters; left as it is when the interface number has none).
   Else 0, also without a store. No lock. */
KESTROVE_API int gatewayIsLocal6(Route6Entry* route);

/* Writes the 16-byte mask of a prefix length; all ones above 128, zeros for a negative length. */
KESTROVE_API void convPrefixToMask(void* mask16, int prefixLength);

/* out = a AND b over 16 bytes; out may lie over a or b. */
KESTROVE_API void v6And(const void* a16, const void* b16, void* out16);

/* 1 when the 16 bytes are equal, else 0. */
KESTROVE_API int v6Match(const void* a16, const void* b16);

#ifdef __cplusplus
}
#endif

#endif
