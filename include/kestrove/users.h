/* User accounts, passwords and log-in checks. */
#ifndef KESTROVE_USERS_H
#define KESTROVE_USERS_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

KESTROVE_API int authenticateUser(const char* name, const char* password);
KESTROVE_API int addUser(const UserAccount* account, const char* password);
KESTROVE_API int shm_addUser(const UserAccount* account);
KESTROVE_API int addPassword(const char* name, const char* password);
KESTROVE_API int removeUser(const char* name);
KESTROVE_API int getUserAccount(const char* name, UserAccount* out);
KESTROVE_API int getUserTableEntry(int index, UserAccount* out);
KESTROVE_API int getCurrentUser(UserAccount* out);
KESTROVE_API int getUserPassword(const char* name, char* hashOut);
KESTROVE_API int getUserCount(void);
KESTROVE_API int getAdminUserCount(void);
KESTROVE_API int encryptPasswd(const char* password, char* hashOut);
KESTROVE_API int validatePasswordComplexity(const char* password, const char* oldPassword);

#ifdef __cplusplus
}
#endif

#endif
