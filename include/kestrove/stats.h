/* Counters of the engine and of the interfaces, and their resets. */
#ifndef KESTROVE_STATS_H
#define KESTROVE_STATS_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

KESTROVE_API int shm_updateKestroveStats(const uint32_t record[180]);
KESTROVE_API int readOperationalStats(void* out);
KESTROVE_API int readQosStats(void* out);
KESTROVE_API int readDomoStats(void* out);
KESTROVE_API int getQueueIntervalStats(int index, void* out);
KESTROVE_API int getInterfaceStats(int index, void* out);
KESTROVE_API int updateDomoStats(void* record);
KESTROVE_API uint64_t checkStatsCounter(void);
KESTROVE_API uint32_t getLastResetTimeStamp(void);
KESTROVE_API int getSystemUptime(uint32_t* out);
KESTROVE_API int readInterfaceStats(void* out, const char* interfaceName);
KESTROVE_API int resetStats(uint32_t source, const char* user);
KESTROVE_API int resetOptimizationStats(uint32_t source, const char* user);
KESTROVE_API int resetCompressionRatio(uint32_t source, const char* user);
KESTROVE_API int resetFilterStats(void);

#ifdef __cplusplus
}
#endif

#endif
