/* SPDX-License-Identifier: Apache-2.0 */
/* The binary layout of the shared store.

   Separately built programs, 32-bit and 64-bit, map the same segment, so order, width and place of every member are a
   contract. All records are packed to 4 bytes and hold no pointer, no long and no time_t. Numbers are little-endian,
   IPv4 addresses and masks are in network byte order, IPv6 addresses are 16 bytes in network order. A switch is a
   byte (or a word where stated) that holds 1 for on and 2 for off. Reserved bytes are zero and stay as they are, but
   for the word of a change in progress in reserved32.

   The remark beside a member ends with its keyword in the configuration file, if it has one. SHM_ names without a
   value here are those of codes.h. The offset table in doc/layout.md is made from these remarks. */
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
  char username[32];             /* terminated name, at most 31 letters and digits; USER_ACCOUNT */
  int32_t superUser;             /* 1 for an administrator */
  int32_t lastLoginSeconds;      /* last log-in, seconds since the epoch */
  int32_t lastLoginMicroseconds; /* the microseconds of that */
  int32_t lastPasswdChange;      /* seconds since the epoch, kept by the front ends */
} UserAccount;

typedef struct Ip6Address {
  uint8_t address[16];   /* IPv6 address of the bridge; MANAGEMENT_ADDR_6 */
  uint32_t prefixLength; /* 0 to 128 */
} Ip6Address;

typedef struct ManagementAddress {
  uint32_t ipVersion;     /* SHM_FAMILY_IPV4 or SHM_FAMILY_IPV6; all others count as IPv4 */
  uint32_t status;        /* SHM_ADDRESS_* */
  uint32_t address;       /* IPv4, network order; of an IPv4 entry */
  uint32_t mask;          /* IPv4, network order; of an IPv4 entry */
  uint8_t address6[16];   /* IPv6 address; of an IPv6 entry */
  uint32_t prefixLength6; /* 0 to 128; of an IPv6 entry */
  int32_t interfaceKind;  /* SHM_IF_* */
} ManagementAddress;

typedef struct RouteEntry {
  uint32_t destination; /* IPv4 network, network order; key with netmask */
  uint32_t netmask;     /* IPv4, network order, without holes */
  uint32_t gateway;     /* IPv4 next hop, network order */
  uint32_t status;      /* SHM_ROUTE_* */
  uint32_t inUse;       /* 1 used, SHM_NO_SLOT free */
  uint32_t next;        /* slot of the next route in order, SHM_NO_SLOT at the end */
} RouteEntry;

typedef struct RouteTable {
  uint32_t head;               /* slot of the first route; the list is empty when that is not in use */
  RouteEntry slot[SHM_ROUTES]; /* longer masks first; ROUTE */
} RouteTable;

typedef struct Route6Entry {
  uint8_t destination[16]; /* IPv6 prefix; key with prefixLength */
  uint8_t gateway[16];     /* IPv6 next hop */
  uint32_t prefixLength;   /* 0 to 128 */
  uint32_t status;         /* SHM_ROUTE_* */
  char interfaceName[16];  /* terminated, reaches the gateway; set when the route is installed */
  uint32_t inUse;          /* 1 used, SHM_NO_SLOT free */
  uint32_t next;           /* slot of the next route in order, SHM_NO_SLOT at the end */
} Route6Entry;

typedef struct Route6Table {
  uint32_t head6;                /* slot of the first route, SHM_NO_SLOT when the last one went */
  Route6Entry slot[SHM_ROUTES6]; /* longer prefixes first; ROUTE6 */
} Route6Table;

