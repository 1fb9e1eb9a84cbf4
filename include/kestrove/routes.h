/* SPDX-License-Identifier: Apache-2.0 */
/* Static IPv4 routes.

   The table holds up to 1024 routes in order, the most specific first: descending by netmask, then by destination, each
   compared as the word that lies in the store, so that among equal masks the last byte of the address counts most.
   Destination and netmask are the key. Addresses and masks are in network byte order.

   A route is active (3, in the kernel), inactive (1: its gateway is on no subnet of the management addresses, or the
   kernel refused it) or disabled by the user (2). Callers give and get the first four words of a RouteEntry; inUse and
   next belong to the table and are left alone in what callers get.

   All but the kernel requests and v4AddressIsLocal work under the store lock; without it they give -1 with the lock's
   code. In Configuration Mode routes are only stored; in Debug Mode they are stored and saved, and the kernel is left
   alone. None logs an event or signals the engine. A failed save leaves the result as it is, with SHM_ESYSTEM. A
   damaged chain in the store ends every walk. A null pointer: -1 with SHM_EINVAL. Results are 0 where nothing else is
   said. */
#ifndef KESTROVE_ROUTES_H
#define KESTROVE_ROUTES_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Adds a route; an active one with a local gateway goes into the kernel. 0 also when that fails: the route is then
   kept as inactive. Saves. SHM_EMASK: the netmask has holes. SHM_EFULL: 1024 routes. SHM_EEXIST: the key is there. */
KESTROVE_API int addUserRoute(const RouteEntry* route);

/* Takes the route with the old key off kernel and table and adds the new one; saves. source and user are not used.
   When the new route cannot be added (codes of addUserRoute) the old one is gone all the same. SHM_EMASK: the new
   netmask has holes. SHM_ENOENT: no route with the old key. SHM_ESYSTEM: the kernel would not give the old route up;
   it stays as inactive, unsaved. In Configuration Mode: -1 without a code. */
KESTROVE_API int replaceUserRoute(uint32_t oldDestination, uint32_t oldNetmask, const RouteEntry* route,
                                  uint32_t source, const char* user);

/* Takes a route off kernel and table; saves. SHM_ENOENT: no such route. SHM_ESYSTEM: the kernel would not give it up;
   it stays as inactive, unsaved. In Configuration Mode: -1 without a code. */
KESTROVE_API int deleteUserRoute(uint32_t destination, uint32_t netmask);

/* The first route in order. SHM_ENOENT: the table is empty. */
KESTROVE_API int getFirstRouteTableEntry(RouteEntry* out);

/* The route with that key. SHM_ENOENT: there is none. */
KESTROVE_API int getRouteTableEntry(uint32_t destination, uint32_t netmask, RouteEntry* out);

/* The successor of the first route that stands at or after the key, which need not exist. SHM_ENOENT: the end. */
KESTROVE_API int getNextRouteTableEntry(uint32_t destination, uint32_t netmask, RouteEntry* out);

/* Replaces every route, in table and kernel, by itself as active, disabled ones included; a route that the kernel does
   not give up stays as inactive. Saves once. Always 0, also without the lock; leaves SHM_ENOENT. source and user are
   not used. */
KESTROVE_API int freshenRouteTable(uint32_t source, const char* user);

/* Puts every route into the kernel anew, those excepted that the user disabled, and marks it active or inactive,
   whatever the operational state. Saves nothing. 0 with SHM_ENOENT left. */
KESTROVE_API int addAllRoutes(void);

/* Ask the kernel to add or delete a route by destination, netmask and gateway, as a host route when the netmask is all
   ones. No lock, no table. 0, or -1 with SHM_ESYSTEM and errno when a socket cannot be had or the kernel refuses. */
KESTROVE_API int addKernelRoute(const RouteEntry* route);
KESTROVE_API int deleteKernelRoute(const RouteEntry* route);

/* Position, from 0, of the first IPv4 entry of the management addresses whose subnet holds the address; -1 without a
   code when none does. Takes no lock; attaches the store where needed (SHM_EATTACH when that fails). */
KESTROVE_API int v4AddressIsLocal(uint32_t address);

#ifdef __cplusplus
}
#endif

#endif
