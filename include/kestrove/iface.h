/* SPDX-License-Identifier: Apache-2.0 */
/* Interface addresses, flags, bridge, VLANs, ARP, link settings.

   Unless said otherwise a function here touches the kernel alone: it takes no lock, needs no store, saves nothing, logs
   no event and does not signal the engine; callers that share an interface agree among themselves. Names have at most
   15 characters: a longer one is treated as that of an interface that does not exist, never cut. A null pointer gives
   -1 with code 3 and nothing is done. errno is that of the call that failed. IPv4 addresses and masks are in network
   byte order, IPv6 addresses are 16 bytes, a prefix length is a plain number of bits. */
#ifndef KESTROVE_IFACE_H
#define KESTROVE_IFACE_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The socket of the bridge requests, -1 while none is open. One bridge operation at a time in a process. */
KESTROVE_API extern int32_t br_socket_fd;

/* Gives an interface an IPv4 address (network byte order, 0 takes its address away), netmask and broadcast address and
   raises it with the flags UP, BROADCAST and MULTICAST. A mask of 0 leaves the kernel's; a broadcast of 0 is computed
   from the mask, if there is one. 0, or -1: code 3 for a name of 16 characters or more, 2 when the kernel refuses a
   step; earlier steps stay. */
KESTROVE_API int shm_ifconfig(const char* name, uint32_t address, uint32_t mask, uint32_t broadcast);

/* Lists the IPv6 addresses of an interface, 16 bytes each, into room for 7. The name is sought anywhere in the kernel's
   lines, so "eth0" also lists those of "eth0.12". The number found, 0 to 7, or -1 without a code when the list cannot
   be read or holds no address where one should be; addresses before that one are written then. */
KESTROVE_API int getIpv6Addrs(const char* name, void* out7x16);

/* op 0 adds an IPv6 address (16 bytes) to an interface, unless it is listed there already, and raises the interface;
   op 1 deletes it. 0, or -1: code 3 for a name of 16 characters or more or another op, 2 when there is no socket, no
   such interface, no list of addresses, or adding or raising is refused. A deletion refused on an existing interface
   sets no code. */
KESTROVE_API int shm_if6config(const char* name, const void* address16, uint32_t prefixLength, int op);

/* The kernel's index of an interface, or -1 with code 2. */
KESTROVE_API int getIfaceIndex(const char* name);

/* Raises an interface and clears all its other flags. 0, or -1 without a code. */
KESTROVE_API int set_iface_up(const char* name);

/* Takes an interface down and keeps its other flags. 0, also when the flags cannot be read, or -1 without a code. */
KESTROVE_API int set_iface_down(const char* name);

/* Opens br_socket_fd anew. A socket opened here before is closed; another number that a caller put there is left open.
   0 or errno. */
KESTROVE_API int br_init(void);

/* Closes whatever br_socket_fd says. The result of close. */
KESTROVE_API int br_close(void);

/* Make or remove a bridge on br_socket_fd. br_add_bridge and br_cmd_delbr give 0 or errno, br_cmd_addbr the raw result
   of the request (-1 with errno). A bridge that is up is not removed. */
KESTROVE_API int br_add_bridge(const char* name);
KESTROVE_API int br_cmd_addbr(const char* name);
KESTROVE_API int br_cmd_delbr(const char* name);

/* Hands a bridge the four words of a bridge request on br_socket_fd, and gives the raw result: -1 with errno where the
   kernel refuses. */
KESTROVE_API int br_ioctldev(const char* name, unsigned long a0, unsigned long a1, unsigned long a2, unsigned long a3);

/* Looks for a bridge among the first 32 of the kernel, on br_socket_fd. A block of 72 bytes with the kernel's bridge
   information, which the caller frees, or null. Ends the process with status 0 when there is no socket for look-ups. */
KESTROVE_API void* br_find_bridge(const char* name);

/* Put a port into a bridge or take it out, on br_socket_fd; bridgeInfo is ignored and may be null. 1, or -1 with errno
   (a missing port, one that is in a bridge already or not in this one). Both end the process with status 0 when there
   is no socket for look-ups. */
KESTROVE_API int br_cmd_addif(void* bridgeInfo, const char* bridge, const char* port);
KESTROVE_API int br_cmd_delif(void* bridgeInfo, const char* bridge, const char* port);

/* Makes a bridge (or takes the one that is there), puts both ports into it, switches spanning tree off and raises it.
   Opens and closes br_socket_fd. The result of close (0), errno when spanning tree cannot be switched off, -1 when the
   bridge cannot be raised. Ends the process with status 0 when a port cannot be added. */
KESTROVE_API int set_bridge_up(const char* bridge, const char* port1, const char* port2);

/* Takes a bridge down, its two ports out of it, and removes it. Opens and closes br_socket_fd. The result of close (0).
   Ends the process with status 0 when a port cannot be taken out. */