typedef struct FilterRule {
  uint32_t ipVersion;     /* SHM_FAMILY_*; the fields of the other family are zero */
  uint32_t srcAddr;       /* IPv4, network order */
  uint32_t srcMask;       /* IPv4, network order; 0 any source */
  uint32_t dstAddr;       /* IPv4, network order */
  uint32_t dstMask;       /* IPv4, network order; 0 any destination */
  uint8_t srcAddr6[16];   /* IPv6 address */
  uint32_t srcPrefixLen6; /* 0 to 128; 0 any source */
  uint8_t dstAddr6[16];   /* IPv6 address */
  uint32_t dstPrefixLen6; /* 0 to 128; 0 any destination */
  uint32_t proto;         /* SHM_PROTO_* or another IP protocol number */
  int32_t srcPort;        /* first source port; 0 any */
  int32_t srcPortEnd;     /* last source port */
  int32_t destPort;       /* first destination port; 0 any */
  int32_t destPortEnd;    /* last destination port */
  int32_t target;         /* SHM_TARGET_* */
  uint32_t order;         /* place from 1 on in the engine's copy; 0 in the store */
  int32_t priority;       /* class of accelerated traffic, the default rule has 8 */
  int32_t bandwidth;      /* limit of accelerated traffic, bit/s, at least minRate */
  uint32_t accel;         /* switch, a word; off for an active UDP rule */
  uint32_t ruleAction;    /* SHM_RULE_* */
} FilterRule;

typedef struct FilterTable {
  int32_t ruleCount;          /* rules in use, 1 to 8192 */
  FilterRule rule[SHM_RULES]; /* the first match decides, the last is the default rule; SELEC_ACCEL* */
} FilterTable;

typedef struct QosRow {
  int32_t priority;        /* of the class; no reset changes it */
  uint64_t bytesSent;      /* since the last reset */
  uint64_t packetsSent;    /* since the last reset */
  uint64_t packetsDropped; /* since the last reset */
  uint32_t currentRate;    /* of the latest interval, in the engine's unit */
  uint32_t averageRate;    /* of the latest interval, in the engine's unit */
  uint32_t maximumRate;    /* largest since the last reset, in the engine's unit */
  uint32_t sessions;       /* of the latest interval */
} QosRow;

typedef struct EventRecord {
  int32_t timestamp; /* seconds since the epoch */
  uint32_t eventId;  /* SHM_EVENT_*; other numbers are kept, too */
  uint32_t source;   /* SHM_SOURCE_* */
  char userName[32]; /* no terminator when 32 characters long */
} EventRecord;

typedef struct EventLog {
  uint32_t eventLogFull;          /* 1 once the ring has gone round, else 0 */
  uint32_t readIndex;             /* slot of the oldest record */
  uint32_t writeIndex;            /* slot of the next record */
  EventRecord record[SHM_EVENTS]; /* a ring */
} EventLog;

typedef struct InterfaceCounters {
  uint64_t bytesSent;       /* bytes */
  uint64_t bytesReceived;   /* bytes */
  uint64_t packetsSent;     /* packets */
  uint64_t packetsReceived; /* packets */
  uint64_t dropsSent;       /* packets */
  uint64_t dropsReceived;   /* packets */
} InterfaceCounters;

typedef struct StatisticsBlock {
  int32_t accumulationInterval;  /* seconds that a record of the engine spans; divides the peaks */
  uint64_t accumulatedIntervals; /* records folded in since the last reset */
  uint8_t reserved1[8];
  uint32_t counterLastResetTime;               /* uptime in hundredths of a second */
  uint32_t intervalRecord[SHM_INTERVAL_WORDS]; /* the engine's latest record, as it came */
  uint64_t totalUncompressedDataSize;          /* sum of word 25 of the records */
  uint64_t totalCompressedDataSize;            /* sum of word 26 */
  uint64_t filter_total_bytes_in;              /* sum of word 27 */
  uint64_t filter_total_bytes_out;             /* sum of word 28 */
  int32_t intervalPeak14;                      /* largest word 14 */
  uint64_t intervalTotals[4];                  /* sums of words 18, 19, 22 and 20 */
  int32_t intervalPeak42;                      /* largest word 42 */
  int32_t maxTcpSessionInitiationsPerSecond;   /* largest word 43 by accumulationInterval */
  int32_t maxTcpSessionTerminationsPerSecond;  /* largest word 44 by accumulationInterval */
  uint64_t totalTcpSessionRequestsFailed;      /* sum of word 21 */
  uint64_t totalTcpSessionsTimedOut;           /* sum of word 23 */
  uint64_t totalTcpSegmentsBadChecksum;        /* sum of word 24 */
  uint32_t compressionRatio;                   /* percent, compressed of uncompressed; 100 after a reset */
  uint32_t filter_compression_ratio;           /* percent, out of in; 100 while nothing came in */
  uint32_t filterLastValue;                    /* word 29 of the latest record */
  uint8_t furtherCounters[192];                /* of the engine, zeroed by resetStats */
  InterfaceCounters interfaceRow[2];           /* 0 LAN, 1 WAN */
  uint8_t reserved2[4];
} StatisticsBlock;

