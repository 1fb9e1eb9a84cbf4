/* The management address list. */
#ifndef KESTROVE_MANAGEMENT_H
#define KESTROVE_MANAGEMENT_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

KESTROVE_API extern ManagementAddress manAddrEnt;

KESTROVE_API int addManagementAddr(ManagementAddress* entry);
KESTROVE_API int removeManagementAddr(ManagementAddress* entry);
KESTROVE_API int findManagementAddr(const char* text, ManagementAddress* out);
KESTROVE_API int getManagementAddr(int index, ManagementAddress* out);
KESTROVE_API int getManagementAddrCount(void);
KESTROVE_API int getManagementAddressList(char* buffer, int size);
KESTROVE_API int validateInterfaceStatus(int interfaceKind);

#ifdef __cplusplus
}
#endif

#endif
