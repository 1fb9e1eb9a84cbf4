/* Numbered configuration items and the small named accessors. */
#ifndef KESTROVE_ITEMS_H
#define KESTROVE_ITEMS_H

#include "kestrove/layout.h"
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

KESTROVE_API int getKestroveConfigItem(int id, uint32_t* out);
KESTROVE_API int setKestroveConfigItem(int id, uint32_t value, uint32_t source, const char* user);
typedef int (*ConfigHook)(void *, void *);
KESTROVE_API int setKestroveConfigItemPreAct(int id, uint32_t value, uint32_t source, const char* user, ConfigHook hook, void* a, void* b);
KESTROVE_API int setKestroveConfigItemPostAct(int id, uint32_t value, uint32_t source, const char* user, ConfigHook hook, void* a, void* b);
KESTROVE_API int getNetworkConfigItem(int id, uint32_t* out);
KESTROVE_API int setNetworkConfigItem(int id, const uint32_t* value, uint32_t source, const char* user);
KESTROVE_API int setNetworkConfigItemPostAct(int id, const uint32_t* value, uint32_t source, const char* user, ConfigHook hook, void* a, void* b);
KESTROVE_API int getShmString(int id, char* buffer, int size);
KESTROVE_API int setShmString(int id, const char* text);
KESTROVE_API int getInterfaceName(int number, char* buffer, int size);
KESTROVE_API int getPhysicalInterfaceName(int number, char* buffer, int size);
KESTROVE_API int setInterfaceName(int number, const char* name, int size);
KESTROVE_API int getBridgeRouterLanWanPhysName(char* base, char* lan, int takeLock);
KESTROVE_API int getLanWanVlanId(uint32_t* lan, uint32_t* wan, int takeLock);
KESTROVE_API int getShmOperationalState(void);
KESTROVE_API int setShmOperationalState(uint32_t state);
KESTROVE_API int getCliOperationalState(void);
KESTROVE_API int getShmFileBuffering(void);
KESTROVE_API int getNotificationStatus(int n);
KESTROVE_API int setNotificationStatus(int n);
KESTROVE_API int getShmSourceComponent(void);
KESTROVE_API int setShmSourceComponent(uint32_t component);
KESTROVE_API int setEventSourceUsername(const char* name);
KESTROVE_API int getEventSourceUsername(char* buffer);
KESTROVE_API int getSingleInterfaceMode(uint32_t* mode, uint32_t* lanVlan, uint32_t* wanVlan);
KESTROVE_API int setSingleInterfaceMode(uint32_t mode, uint32_t lanVlan, uint32_t wanVlan);

#ifdef __cplusplus
}
#endif

#endif