typedef struct SessionEngineStats {
  uint64_t counter[8];   /* bytes and packets: 0 to 3 LAN, 4 to 7 WAN */
  int32_t sessions;      /* gauge, as last reported */
  uint32_t resetWord[3]; /* written by the resets alone */
} SessionEngineStats;

typedef struct ConfigRecord {
  char kestroveFullVersion[64]; /* text, version of the engine; KESTROVE_VERSION */
  char kestroveVersion[64];     /* text made from it at start-up, no terminator when 64 characters long */
  char drelmFullVersion[64];    /* text, version of the protocol engine; DRELM_VERSION */
  char drelmVersion[64];        /* text made from it at start-up for SHM_PRODUCT_DRELM */
  char unitId[256];             /* text, identifier of the unit */
  char configFileName[128];     /* path; KESTROVE_CONFIG, else as start-up was told */
  char eventLogFileName[128];   /* path */
  int32_t adminUserCount;       /* users whose superUser is 1 */
  int32_t userCount;            /* users in use, 0 to 5 */
  UserAccount users[SHM_USERS]; /* without gaps, in the order of adding; USER_ACCOUNT */
  uint8_t reserved11[4];
  uint32_t kestroveRestartCount;      /* failed starts of the engine in a row */
  uint32_t kestroveRebootCount;       /* reboots because the engine would not start; REBOOT_COUNT */
  uint8_t gatewayId[4];               /* made from the WAN hardware address; the first byte stands for its vendor */
  uint32_t idleTimeout;               /* of sessions, in the engine's unit */
  uint32_t failToWireStatus;          /* bits of the relay */
  uint32_t failToWireConfig;          /* the relay without power: 1 bypass, 2 normal; FTW_CONFIG */
  uint8_t failToWireAvailable;        /* switch: there is a relay */
  uint8_t compression;                /* switch; COMPRESSION */
  uint8_t transparentBridgeOperState; /* switch: the ports are bridged; BRIDGING */
  uint8_t loggingOperState;           /* switch: events are logged; EVENT_LOGGING */
  uint8_t snmpOperState;              /* switch: configuration through SNMP; CONFIG_BY_SNMP */
  uint8_t httpOperState;              /* switch: configuration through the web interface; CONFIG_BY_WEB */
  uint8_t cliOperState;               /* switch: configuration through the serial port; CONFIG_BY_SERIAL */
  uint8_t kestroveOperState;          /* switch: the engine runs; KESTROVE_OP_STATE */
  uint8_t webCacheOperState;          /* switch; WEB_CACHE */
  uint8_t cifsOperState;              /* switch: CIFS acceleration; CIFS */
  uint8_t cifsConfigured;             /* 1 once CIFS or WEB_CACHE was switched on, else 0 */
  uint8_t spareFlag;                  /* any byte, read by nobody */
  uint32_t ddupOperState;             /* method: 0 none, bits 1 LZ, 2 LZP, 4 DDUP, 8 extended header, 255 off; DDUP */
  uint8_t reserved31[8];
  uint32_t lanPbrRouteSet;     /* 1 once policy routing has its LAN default route */
  uint32_t wanPbrRouteSet;     /* 1 once policy routing has its WAN default route */
  uint32_t dnsAddress;         /* IPv4, network order; DNS_ADDR */
  uint8_t snmpVersion;         /* 1 to 3; SNMP_VERSION */
  uint8_t sshdOperState;       /* switch: SSH daemon; SSHD */
  uint8_t bannerOperState;     /* switch: banner at log-in; BANNER */
  uint8_t pbrOperState;        /* switch: policy routing; PBR */
  uint8_t singleInterfaceMode; /* switch: LAN and WAN are VLANs of one port; SINGLE_INTERFACE */
  uint8_t reserved40[3];
  uint32_t wanVlanId;        /* number, 0 none; WAN_VLAN_ID */
  uint32_t lanVlanId;        /* number, 0 none; LAN_VLAN_ID */
  uint32_t hardwarePlatform; /* 0 to 15; 14 has a management port and WAN optimisation */
  uint32_t productId;        /* SHM_PRODUCT_*; PRODUCT_ID */
  uint8_t reserved45[16];
  uint32_t ipv6Support;  /* switch, a word */
  uint8_t wanOptSupport; /* switch, read on platform 14 alone */
  uint8_t reserved48[3];
  uint32_t zipType;           /* archive type of a saved state */
  char httpEncryptedId[256];  /* text, the current web session; no terminator when 256 characters long */
  int32_t httpSessionTimeout; /* number, in the web interface's unit */
  uint8_t reserved52[520];
  uint32_t minRate;             /* lowest WAN link rate and bandwidth of a rule, bit/s; by product */
  uint32_t minMtu;              /* lowest MTU, bytes; by product */
  uint8_t lanCongestionControl; /* SHM_CONGESTION_*; LAN_CONGESTION, LAN_CC */
  uint8_t reserved56[3];
  uint32_t lanLinkRate;              /* bit/s; LAN_RATE */
  uint32_t lanSendBufferSize;        /* number, in the engine's unit; LAN_BUF */
  uint32_t lanReceiveBufferSize;     /* number, in the engine's unit; LAN_RBUF */
  uint32_t lanMaximumTransferUnit;   /* bytes, at least minMtu; LAN_MTU */
  uint32_t lanIpAddress;             /* IPv4, network order; LAN_ADDR */
  uint32_t lanIpAddressMask;         /* IPv4, network order; LAN_MASK */
  uint32_t lanBroadcastAddress;      /* IPv4, network order */
  char lanInterfaceName[16];         /* terminated; LAN_NAME */
  uint32_t lanLinkSetting;           /* SHM_LINK_*; LAN_LINK_SETTING */
  char physicalLanInterfaceName[16]; /* port of SHM_IF_LAN, terminated; PHYSICAL_LAN_NAME */
  char bridgeRouterPhysicalName[16]; /* port of SHM_IF_BASE, terminated; REAL_LAN_NAME */
  uint8_t wanCongestionControl;      /* SHM_CONGESTION_*; INTERNET_CONGESTION, GLOBAL_CONGESTION_CONTROL */
  uint8_t reserved68[3];
  uint32_t wanLinkRate;            /* bit/s, at least minRate; INTERNET_RATE */
  uint32_t wanSendBufferSize;      /* number, in the engine's unit; INTERNET_BUF */
  uint32_t wanReceiveBufferSize;   /* number, in the engine's unit; INTERNET_RBUF */
  uint32_t wanMaximumTransferUnit; /* bytes, at least minMtu; INTERNET_MTU */
  uint32_t wanIpDefaultRtt;        /* round trip of the WAN path, in the engine's unit; INTERNET_DELAY */
  uint32_t wanIpAddress;           /* IPv4, network order; INTERNET_ADDR */
  uint32_t wanIpAddressMask;       /* IPv4, network order; INTERNET_MASK */
  uint32_t wanBroadcastAddress;    /* IPv4, network order */
  uint8_t reserved77[1];
  char managementInterfaceName[16]; /* port of SHM_IF_MANAGEMENT, terminated; MANAGEMENT_NAME */
  uint8_t reserved77b[3];
  uint32_t managementLinkSetting; /* SHM_LINK_*; MANAGEMENT_LINK_SETTING */
  uint8_t reserved79[12];
  uint32_t lanGateway;                 /* IPv4, network order; LAN_GATEWAY */
  uint32_t wanGateway;                 /* IPv4, network order; INTERNET_GATEWAY */
  char wanInterfaceName[16];           /* terminated; INTERNET_NAME */
  uint32_t wanLinkSetting;             /* SHM_LINK_*; INTERNET_LINK_SETTING */
  char physicalWanInterfaceName[16];   /* port of SHM_IF_WAN, terminated; PHYSICAL_WAN_NAME */
  uint32_t fileBuffering;              /* switch, a word */
  uint32_t flags[4];                   /* 0 or 1 each, items 55 to 58 */
  uint32_t item38Value;                /* any number, item 38, handed to the engine */
  uint32_t managementAddress;          /* IPv4 of the bridge, network order; BRIDGE_ADDR */
  uint32_t managementAddressMask;      /* IPv4, network order; BRIDGE_MASK */
  uint32_t managementBroadcastAddress; /* IPv4, network order */
  char sysName[256];        /* text of SNMP; as the next three not terminated when 256 characters long; SYS_NAME */
  char sysLocation[256];    /* text of SNMP; SYS_LOCATION */
  char sysContact[256];     /* text of SNMP; SYS_CONTACT */
  char sysDescription[256]; /* text of SNMP; SYS_DESCRIPTION */
  uint8_t reserved95[256];
  uint32_t opModeState;    /* SHM_MODE_* */
  uint32_t opModeSubState; /* SHM_APPLICATION_* */
  uint8_t reserved98[4];
} ConfigRecord;

