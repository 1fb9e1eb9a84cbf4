/* SPDX-License-Identifier: Apache-2.0 */
/* Numbered configuration items and the small named accessors.

   Every accessor holds the store lock for its whole work (getShmFileBuffering and those with a takeLock argument as
   said there; network item 1 gives it up while the three server scripts run) and gives -1 with the lock's code when it
   cannot be taken, with nothing changed. A null pointer where a text or an output is needed gives -1 with SHM_EINVAL.
   Where nothing else is said, results are 0, or -1 with one of the codes named. Getters neither save nor log events,
   and leave engine and kernel alone. "source" is the number of the front end and "user" the name that events are
   stamped with; a null user counts as an empty name.

   A setter changes its field only when the value differs; an equal value gives 0 and does nothing else. In
   Configuration Mode it changes the field and does nothing else. Otherwise it goes on with what its row says, in that
   order: log an event, save the store, set a change bit and signal the engine (not in Debug Mode), act on the system.
   The results of the event and of the signal are ignored; an engine that cannot be signalled leaves one level of the
   lock with the calling process. A failed save gives -1 with its code, after the rest is done; the new value stays. A
   save that could be begun and did not reach the file gives 0 with code 10. */
#ifndef KESTROVE_ITEMS_H
#define KESTROVE_ITEMS_H

#include <stdint.h>

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Ids are SHM_ITEM_* of codes.h. doc/items.md lists for each of them the field, what is accepted (a switch is 1 for on,
   2 for off) and what a change does. */

/* Fetches the item, in the unit of its field. SHM_EINVAL: no such id. */
KESTROVE_API int getKestroveConfigItem(int id, uint32_t* out);

/* Sets the item, in the unit of its field; what follows from the change, to programs and kernel, is in its row.
   SHM_ERANGE: a rate or an MTU out of its bounds. SHM_EINVAL: any other value that is not accepted, an id that is not
   listed or not settable. */
KESTROVE_API int setKestroveConfigItem(int id, uint32_t value, uint32_t source, const char* user);

/* Called outside the lock with the two arguments as given. A null hook is skipped. */
typedef int (*ConfigHook)(void*, void*);

/* The hook, whose result is ignored, and then the set, whose result is given. */
KESTROVE_API int setKestroveConfigItemPreAct(int id, uint32_t value, uint32_t source, const char* user, ConfigHook hook,
                                             void* a, void* b);

/* The set and, when it succeeded, the hook, whose result is given. -1 when the set failed. */
KESTROVE_API int setKestroveConfigItemPostAct(int id, uint32_t value, uint32_t source, const char* user,
                                              ConfigHook hook, void* a, void* b);

/* Addresses, all in network byte order. Ids are SHM_NET_* of codes.h; doc/items.md lists for each of them the field,
   the event that drives the operating modes on a change, and what else a change does. */

/* Fetches the address. SHM_EINVAL: no such id. */
KESTROVE_API int getNetworkConfigItem(int id, uint32_t* out);

/* Sets the address. After the event of the operating modes, which change the kernel's interfaces, saves the store and
   refreshes the route table with the source and user. What the system refuses (ARP entry, address, event) does not fail
   the set. SHM_EINVAL: no such id. SHM_EMASK: a management mask of 0 or with holes, also when equal to the stored
   one. */
KESTROVE_API int setNetworkConfigItem(int id, const uint32_t* value, uint32_t source, const char* user);

/* Sets as setNetworkConfigItem, then calls the hook as setKestroveConfigItemPostAct does; a null hook is skipped. */
KESTROVE_API int setNetworkConfigItemPostAct(int id, const uint32_t* value, uint32_t source, const char* user,
                                             ConfigHook hook, void* a, void* b);

/* Texts. Ids are SHM_TEXT_* of codes.h; doc/items.md lists their fields. */

/* Fetches the text. size: of the buffer in bytes, at least 256. A text of 256 characters fills a buffer of 256 without
   a terminator. SHM_EINVAL: no such id, a smaller size. */
