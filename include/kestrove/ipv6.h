/* IPv6 addresses of the bridge and static IPv6 routes. */
#ifndef KESTROVE_IPV6_H
#define KESTROVE_IPV6_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

KESTROVE_API int shm_addIp6(const Ip6Address* entry);
KESTROVE_API int addIp6(const Ip6Address* entry);
KESTROVE_API int shm_editIp6Address(int index, const void* address16);
KESTROVE_API int shm_editIp6Prefix(int index, uint32_t prefixLength);
KESTROVE_API int removeIp6(const void* address16);
KESTROVE_API int checkIp6(const void* address16);
KESTROVE_API int getIp6TableEntry(int index, Ip6Address* out);
KESTROVE_API int getIp6TableEntryByAddr(const char* text, Ip6Address* out);
KESTROVE_API int getIp6Count(void);
KESTROVE_API int addUserRoute6(Route6Entry* route);
KESTROVE_API int replaceUserRoute6(const void* oldDestination, uint32_t oldPrefixLength, Route6Entry* route, uint32_t source, const char* user);
KESTROVE_API int deleteUserRoute6(const void* destination16, uint32_t prefixLength);
KESTROVE_API int getFirstRoute6TableEntry(Route6Entry* out);
KESTROVE_API int getRoute6TableEntry(const void* destination16, uint32_t prefixLength, Route6Entry* out);
KESTROVE_API int getNextRoute6TableEntry(const void* destination16, uint32_t prefixLength, Route6Entry* out);
KESTROVE_API int freshenRoute6Table(uint32_t source, const char* user);
KESTROVE_API int addKernelRoute6(const Route6Entry* route);
KESTROVE_API int deleteKernelRoute6(const Route6Entry* route);
KESTROVE_API int gatewayIsLocal6(Route6Entry* route);
KESTROVE_API void convPrefixToMask(void* mask16, int prefixLength);
KESTROVE_API void v6And(const void* a16, const void* b16, void* out16);
KESTROVE_API int v6Match(const void* a16, const void* b16);

#ifdef __cplusplus
}
#endif

#endif
