/* Building the store, saving it, factory resets. */
#ifndef KESTROVE_PERSISTENCE_H
#define KESTROVE_PERSISTENCE_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

KESTROVE_API int init_shared_memory(const char* configPath, const char* eventLogPath);
KESTROVE_API int load_shared_memory(const char* path, ...);
KESTROVE_API int write_shared_memory(void);
KESTROVE_API int save_shared_memory(void);
KESTROVE_API int addOldUser(void);
KESTROVE_API int restoreFactoryDefaults(uint32_t source, const char* user);
KESTROVE_API int restoreZELFactoryDefaults(uint32_t source, const char* user);
KESTROVE_API int ZELrestore(void);

#ifdef __cplusplus
}
#endif

#endif
