/* Hand-off of settings and rules to the optimisation engine. */
#ifndef KESTROVE_ENGINE_H
#define KESTROVE_ENGINE_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

KESTROVE_API int setConfiguration(void* block);
KESTROVE_API int notifyKestrove(void);
KESTROVE_API int receiveKestroveEvent(uint32_t* mask);

#ifdef __cplusplus
}
#endif

#endif
