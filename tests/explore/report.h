// SPDX-License-Identifier: Apache-2.0
/* What a worker and the explorer say to each other, the same in both widths. */
#ifndef KESTROVE_EXPLORE_REPORT_H
#define KESTROVE_EXPLORE_REPORT_H

#include <stdint.h>

/* Where a process stands still until it is told to go on. */
enum Park {
  kParkStart = 1,     /* before its first call */
  kParkCall,          /* between two calls of its own */
  kParkStoreLock,     /* before the store's lock is granted */
  kParkStoreReleased, /* after the store's lock was released */
  kParkSaveLock,      /* before the lock of the saves is granted */
  kParkSaveReleased,  /* after it was released, by a process that does not hold the store's */
  kParkTemporary,     /* in a save, its temporary file just made */
  kParkSync,          /* in a save, before its fsync */
  kParkImage,         /* before the event image is written */
  kParkLoad,          /* in a load, before the first line is read */
  kParkProgram,       /* beside a program that may use the store itself */
  kParkBlocked,       /* a lock that was thought free is not */
  kParkDone,          /* all calls have returned */
  kParkEnded          /* the process is gone: sent by its parent */
};

enum { kMostCalls = 6 };

/* What was started, a line each. */
#define kStartedPrograms "/run/explore.started"
#define kStartedUnderLock "UNDER THE LOCK: "
#define kStartedFreely "without the lock: "

struct CallResult {
  int32_t result;
  uint32_t code; /* shm_errno */
};

struct Report {
  int32_t park;
  int32_t pid;
  int32_t holdsStore;
  int32_t holdsSave;
  int32_t calls; /* that have returned */
  struct CallResult result[kMostCalls];
  int32_t status; /* of the ended process */
};

struct Command {
  int32_t operation; /* its place in the table of operations */
  int32_t parks;     /* 0: run through without standing still */
};

#endif
