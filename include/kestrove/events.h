/* Event catalogue and event log. */
#ifndef KESTROVE_EVENTS_H
#define KESTROVE_EVENTS_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

KESTROVE_API int logEvent(uint32_t id, uint32_t source, const char* user);
KESTROVE_API int getEventString(uint32_t index, char* buffer, int size, int layout);
KESTROVE_API const char* getEventMessage(uint32_t id);
KESTROVE_API int getEventCount(void);
KESTROVE_API int clearEventLog(uint32_t source, const char* user);
KESTROVE_API int wipeEventLog(void);
KESTROVE_API int logSystemUpdateEvent(uint32_t id, uint32_t source, const char* user);
KESTROVE_API int write_event_log(const char* path, const void* area);
KESTROVE_API int read_event_log(const char* path, void* area);

#ifdef __cplusplus
}
#endif

#endif
