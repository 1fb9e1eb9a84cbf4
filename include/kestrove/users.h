/* SPDX-License-Identifier: Apache-2.0 */
/* User accounts, passwords and log-in checks.

   An account is a record of the store's user table (at most five) and, when it has a password, a line of /etc/passwd,
   which alone holds the hash. Every function takes the store lock; without it -1 with the lock's code. A failure is -1
   with a code in shm_errno; results are 0 where nothing else is said. A null name, account, password that is needed, or
   output: SHM_EINVAL, nothing changed.

   None logs an event, signals the engine or touches the kernel. Those that change the table save the store, but for
   Configuration Mode; a failed save changes no result and leaves its code. Those that change /etc/passwd ask for the
   system's own lock of that file (/etc/.pwd.lock) for at most a second; without it they go on, with a warning in
   syslog. */
#ifndef KESTROVE_USERS_H
#define KESTROVE_USERS_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

/* 1 when the name is in the password database, the table has an account whose name begins with it, and the password is
   the right one; a null or empty password is not compared, the question is then only whether the user exists. shm_errno
   becomes 0. Otherwise 0: SHM_ENOUSER not in one of the two places, SHM_EPASSWORD wrong password. A wrong password goes
   to syslog at debug priority, as it was typed. */
KESTROVE_API int authenticateUser(const char* name, const char* password);

/* Adds an account with a name of 5 to 31 letters and digits to the table and, when a password is given, checks that for
   complexity and appends the line to /etc/passwd; when one of these two fails the account is taken off the table again,
   and a line that the machine has for that name stays. The name is checked before the lock is taken; all else is one
   operation under it. SHM_EINVAL: another character in the name. SHM_ERANGE: length of the name. SHM_EFULL: five users.
   SHM_EEXIST: the user exists. The codes of validatePasswordComplexity and addPassword. */
KESTROVE_API int addUser(const UserAccount* account, const char* password);

/* Adds an account to the table alone, its name unchecked: one that no row of the configuration file can carry is gone
   with the next start. SHM_EFULL, SHM_EEXIST. */
KESTROVE_API int shm_addUser(const UserAccount* account);

/* Appends a line for the name to /etc/passwd: the hash, a random free user number, group 0, home /root, shell
   /usr/bin/serialUi.sh. An unfinished last line is completed first. The table is not looked at. SHM_EOPEN: the file
   cannot be opened or written, or the name has a colon or a line feed; the file is as it was. SHM_ESYSTEM: the password
   cannot be hashed. */
KESTROVE_API int addPassword(const char* name, const char* password);

/* Removes the account from the table and all its lines from /etc/passwd, saves the store and gives 1. The file is
   replaced whole, an unfinished last line is lost. An entry behind the accounts in use is emptied alone. 0 when the
   password database does not know the name or the table has no account of exactly that name (SHM_ENOUSER, nothing
   changed). -1 with SHM_EOPEN when the file cannot be read or written or what stays takes more than 1 MiB: the file is
   as it was, the account is gone from the table and the store is not saved. The name may be that of the table
   itself. */
KESTROVE_API int removeUser(const char* name);

/* Copies the account of exactly that name, the last one of several. -1 without a code when there is none. */
KESTROVE_API int getUserAccount(const char* name, UserAccount* out);

/* Copies the account at the index. SHM_EINVAL: not one in use. */
KESTROVE_API int getUserTableEntry(int index, UserAccount* out);

/* Copies the first account whose name is that of the environment variable USER; 0. When there is none: 1, the output is
   zeroed. */
KESTROVE_API int getCurrentUser(UserAccount* out);

/* Copies the hash that the password database has for the name into a buffer of at least 128 bytes, cut to that. -1
   without a code when the name is not there. */
KESTROVE_API int getUserPassword(const char* name, char* hashOut);

/* The counters of the table as the store holds them. */
KESTROVE_API int getUserCount(void);
KESTROVE_API int getAdminUserCount(void);

/* Writes the MD5 crypt hash with an empty salt ("$1$$" and 22 characters) into a buffer of at least 27 bytes.
   SHM_ESYSTEM: the password, of more than 511 characters, cannot be hashed. */
KESTROVE_API int encryptPasswd(const char* password, char* hashOut);

/* 0 when the password may be used: 8 to 31 characters (else SHM_ERANGE), with a small letter, a capital, a digit and a
   punctuation character (else SHM_EINVAL) and, when an old password is given, at least four characters that the old one
   does not have, one less for each character that the new one is shorter (else SHM_EPASSWORD). */
KESTROVE_API int validatePasswordComplexity(const char* password, const char* oldPassword);

#ifdef __cplusplus
}
#endif

#endif
