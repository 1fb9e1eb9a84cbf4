/* The binary layout of the shared store.

   Separately built programs, 32-bit and 64-bit, map the same segment, so order, width and place of every member are a
   contract. All records are packed to 4 bytes and hold no pointer, no long and no time_t. Numbers are little-endian,
   IPv4 addresses and masks are in network byte order, IPv6 addresses are 16 bytes in network order. A switch is a
   byte (or a word where stated) that holds 1 for on and 2 for off. Reserved bytes are zero and stay as they are, but
   for the word of a change in progress in reserved32. */
#ifndef KESTROVE_LAYOUT_H
#define KESTROVE_LAYOUT_H

#include <stdint.h>
#include "kestrove/api.h"

enum {
  SHM_KEY = 6001,
  SHM_SIZE = 1308576,
  SHM_IP6_ADDRESSES = 6,
  SHM_MANAGEMENT_ADDRESSES = 7,
  SHM_ROUTES = 1024,
  SHM_ROUTES6 = 1024,
  SHM_RULES = 8192,
  SHM_EVENTS = 8192,
  SHM_USERS = 5,
  SHM_TASKS = 7,
  SHM_QOS_ROWS = 10,
  SHM_INTERVAL_WORDS = 180
};

#define SHM_NO_SLOT 0xFFFFFFFFu /* free mark of inUse, end mark of next, head6 of an emptied list */

/* Values of operationalState. */
enum {
  SHM_STATE_UNINITIALIZED = 0,
  SHM_STATE_OPERATIONAL = 1,
  SHM_STATE_DISABLED = 2,
  SHM_STATE_UNCONFIGURED = 3,
  SHM_STATE_CONFIGURATION = 4, /* changes touch the store alone: no save, event, kernel change or signal */
  SHM_STATE_DEBUG = 5 /* as 1, but items and rules do not signal the engine and routes stay out of the kernel */
};

/* Values of a switch. */
enum { SHM_ON = 1, SHM_OFF = 2 };

#pragma pack(push, 4)

typedef struct UserAccount {
  char username[32];
  int32_t superUser; /* 1 for an administrator */
  int32_t lastLoginSeconds;
  int32_t lastLoginMicroseconds;
  int32_t lastPasswdChange; /* seconds since the epoch */
} UserAccount;

typedef struct Ip6Address {
  uint8_t address[16];
  uint32_t prefixLength;
} Ip6Address;

typedef struct ManagementAddress {
  uint32_t ipVersion; /* 4 or 6 */
  uint32_t status;    /* 1 applied to its interface, 2 kept but not applied */
  uint32_t address;
  uint32_t mask;
  uint8_t address6[16];
  uint32_t prefixLength6;
  int32_t interfaceKind;
} ManagementAddress;

typedef struct RouteEntry {
  uint32_t destination;
  uint32_t netmask;
  uint32_t gateway;
  uint32_t status; /* 1 inactive, 2 disabled by the user, 3 active */
  uint32_t inUse;  /* 1 used, all ones free */
  uint32_t next;   /* slot of the next route in order, all ones at the end */
} RouteEntry;

typedef struct RouteTable {
  uint32_t head;
  RouteEntry slot[SHM_ROUTES];
} RouteTable;

typedef struct Route6Entry {
  uint8_t destination[16];
  uint8_t gateway[16];
  uint32_t prefixLength;
  uint32_t status;
  char interfaceName[16];
  uint32_t inUse;
  uint32_t next;
} Route6Entry;

typedef struct Route6Table {
  uint32_t head6;
  Route6Entry slot[SHM_ROUTES6];
} Route6Table;

typedef struct FilterRule {
  uint32_t ipVersion; /* 4, 6, or 1 for any */
  uint32_t srcAddr;
  uint32_t srcMask;
  uint32_t dstAddr;
  uint32_t dstMask;
  uint8_t srcAddr6[16];
  uint32_t srcPrefixLen6;
  uint8_t dstAddr6[16];
  uint32_t dstPrefixLen6;
  uint32_t proto; /* IP protocol number, 0 any */
  int32_t srcPort;
  int32_t srcPortEnd;
  int32_t destPort;
  int32_t destPortEnd;
  int32_t target; /* 0 drop, -1 bridge, positive accelerate */
  uint32_t order; /* used in the engine's copy only */
  int32_t priority;
  int32_t bandwidth;   /* bits per second */
  uint32_t accel;      /* 1 on, 2 off */
  uint32_t ruleAction; /* 0 undefined, 1 invalid, 2 NIS, 3 active */
} FilterRule;

