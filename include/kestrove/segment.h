/* Segment, lock and error codes. */
#ifndef KESTROVE_SEGMENT_H
#define KESTROVE_SEGMENT_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct MessageEntry {
  int32_t code;
  const char* message;
} MessageEntry;

typedef struct MessageTable {
  int32_t count;
  int32_t defaultCode;
  const MessageEntry* entries;
} MessageTable;

KESTROVE_API extern ShmData* shm;
KESTROVE_API extern int32_t shm_lock_count;
KESTROVE_API extern uint32_t shm_errno;

KESTROVE_API int create_lock_file(void);
KESTROVE_API int shm_lock(void);
KESTROVE_API int shm_unlock(void);
KESTROVE_API int getSharedMemoryStatus(void);
KESTROVE_API int delete_shared_memory(void);
KESTROVE_API void shm_detach(void);
KESTROVE_API void shm_perror(const char* prefix);
KESTROVE_API const char* shm_strerror(int code);
KESTROVE_API const char* shm_getMessage(const MessageTable* table, int code);

#ifdef __cplusplus
}
#endif

#endif