typedef struct ShmData {
  uint32_t operationalState;                /* SHM_STATE_* */
  ConfigRecord config;                      /* the settings */
  Ip6Address ip6Address[SHM_IP6_ADDRESSES]; /* the bridge's own, without gaps */
  int32_t ip6Count;                         /* IPv6 addresses in use, 0 to 6 */
  int32_t managementAddressCount;           /* management addresses in use, 0 to 7 */
  uint8_t reserved6[4];
  ManagementAddress managementAddress[SHM_MANAGEMENT_ADDRESSES]; /* in the order of adding; MANAGEMENT_ADDR */
  uint8_t reserved8[4];
  RouteTable routes; /* IPv4 */
  uint8_t reserved11[4];
  Route6Table routes6;      /* IPv6 */
  FilterTable filterTable;  /* traffic policy */
  QosRow qos[SHM_QOS_ROWS]; /* 0 WAN total, 1 to 8 WAN classes, 9 LAN */
  EventLog eventLog;        /* also the image in the event log's file */
  uint8_t reserved17[4];
  uint8_t notificationStatus; /* bits 0 to 2: notifications 1 to 3 set */
  uint8_t reserved19[3];
  StatisticsBlock statistics;           /* of the engine */
  int32_t taskPids[SHM_TASKS];          /* process ids by SHM_TASK_* */
  SessionEngineStats sessionEngine;     /* of the session engine */
  uint8_t lanHardwareAddress[6];        /* of SHM_IF_BASE, read at start-up */
  uint8_t wanHardwareAddress[6];        /* of SHM_IF_WAN, read at start-up */
  uint8_t managementHardwareAddress[6]; /* of SHM_IF_MANAGEMENT, read at start-up */
  uint8_t reserved26[2];
  uint32_t sourceComponent;     /* SHM_SOURCE_*, the front end that acts */
  char eventSourceUsername[32]; /* terminated name of the user who acts */
  uint32_t loginFrom;           /* SHM_LOGIN_*; other numbers: unknown */
  char oldAdminUsername[31];    /* terminated, the first account to be made; ADMIN_USERNAME */
  char oldAdminPassword[31];    /* terminated, its password; ADMIN_PASSWORD */
  uint8_t reserved30b[6];
  uint32_t pendingChanges;      /* SHM_CHANGE_*, not yet fetched by the engine */
  uint8_t reserved32[56];       /* the first eight name a change of a table in progress (segment.h), else zero */
  char ddupStartupOptions[256]; /* text for the engine, no terminator when 256 characters long; DDUP_OPTIONS */
} ShmData;

#pragma pack(pop)

#endif