KESTROVE_API int set_bridge_down(const char* bridge, const char* port1, const char* port2);

/* The following eleven run fixed command lines through the shell, their output thrown away, and give 0 whatever the
   commands do. A name that is not plain (letters, digits and . _ - : @ without a "-" at its head, 15 characters or a
   base of 16, a dot and a VLAN id) reaches no shell: that command is not run, which the system log tells. An empty name
   is plain. Programs named without a path (ifconfig) are found as system.h says. */

/* turnOnBridge makes "br0" of two ports by the appliance's own script and raises it; turnOffBridge takes both ports out
   of it and removes it. */
KESTROVE_API int turnOnBridge(const char* port1, const char* port2);
KESTROVE_API int turnOffBridge(const char* port1, const char* port2);

/* Switch IPv4 forwarding of an interface. */
KESTROVE_API int turnOnIpfoward(const char* name);
KESTROVE_API int turnOffIpfoward(const char* name);

/* Add or remove VLAN interfaces NAME.VID; vid is a VLAN id. The first and the fourth take the physical name of an
   interface number, kind (SHM_IF_*), under the store lock, which they release again; they give -1 with code 1, 2 or 3
   when it cannot be had. */
KESTROVE_API int shm_vconfig_up(int kind, uint32_t vid1, uint32_t vid2);
KESTROVE_API int shm_vconfig_add1(const char* name, uint32_t vid);
KESTROVE_API int shm_vconfig_add2(const char* name, uint32_t vid1, uint32_t vid2);
KESTROVE_API int shm_vconfig_down(int kind, uint32_t vid1, uint32_t vid2);
KESTROVE_API int shm_vconfig_rem1(const char* name, uint32_t vid);
KESTROVE_API int shm_vconfig_rem2(const char* name, uint32_t vid1, uint32_t vid2);

/* Takes the VLAN interface NAME.VID down, or the interface itself when vid is 0. */
KESTROVE_API int shm_ifconfig_down1(const char* name, uint32_t vid);

/* Neighbours, links, addresses. */

/* Set an ARP entry in the kernel (hardware address as "00:1a:2b:3c:4d:5e", flags of the kernel's ATF_ family) or delete
   it. The kernel finds the interface by its routes. 0, or -1 without a code, the reason in syslog except for a hardware
   address that does not parse. */
KESTROVE_API int addArpEntry(uint32_t address, const char* hardwareAddressText, int flags);
KESTROVE_API int delArpEntry(uint32_t address);

/* Probes a neighbour twice on the named interface with the program arping and makes its answer a permanent ARP entry of
   the kernel. 0 or -1 without a code. */
KESTROVE_API int setPermArpEntry(uint32_t address, const char* name);

/* Applies the stored link setting of the LAN (0, on the base port), the WAN (1) or the management port (3) by the MII
   tool, a program of its own. Takes the store lock. 0 whatever the tool does; -1 with code 3 for another number, with 1
   or 2 when the lock cannot be taken. */
KESTROVE_API int setSystemLinkSetting(int which);

/* Reads the link status of an interface number (0 means 5) by the program that is the MII tool into three buffers of
   256 bytes: the values of the tool's first, third and second line, in this order. Takes the store lock, and uses
   /tmp/mii.out under it. 0, or -1: with code 3 for a number without a name, with 1 or 2 when the lock cannot be taken,
   with 2 when that file cannot be made anew (then the tool does not run), without a code when the tool gave fewer than
   three usable lines; the buffers may have been written then. */
KESTROVE_API int getLinkStatus(int iface, char* first, char* second, char* third);

/* Adds (op 0 or more) or deletes (op below 0) an IPv4 address beside those that the interface has; addresses and mask
   in network byte order. A broadcast of 0 is computed. 0 once the request is sent: a refusal by the kernel shows in
   errno alone. -1 without a code when there is no such interface (errno ENODEV) or the request cannot be sent. */
KESTROVE_API int shm_netlinkConfig(const char* name, uint32_t address, uint32_t mask, uint32_t broadcast, int op);

/* The prefix length of a netmask in network byte order, up to its last bit that is set; 0 for 0. */
KESTROVE_API int inet_ntocidr(uint32_t mask);

/* Store the Internet gateway or the management address, given as text (which is rewritten in its canonical form, as far
   as it is one), as the network items of the same meaning do, with their event of the operating modes and their
   requests to the kernel. Then, whether or not the text is an address, unless in Configuration Mode: save, mark the
   change (bit 6) and signal the engine. All under the store lock; without a store the text is rewritten and that is
   all. setinBandWanGateway gives 0, setManagementIP -1 with the parser's code for a text that is no address, whatever
   save and signal did, and otherwise 0: then code 1 or 2 tells that it was not stored or not saved. */
KESTROVE_API int setinBandWanGateway(char* text);
KESTROVE_API int setManagementIP(char* text);

#ifdef __cplusplus
}
#endif

#endif
