/* Static IPv4 routes. */
#ifndef KESTROVE_ROUTES_H
#define KESTROVE_ROUTES_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

KESTROVE_API int addUserRoute(const RouteEntry* route);
KESTROVE_API int replaceUserRoute(uint32_t oldDestination, uint32_t oldNetmask, const RouteEntry* route, uint32_t source, const char* user);
KESTROVE_API int deleteUserRoute(uint32_t destination, uint32_t netmask);
KESTROVE_API int getFirstRouteTableEntry(RouteEntry* out);
KESTROVE_API int getRouteTableEntry(uint32_t destination, uint32_t netmask, RouteEntry* out);
KESTROVE_API int getNextRouteTableEntry(uint32_t destination, uint32_t netmask, RouteEntry* out);
KESTROVE_API int freshenRouteTable(uint32_t source, const char* user);
KESTROVE_API int addAllRoutes(void);
KESTROVE_API int addKernelRoute(const RouteEntry* route);
KESTROVE_API int deleteKernelRoute(const RouteEntry* route);
KESTROVE_API int v4AddressIsLocal(uint32_t address);

#ifdef __cplusplus
}
#endif

#endif
