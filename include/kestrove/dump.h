/* The store as text. A null stream means standard output. */
#ifndef KESTROVE_DUMP_H
#define KESTROVE_DUMP_H

#include "kestrove/layout.h"
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

KESTROVE_API int dumpSharedMemory(FILE* stream);
KESTROVE_API int printSharedMemory(FILE* stream);
KESTROVE_API int printTelemetry(FILE* stream);
KESTROVE_API int printSharedMemoryStats(void);
KESTROVE_API int printEventLog(FILE* stream);
KESTROVE_API int printRouteInfo(FILE* stream);
KESTROVE_API int printRoute6Info(FILE* stream);
KESTROVE_API const char* strOperationalState(int code);
KESTROVE_API const char* strCongestionControl(int code);
KESTROVE_API const char* strDDupState(int code);

#ifdef __cplusplus
}
#endif

#endif