typedef struct FilterTable {
  int32_t ruleCount;
  FilterRule rule[SHM_RULES];
} FilterTable;

typedef struct QosRow {
  int32_t priority;
  uint64_t bytesSent;
  uint64_t packetsSent;
  uint64_t packetsDropped;
  uint32_t currentRate;
  uint32_t averageRate;
  uint32_t maximumRate;
  uint32_t sessions;
} QosRow;

typedef struct EventRecord {
  int32_t timestamp; /* seconds since the epoch */
  uint32_t eventId;
  uint32_t source;
  char userName[32]; /* no terminator when 32 characters long */
} EventRecord;

typedef struct EventLog {
  uint32_t eventLogFull;
  uint32_t readIndex;
  uint32_t writeIndex;
  EventRecord record[SHM_EVENTS];
} EventLog;

typedef struct InterfaceCounters {
  uint64_t bytesSent;
  uint64_t bytesReceived;
  uint64_t packetsSent;
  uint64_t packetsReceived;
  uint64_t dropsSent;
  uint64_t dropsReceived;
} InterfaceCounters;

typedef struct StatisticsBlock {
  int32_t accumulationInterval; /* seconds */
  uint64_t accumulatedIntervals;
  uint8_t reserved1[8];
  uint32_t counterLastResetTime; /* uptime in hundredths of a second */
  uint32_t intervalRecord[SHM_INTERVAL_WORDS];
  uint64_t totalUncompressedDataSize;
  uint64_t totalCompressedDataSize;
  uint64_t filter_total_bytes_in;
  uint64_t filter_total_bytes_out;
  int32_t intervalPeak14;
  uint64_t intervalTotals[4]; /* record words 18, 19, 22, 20 */
  int32_t intervalPeak42;
  int32_t maxTcpSessionInitiationsPerSecond;
  int32_t maxTcpSessionTerminationsPerSecond;
  uint64_t totalTcpSessionRequestsFailed;
  uint64_t totalTcpSessionsTimedOut;
  uint64_t totalTcpSegmentsBadChecksum;
  uint32_t compressionRatio;         /* percent */
  uint32_t filter_compression_ratio; /* percent */
  uint32_t filterLastValue;
  uint8_t furtherCounters[192];
  InterfaceCounters interfaceRow[2]; /* LAN, WAN */
  uint8_t reserved2[4];
} StatisticsBlock;

typedef struct SessionEngineStats {
  uint64_t counter[8]; /* 0 to 3 LAN, 4 to 7 WAN */
  int32_t sessions;
  uint32_t resetWord[3];
} SessionEngineStats;

