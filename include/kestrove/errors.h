/* SPDX-License-Identifier: Apache-2.0 */
/* Codes that a failed operation leaves in shm_errno. A success never clears the code. */
#ifndef KESTROVE_ERRORS_H
#define KESTROVE_ERRORS_H

enum {
  SHM_OK = 0,
  SHM_EATTACH = 1,    /* the store cannot be attached */
  SHM_ESYSTEM = 2,    /* a system call failed, errno tells more */
  SHM_EINVAL = 3,     /* invalid argument */
  SHM_EREADONLY = 4,  /* the object cannot be changed */
  SHM_ELOGOFF = 5,    /* event logging is switched off */
  SHM_EFULL = 6,      /* the table is full */
  SHM_ENOENT = 7,     /* the entity does not exist */
  SHM_EEXIST = 8,     /* the entity exists already */
  SHM_EOPEN = 9,      /* a file cannot be opened */
  SHM_EIO = 10,       /* a file cannot be read or written */
  SHM_EEOF = 11,      /* read beyond the end of a file */
  SHM_ERANGE = 12,    /* the value is out of its range */
  SHM_EOCTET = 13,    /* a field of a dotted quad is no octet */
  SHM_EDOTS = 14,     /* a dotted quad lacks dots */
  SHM_EMASK = 15,     /* no netmask */
  SHM_EIPV6 = 16,     /* no IPv6 address */
  SHM_ESTARTS = 17,   /* the engine failed to start too often */
  SHM_EREBOOTS = 18,  /* rebooted too often because of the engine */
  SHM_ENOUSER = 19,   /* no such user */
  SHM_EPASSWORD = 20, /* wrong password, or too close to the old one */
  SHM_EUNKNOWN = 23
};

#endif