KESTROVE_API int getShmString(int id, char* buffer, int size);

/* Sets the text of up to 256 characters, which may stand in the field itself. A change saves the store; a failed save
   leaves its code, the result is 0 all the same. The store keeps a text whole, the configuration file up to its first
   line feed, with a warning in syslog. SHM_EINVAL: id not listed or not settable, a longer text. */
KESTROVE_API int setShmString(int id, const char* text);

/* Interface numbers: 0 LAN, 1 WAN, 3 management port, 4 management bridge, 5 bridge/router port. The buffer holds at
   least size bytes, and a name that does not fit is cut; it is always terminated. */

/* Copies the name now in use for 0 or 1, otherwise as getPhysicalInterfaceName. */
KESTROVE_API int getInterfaceName(int number, char* buffer, int size);

/* Copies the name of the physical port. SHM_EINVAL: a size below 15, a number without a name (2, and all beyond 5). */
KESTROVE_API int getPhysicalInterfaceName(int number, char* buffer, int size);

/* Sets the names of 0, 1, 3 and 5, cut to 15 characters. size is only checked to be 15 or more. Not saved.
   SHM_EINVAL: as above, and number 4. */
KESTROVE_API int setInterfaceName(int number, const char* name, int size);

/* Copies bridgeRouterPhysicalName and physicalLanInterfaceName into buffers of 16 bytes. takeLock 0: the caller holds
   the lock; the store is then attached if needed (-1 with SHM_EATTACH when it cannot be). */
KESTROVE_API int getBridgeRouterLanWanPhysName(char* base, char* lan, int takeLock);

/* Fetches the VLAN ids; a null pointer is skipped. takeLock as above. */
KESTROVE_API int getLanWanVlanId(uint32_t* lan, uint32_t* wan, int takeLock);

/* Single values. */

/* Gives the operational state, 0 to 5 (SHM_STATE_*). */
KESTROVE_API int getShmOperationalState(void);

/* Sets the operational state. Not saved. SHM_EINVAL: above 5. */
KESTROVE_API int setShmOperationalState(uint32_t state);

/* Gives cliOperState, 1 on or 2 off. */
KESTROVE_API int getCliOperationalState(void);

/* Gives fileBuffering, 1 on or 2 off, read without the lock. -1 with SHM_EATTACH without a store. */
KESTROVE_API int getShmFileBuffering(void);

/* 1 when notification n (1 to 3) is set, else 0; reading clears it. SHM_EINVAL: another n. */
KESTROVE_API int getNotificationStatus(int n);

/* Sets notification n. Not saved. SHM_EINVAL as above. */
KESTROVE_API int setNotificationStatus(int n);

/* Gives the number (SHM_SOURCE_*) of the front end on whose behalf the process acts. */
KESTROVE_API int getShmSourceComponent(void);

/* Sets that number. Not saved. SHM_EINVAL: above 8. */
KESTROVE_API int setShmSourceComponent(uint32_t component);

/* Sets the name stamped on events, cut to 31 characters. A change saves the store; a failed save leaves its code, the
   result is 0 all the same. */
KESTROVE_API int setEventSourceUsername(const char* name);

/* Copies the name stamped on events into a buffer of 32 bytes, terminated. */
KESTROVE_API int getEventSourceUsername(char* buffer);

/* Fetches singleInterfaceMode, 1 on or 2 off, and both VLAN ids. */
KESTROVE_API int getSingleInterfaceMode(uint32_t* mode, uint32_t* lanVlan, uint32_t* wanVlan);

/* mode: 1 on, with two ids other than 0; 2 off, which ignores the ids and switches policy routing off with the mode.
   Outside Configuration Mode a change drives OpModeState, which changes the kernel's interfaces, saves and signals:
   event 2 for on, 3 for off, 6 for other ids while on; its result is given. SHM_EINVAL: another mode, an id of 0 for
   on. */
KESTROVE_API int setSingleInterfaceMode(uint32_t mode, uint32_t lanVlan, uint32_t wanVlan);

#ifdef __cplusplus
}
#endif

#endif
