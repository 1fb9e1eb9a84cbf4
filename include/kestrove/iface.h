/* Interface addresses, flags, bridge, VLANs, ARP, link settings. */
#ifndef KESTROVE_IFACE_H
#define KESTROVE_IFACE_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

KESTROVE_API extern int32_t br_socket_fd;

KESTROVE_API int shm_ifconfig(const char* name, uint32_t address, uint32_t mask, uint32_t broadcast);
KESTROVE_API int getIpv6Addrs(const char* name, void* out7x16);
KESTROVE_API int shm_if6config(const char* name, const void* address16, uint32_t prefixLength, int op);
KESTROVE_API int getIfaceIndex(const char* name);
KESTROVE_API int set_iface_up(const char* name);
KESTROVE_API int set_iface_down(const char* name);
KESTROVE_API int br_init(void);
KESTROVE_API int br_close(void);
KESTROVE_API int br_add_bridge(const char* name);
KESTROVE_API int br_cmd_addbr(const char* name);
KESTROVE_API int br_cmd_delbr(const char* name);
KESTROVE_API int br_ioctldev(const char* name, unsigned long a0, unsigned long a1, unsigned long a2, unsigned long a3);
KESTROVE_API void* br_find_bridge(const char* name);
KESTROVE_API int br_cmd_addif(void* bridgeInfo, const char* bridge, const char* port);
KESTROVE_API int br_cmd_delif(void* bridgeInfo, const char* bridge, const char* port);
KESTROVE_API int set_bridge_up(const char* bridge, const char* port1, const char* port2);
KESTROVE_API int set_bridge_down(const char* bridge, const char* port1, const char* port2);
KESTROVE_API int turnOnBridge(const char* port1, const char* port2);
KESTROVE_API int turnOffBridge(const char* port1, const char* port2);
KESTROVE_API int turnOnIpfoward(const char* name);
KESTROVE_API int turnOffIpfoward(const char* name);
KESTROVE_API int shm_vconfig_up(int kind, uint32_t vid1, uint32_t vid2);
KESTROVE_API int shm_vconfig_add1(const char* name, uint32_t vid);
KESTROVE_API int shm_vconfig_add2(const char* name, uint32_t vid1, uint32_t vid2);
KESTROVE_API int shm_vconfig_down(int kind, uint32_t vid1, uint32_t vid2);
KESTROVE_API int shm_vconfig_rem1(const char* name, uint32_t vid);
KESTROVE_API int shm_vconfig_rem2(const char* name, uint32_t vid1, uint32_t vid2);
KESTROVE_API int shm_ifconfig_down1(const char* name, uint32_t vid);
KESTROVE_API int addArpEntry(uint32_t address, const char* hardwareAddressText, int flags);
KESTROVE_API int delArpEntry(uint32_t address);
KESTROVE_API int setPermArpEntry(uint32_t address, const char* name);
KESTROVE_API int setSystemLinkSetting(int which);
KESTROVE_API int getLinkStatus(int iface, char* first, char* second, char* third);
KESTROVE_API int shm_netlinkConfig(const char* name, uint32_t address, uint32_t mask, uint32_t broadcast, int op);
KESTROVE_API int inet_ntocidr(uint32_t mask);
KESTROVE_API int setinBandWanGateway(char* text);
KESTROVE_API int setManagementIP(char* text);

#ifdef __cplusplus
}
#endif

#endif
