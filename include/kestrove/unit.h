/* Identity of the unit: product, platform, hardware addresses, log-in origin. */
#ifndef KESTROVE_UNIT_H
#define KESTROVE_UNIT_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

KESTROVE_API int getKestroveProduct(uint32_t* out);
KESTROVE_API const char* getProductName(uint32_t code);
KESTROVE_API const char* getKestroveProductName(void);
KESTROVE_API int setHardwarePlatform(uint32_t v);
KESTROVE_API int getHardwarePlatform(uint32_t* out);
KESTROVE_API int setZipType(uint32_t v);
KESTROVE_API int getZipType(uint32_t* out);
KESTROVE_API int setLoginFrom(uint32_t v);
KESTROVE_API int getLoginFrom(void);
KESTROVE_API int writeMacAddr(int iface, uint8_t out[6]);
KESTROVE_API int readMacAddr(int iface, char* dst);
KESTROVE_API int setGatewayId(void);
KESTROVE_API int getGatewayId(char* dst);
KESTROVE_API int getLinkStatus(int iface, char* first, char* second, char* third);

#ifdef __cplusplus
}
#endif

#endif
