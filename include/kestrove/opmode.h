/* SPDX-License-Identifier: Apache-2.0 */
/* The state machine of the operating modes.

   Mode 0 bridges the two physical ports. Mode 1 carries LAN and WAN as two VLANs on the base interface and bridges the
   LAN VLAN to the LAN port. Mode 2 has the same VLANs and routes between them by policy.

   Events here are those of the modes (SHM_MODE_EVENT_*); nothing is written to the event log. Interfaces, bridges,
   addresses and policy routes are changed in the kernel, by requests and programs. OpModeState alone saves, takes the
   lock and signals the engine. */
#ifndef KESTROVE_OPMODE_H
#define KESTROVE_OPMODE_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Printed names by number: two of each state, three modes, four application modes. event_str has 20 slots: index 0 is
   event 1, the last two are null. */
KESTROVE_API extern const char* state_single_str[];
KESTROVE_API extern const char* state_pbr_str[];
KESTROVE_API extern const char* oprmode_str[];
KESTROVE_API extern const char* state_squid_str[];
KESTROVE_API extern const char* state_domo_str[];
KESTROVE_API extern const char* l7mode_str[];
KESTROVE_API extern const char* event_str[];

typedef struct OpModeContext {
  uint32_t mode; /* the present one; a handler writes the new one here */
  uint32_t l7Mode;
  uint32_t l7ModeCopy;
  uint32_t locked; /* not 0: the caller holds the store lock and keeps it */
  uint32_t word5;  /* words 5 and 6 are cleared */
  uint32_t word6;
  uint32_t wanVlanId; /* the ids to use: the configuration's, or the caller's new ones for event 6 */
  uint32_t lanVlanId;
  uint32_t wanVlanIdCopy; /* the same again; for event 6 the caller's old ones, both 0 for the configuration's */
  uint32_t lanVlanIdCopy;
} OpModeContext;

typedef int (*OpModeHandler)(int event, OpModeContext* context);
/* Handlers of events 7 to 10 by application mode. All null in this release: those events change nothing. */
KESTROVE_API extern OpModeHandler appAccelerateModeFtbl[4];

/* Raises an event (0 to 19) in the stored mode: fills the context from the store (all but locked, for event 6 also all
   but the VLAN ids), runs the mode's handler, applies the management addresses again and stores and saves the new mode.
   An event 1 to 6 with a transition in that mode also puts the IPv6 addresses of the bridge back, except in
   Configuration Mode, and the routes of both tables, except in Debug Mode too; events 2 to 6 mark the change (bit 14)
   and signal the engine, except in Configuration Mode. Takes the store lock unless locked is set, and leaves it with
   the caller then.

   0 whatever the kernel, the commands and the save do (a failed save leaves code 2 or 10). -1 with code 3 for another
   event, a stored mode above 2 or a null context, with 1 or 2 when the store cannot be locked; nothing is changed then.
 */
KESTROVE_API int OpModeState(int event, OpModeContext* context);

/* The handler of each mode, for an event 0 to 19: the transition alone, from the ids in the context, with the names of
   the interfaces in use stored but nothing saved. For callers under the store lock; they take none. A VLAN interface
   whose name has more than 15 characters is given to programs by its whole name, gets no address (code 3) and is cut
   where the store holds it. An event without a transition is ignored (mode 0) or logged as an error under the name of
   the event that follows it, and needs no store. 0; -1 with code 3 for a null context, with code 1 when the store
   cannot be attached. */
KESTROVE_API int opModeDualIf(int event, OpModeContext* context);
KESTROVE_API int opModeSingleOnly(int event, OpModeContext* context);
KESTROVE_API int opModeSinglePBR(int event, OpModeContext* context);

/* Hand an event (0 to 19) to the handler of the context's application mode. 0; appNetConfigChange gives -1 with code 3
   for an application mode above 3. Its one handler, of application mode 0, acts in mode 2: WAN address (13), LAN
   address (14), gateways (15 and 16); -1 with code 1 when the store cannot be attached for one of these. */
KESTROVE_API int appAccelerationModeChange(int event, OpModeContext* context);
KESTROVE_API int appNetConfigChange(int event, OpModeContext* context);

/* Applies every management address to its interface in the kernel as the context's mode allows and writes its status:
   1, or 2 when the mode does not use the interface or the kernel refuses. For callers under the store lock. 0; -1 with
   code 3 for a null context, with code 1 when the store cannot be attached. */
KESTROVE_API int addAddressesToInterfaces(OpModeContext* context);

#ifdef __cplusplus
}
#endif

#endif
