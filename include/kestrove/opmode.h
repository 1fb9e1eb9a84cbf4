/* The state machine of the operating modes. */
#ifndef KESTROVE_OPMODE_H
#define KESTROVE_OPMODE_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

KESTROVE_API extern const char* state_single_str[];
KESTROVE_API extern const char* state_pbr_str[];
KESTROVE_API extern const char* oprmode_str[];
KESTROVE_API extern const char* state_squid_str[];
KESTROVE_API extern const char* state_domo_str[];
KESTROVE_API extern const char* l7mode_str[];
KESTROVE_API extern const char* event_str[];

typedef struct OpModeContext {
  uint32_t mode;
  uint32_t l7Mode;
  uint32_t l7ModeCopy;
  uint32_t locked;
  uint32_t word5;
  uint32_t word6;
  uint32_t wanVlanId;
  uint32_t lanVlanId;
  uint32_t wanVlanIdCopy;
  uint32_t lanVlanIdCopy;
} OpModeContext;

typedef int (*OpModeHandler)(int event, OpModeContext* context);
KESTROVE_API extern OpModeHandler appAccelerateModeFtbl[4];

KESTROVE_API int OpModeState(int event, OpModeContext* context);
KESTROVE_API int opModeDualIf(int event, OpModeContext* context);
KESTROVE_API int opModeSingleOnly(int event, OpModeContext* context);
KESTROVE_API int opModeSinglePBR(int event, OpModeContext* context);
KESTROVE_API int appAccelerationModeChange(int event, OpModeContext* context);
KESTROVE_API int appNetConfigChange(int event, OpModeContext* context);
KESTROVE_API int addAddressesToInterfaces(OpModeContext* context);

#ifdef __cplusplus
}
#endif

#endif