typedef struct ConfigRecord {
  char kestroveFullVersion[64];
  char kestroveVersion[64];
  char drelmFullVersion[64];
  char drelmVersion[64];
  char unitId[256];
  char configFileName[128];
  char eventLogFileName[128];
  int32_t adminUserCount;
  int32_t userCount;
  UserAccount users[SHM_USERS];
  uint8_t reserved11[4];
  uint32_t kestroveRestartCount;
  uint32_t kestroveRebootCount;
  uint8_t gatewayId[4];
  uint32_t idleTimeout;
  uint32_t failToWireStatus;
  uint32_t failToWireConfig; /* 1 bypass, 2 normal */
  uint8_t failToWireAvailable;
  uint8_t compression;
  uint8_t transparentBridgeOperState;
  uint8_t loggingOperState;
  uint8_t snmpOperState;
  uint8_t httpOperState;
  uint8_t cliOperState;
  uint8_t kestroveOperState;
  uint8_t webCacheOperState;
  uint8_t cifsOperState;
  uint8_t cifsConfigured;
  uint8_t spareFlag;
  uint32_t ddupOperState;
  uint8_t reserved31[8];
  uint32_t lanPbrRouteSet;
  uint32_t wanPbrRouteSet;
  uint32_t dnsAddress;
  uint8_t snmpVersion;
  uint8_t sshdOperState;
  uint8_t bannerOperState;
  uint8_t pbrOperState;
  uint8_t singleInterfaceMode;
  uint8_t reserved40[3];
  uint32_t wanVlanId;
  uint32_t lanVlanId;
  uint32_t hardwarePlatform;
  uint32_t productId;
  uint8_t reserved45[16];
  uint32_t ipv6Support;
  uint8_t wanOptSupport;
  uint8_t reserved48[3];
  uint32_t zipType;
  char httpEncryptedId[256];
  int32_t httpSessionTimeout;
  uint8_t reserved52[520];
  uint32_t minRate;
  uint32_t minMtu;
  uint8_t lanCongestionControl;
  uint8_t reserved56[3];
  uint32_t lanLinkRate;
  uint32_t lanSendBufferSize;
  uint32_t lanReceiveBufferSize;
  uint32_t lanMaximumTransferUnit;
  uint32_t lanIpAddress;
  uint32_t lanIpAddressMask;
  uint32_t lanBroadcastAddress;
  char lanInterfaceName[16];
  uint32_t lanLinkSetting;
  char physicalLanInterfaceName[16];
  char bridgeRouterPhysicalName[16];
  uint8_t wanCongestionControl;
  uint8_t reserved68[3];
  uint32_t wanLinkRate;
  uint32_t wanSendBufferSize;
  uint32_t wanReceiveBufferSize;
  uint32_t wanMaximumTransferUnit;
  uint32_t wanIpDefaultRtt;
  uint32_t wanIpAddress;
  uint32_t wanIpAddressMask;
  uint32_t wanBroadcastAddress;
  uint8_t reserved77[1];
  char managementInterfaceName[16];
  uint8_t reserved77b[3];
  uint32_t managementLinkSetting;
  uint8_t reserved79[12];
  uint32_t lanGateway;
  uint32_t wanGateway;
  char wanInterfaceName[16];
  uint32_t wanLinkSetting;
  char physicalWanInterfaceName[16];
  uint32_t fileBuffering;
  uint32_t flags[4];    /* items 55 to 58 */
  uint32_t item38Value; /* item 38 */
  uint32_t managementAddress;
  uint32_t managementAddressMask;
  uint32_t managementBroadcastAddress;
  char sysName[256]; /* the four system texts have no terminator when 256 characters long */
  char sysLocation[256];
  char sysContact[256];
  char sysDescription[256];
  uint8_t reserved95[256];
  uint32_t opModeState;
  uint32_t opModeSubState;
  uint8_t reserved98[4];
} ConfigRecord;

typedef struct ShmData {
  uint32_t operationalState;
  ConfigRecord config;
  Ip6Address ip6Address[SHM_IP6_ADDRESSES];
  int32_t ip6Count;
  int32_t managementAddressCount;
  uint8_t reserved6[4];
  ManagementAddress managementAddress[SHM_MANAGEMENT_ADDRESSES];
  uint8_t reserved8[4];
  RouteTable routes;
  uint8_t reserved11[4];
  Route6Table routes6;
  FilterTable filterTable;
  QosRow qos[SHM_QOS_ROWS]; /* 0 WAN total, 1 to 8 WAN classes, 9 LAN */
  EventLog eventLog;
  uint8_t reserved17[4];
  uint8_t notificationStatus;
  uint8_t reserved19[3];
  StatisticsBlock statistics;
  int32_t taskPids[SHM_TASKS];
  SessionEngineStats sessionEngine;
  uint8_t lanHardwareAddress[6];
  uint8_t wanHardwareAddress[6];
  uint8_t managementHardwareAddress[6];
  uint8_t reserved26[2];
  uint32_t sourceComponent;
  char eventSourceUsername[32];
  uint32_t loginFrom; /* 3 serial port, 4 ssh */
  char oldAdminUsername[31];
  char oldAdminPassword[31];
  uint8_t reserved30b[6];
  uint32_t pendingChanges;
  uint8_t reserved32[56]; /* the first eight name a change of a table in progress (segment.h) and are zero otherwise */
  char ddupStartupOptions[256]; /* no terminator when 256 characters long */
} ShmData;

#pragma pack(pop)

#endif
