/* SPDX-License-Identifier: Apache-2.0 */
/* Hand-off of settings and rules to the optimisation engine.

   A setter marks what changed in pendingChanges and signals the engine with signal 10 (SIGUSR1). The engine fetches
   the marks with receiveKestroveEvent and a snapshot of everything it needs with setConfiguration.

   None logs an event. None but notifyKestrove saves, signals the engine or has to do with the kernel, and that one only
   as said there. Numbers are in the machine's byte order, addresses in network byte order. */
#ifndef KESTROVE_ENGINE_H
#define KESTROVE_ENGINE_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma pack(push, 4)

/* One side of the engine. */
typedef struct EngineLink {
  char interfaceName[16]; /* no terminator when 16 characters long */
  uint32_t sendBufferSize;
  uint32_t receiveBufferSize;
  uint32_t linkRate;
  uint32_t congestionMode; /* 2 congestion control, 0 none */
  uint32_t side;           /* 0 LAN, 1 WAN */
  uint32_t mtu;            /* the smaller MTU of both sides */
  uint8_t reserved40[20];
  uint32_t congestionFlagA; /* 1 for TCP */
  uint32_t congestionFlagB; /* 1 for error tolerance */
  uint8_t reserved68[40];
  uint8_t hardwareAddress[6];
  uint8_t reserved114[14];
} EngineLink;

/* The snapshot, 852544 bytes. Reserved bytes are zero. */
typedef struct EngineConfiguration {
  EngineLink lan;
  EngineLink wan;
  uint32_t wanIpDefaultRtt;
  uint32_t bridging;    /* 1 on, 0 off */
  uint32_t ipv6Support; /* 1 on, 0 off */
  uint32_t item38Value;
  uint32_t managementAddress;     /* network byte order */
  uint32_t managementAddressMask; /* network byte order */
  uint8_t gatewayId[4];
  uint32_t compression;         /* 1 on, 0 off */
  uint32_t globalCongestion;    /* 1 when the WAN congestion code is 1 */
  int32_t accumulationInterval; /* seconds */
  uint32_t constant8;           /* always 8 */
  int32_t ruleCount;
  FilterRule rule[SHM_RULES]; /* order, and a positive target, count from 1 */
  uint8_t reserved852272[4];
  uint8_t singleInterfaceMode; /* 1 on, 2 off */
  uint8_t reserved852277[3];
  uint32_t ddupOperState;
  char ddupStartupOptions[260]; /* always terminated */
} EngineConfiguration;

#pragma pack(pop)

/* Clears the block, 852544 bytes, and fills it with an EngineConfiguration. For each rule the line
   "shm->filterTable.rule[rule].ruleAction: N ACTIVE: 3" goes to standard output. At most 8192 rules are copied,
   whatever the store says. Takes the lock; changes nothing in the store. 0; -1 with 3 for a null block; -1 with the
   code of the lock, the block then untouched. */
KESTROVE_API int setConfiguration(void* block);

/* Has the kernel send the engine signal 10. Its process is the one of task slot 4; for product 11 the number in the
   first line of /var/log/curpid. Product 9 is restarted (restart_kestrove, source 0, user "--") unless a link rate is
   among the changes not yet fetched. Takes the lock; a restart saves the store. 0; -1 without a code when there is no
   engine (no file, a number below 2); -1 with the code of the lock; -1 with 2 when the signal cannot be sent: then one
   level of the lock stays with the calling process. */
KESTROVE_API int notifyKestrove(void);

/* Stores the marks of all changes since the last call and clears them. Takes the lock. 0; -1 with 3 for a null mask; -1
   with the code of the lock, the marks then kept. */
KESTROVE_API int receiveKestroveEvent(uint32_t* mask);

/* Marks changes (SHM_CHANGE_*) for the engine to fetch, for a caller that made them in Configuration Mode and tells the
   engine itself (notifyKestrove). Takes the lock. 0; -1 with the code of the lock. */
KESTROVE_API int kestrove_mark(uint32_t changes);

#ifdef __cplusplus
}
#endif

#endif
