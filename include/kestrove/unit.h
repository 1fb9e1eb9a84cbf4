/* SPDX-License-Identifier: Apache-2.0 */
/* Identity of the unit: product, platform, hardware addresses, log-in origin.

   All but getProductName take the lock and give -1 with its code when that fails. None saves, logs an event or signals
   the engine, and only writeMacAddr asks the kernel. A null output gives -1 with code 3. Results are 0 where nothing
   else is said. */
#ifndef KESTROVE_UNIT_H
#define KESTROVE_UNIT_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The product code of this unit. */
KESTROVE_API int getKestroveProduct(uint32_t* out);

/* Name of a product code, constant; "Unknown Product" for 0 and for codes above 11. */
KESTROVE_API const char* getProductName(uint32_t code);

/* Name of this unit's product; null when the lock cannot be taken. */
KESTROVE_API const char* getKestroveProductName(void);

/* Stored and fetched as they are, any value. */
KESTROVE_API int setHardwarePlatform(uint32_t v);
KESTROVE_API int getHardwarePlatform(uint32_t* out);
KESTROVE_API int setZipType(uint32_t v);
KESTROVE_API int getZipType(uint32_t* out);

/* How the current user logged in: 3 serial port, 4 ssh; anything else gives -1 with code 3, before the lock is taken.
 */
KESTROVE_API int setLoginFrom(uint32_t v);
KESTROVE_API int getLoginFrom(void);

/* Asks the kernel for the hardware address of a physical interface, by number: 0 LAN port, 1 WAN, 3 management, 4 the
   bridge, 5 the base port. 0; -1 with six zero bytes in out when the number has no name (code 3) or the kernel knows no
   such interface. */
KESTROVE_API int writeMacAddr(int iface, uint8_t out[6]);

/* Writes a hardware address of the store as "00:1A:2B:3C:4D:5E" (18 bytes with the terminator): 0 LAN, 1 WAN,
   3 management, zeros for any other number. */
KESTROVE_API int readMacAddr(int iface, char* dst);

/* Derives the gateway identifier, four bytes, from the WAN hardware address: a byte for its vendor and its last three
   bytes. -1 (without a code) when one of the four is zero, as the first one is for an unknown vendor; it is stored all
   the same. */
KESTROVE_API int setGatewayId(void);

/* Copies the gateway identifier up to its first zero byte, at most four bytes, without a terminator. */
KESTROVE_API int getGatewayId(char* dst);

#ifdef __cplusplus
}
#endif

#endif
