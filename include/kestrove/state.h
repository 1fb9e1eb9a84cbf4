/* Saving and restoring a whole system state. */
#ifndef KESTROVE_STATE_H
#define KESTROVE_STATE_H

#include "kestrove/layout.h"
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

KESTROVE_API int saveSystemState(uint32_t source, const char* user);
KESTROVE_API int loadSystemState(uint32_t source, const char* user);
KESTROVE_API int __saveCliState(const char* timestamp);
KESTROVE_API int __saveShmState(const char* timestamp, uint32_t source, const char* user);
KESTROVE_API int __saveManagement(FILE* stream);
KESTROVE_API int __saveLink(FILE* stream, int which);
KESTROVE_API int __saveSARules(FILE* stream);
KESTROVE_API int __saveRoutes(FILE* stream);
KESTROVE_API int __saveIpv6Routes(FILE* stream);
KESTROVE_API int __printRoute(FILE* stream, const RouteEntry* route);
KESTROVE_API int __printIpv6Route(FILE* stream, const Route6Entry* route);

#ifdef __cplusplus
}
#endif

#endif
