/* Obtaining an interface address through the DHCP client. */
#ifndef KESTROVE_DHCP_H
#define KESTROVE_DHCP_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef int (*DhcpCallback)(uint32_t *kind, const char *value);
KESTROVE_API int dhcp_start(const char* name, int timeoutSeconds, DhcpCallback callback, uint32_t* kindOut);

#ifdef __cplusplus
}
#endif

#endif
