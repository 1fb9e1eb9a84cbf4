/* SPDX-License-Identifier: Apache-2.0 */
/* Names of the values that the store, its operations and its files use.

   The texts in quotes are those that the library prints or writes for a value. Error codes are in errors.h, operational
   states and switches in layout.h. */
#ifndef KESTROVE_CODES_H
#define KESTROVE_CODES_H

/* Items of getKestroveConfigItem and setKestroveConfigItem, by the field that each names. doc/items.md tells what
 * they accept and do. */
enum {
  SHM_ITEM_LAN_LINK_RATE = 1,           /* lanLinkRate, bit/s */
  SHM_ITEM_WAN_LINK_RATE = 2,           /* wanLinkRate, bit/s */
  SHM_ITEM_WAN_DEFAULT_RTT = 3,         /* wanIpDefaultRtt */
  SHM_ITEM_WAN_MTU = 4,                 /* wanMaximumTransferUnit, bytes */
  SHM_ITEM_LAN_MTU = 5,                 /* lanMaximumTransferUnit, bytes */
  SHM_ITEM_LAN_LINK_SETTING = 6,        /* lanLinkSetting, SHM_LINK_* */
  SHM_ITEM_WAN_LINK_SETTING = 7,        /* wanLinkSetting, SHM_LINK_* */
  SHM_ITEM_MANAGEMENT_LINK_SETTING = 8, /* managementLinkSetting, SHM_LINK_* */
  SHM_ITEM_COMPRESSION = 9,             /* compression, switch */
  SHM_ITEM_BRIDGING = 10,               /* transparentBridgeOperState, switch */
  SHM_ITEM_SNMP = 11,                   /* snmpOperState, switch */
  SHM_ITEM_SNMP_VERSION = 12,           /* snmpVersion, 1 to 3 */
  SHM_ITEM_WEB = 13,                    /* httpOperState, switch */
  SHM_ITEM_CLI = 14,                    /* cliOperState, switch */
  SHM_ITEM_ENGINE = 15,                 /* kestroveOperState, switch */
  SHM_ITEM_SPARE_FLAG = 16,             /* spareFlag, a byte */
  SHM_ITEM_SSH = 17,                    /* sshdOperState, switch */
  SHM_ITEM_BANNER = 18,                 /* bannerOperState, switch */
  SHM_ITEM_SINGLE_INTERFACE = 19,       /* singleInterfaceMode, switch */
  SHM_ITEM_POLICY_ROUTING = 20,         /* pbrOperState, switch */
  SHM_ITEM_LAN_PBR_ROUTE_SET = 25,      /* lanPbrRouteSet */
  SHM_ITEM_WAN_PBR_ROUTE_SET = 26,      /* wanPbrRouteSet */
  SHM_ITEM_WAN_CONGESTION = 35,         /* wanCongestionControl, SHM_CONGESTION_* */
  SHM_ITEM_LOGGING = 36,                /* loggingOperState, switch */
  SHM_ITEM_FILE_BUFFERING = 37,         /* fileBuffering, switch */
  SHM_ITEM_VALUE_38 = 38,               /* item38Value */
  SHM_ITEM_RELAY_AVAILABLE = 39,        /* failToWireAvailable, switch */
  SHM_ITEM_RELAY_STATUS = 40,           /* failToWireStatus, bits */
  SHM_ITEM_RELAY_SETTING = 41,          /* failToWireConfig, 1 bypass, 2 normal */
  SHM_ITEM_OPERATING_MODE = 43,         /* opModeState, SHM_MODE_* */
  SHM_ITEM_PLATFORM = 44,               /* hardwarePlatform, 0 to 15 */
  SHM_ITEM_IPV6_SUPPORT = 47,           /* ipv6Support, switch */
  SHM_ITEM_WAN_OPT_SUPPORT = 48,        /* wanOptSupport, switch; 0 but on platform 14 */
  SHM_ITEM_MIN_RATE = 52,               /* minRate, bit/s */
  SHM_ITEM_MIN_MTU = 53,                /* minMtu, bytes */
  SHM_ITEM_SESSION_TIMEOUT = 54,        /* httpSessionTimeout */
  SHM_ITEM_FLAG_55 = 55,                /* flags[0], 0 or 1 */
  SHM_ITEM_FLAG_56 = 56,                /* flags[1], 0 or 1 */
  SHM_ITEM_FLAG_57 = 57,                /* flags[2], 0 or 1 */
  SHM_ITEM_FLAG_58 = 58                 /* flags[3], 0 or 1 */
};

/* Addresses of getNetworkConfigItem and setNetworkConfigItem, in network byte order. The last two pairs are synonyms.
 */
enum {
  SHM_NET_MANAGEMENT_ADDRESS = 1,      /* managementAddress */
  SHM_NET_MANAGEMENT_MASK = 2,         /* managementAddressMask */
  SHM_NET_MANAGEMENT_BROADCAST = 3,    /* managementBroadcastAddress */
  SHM_NET_LAN_ADDRESS = 4,             /* lanIpAddress */
  SHM_NET_LAN_MASK = 5,                /* lanIpAddressMask */
  SHM_NET_LAN_BROADCAST = 6,           /* lanBroadcastAddress */
  SHM_NET_WAN_ADDRESS = 7,             /* wanIpAddress */
  SHM_NET_WAN_MASK = 8,                /* wanIpAddressMask */
  SHM_NET_WAN_BROADCAST = 9,           /* wanBroadcastAddress */
  SHM_NET_MANAGEMENT_MASK_2 = 12,      /* managementAddressMask, as 2 */
  SHM_NET_MANAGEMENT_BROADCAST_2 = 13, /* managementBroadcastAddress, as 3 */
  SHM_NET_LAN_GATEWAY = 14,            /* lanGateway */
  SHM_NET_WAN_GATEWAY = 15             /* wanGateway */
};

/* Texts of getShmString and setShmString. */
enum {
  SHM_TEXT_SYS_NAME = 1,        /* sysName */
  SHM_TEXT_SYS_LOCATION = 2,    /* sysLocation */
  SHM_TEXT_SYS_CONTACT = 3,     /* sysContact */
  SHM_TEXT_SYS_DESCRIPTION = 4, /* sysDescription, not settable */
  SHM_TEXT_WEB_SESSION = 8      /* httpEncryptedId */
};

/* Interface numbers, the kinds of management addresses among them. */
enum {
  SHM_IF_LAN = 0,        /* LAN */
  SHM_IF_WAN = 1,        /* WAN */
  SHM_IF_MANAGEMENT = 3, /* management port */
  SHM_IF_BRIDGE = 4,     /* the bridge, "br0" */
  SHM_IF_BASE = 5        /* bridge/router port, the base of the VLANs */
};

/* Products, productId. getProductName gives the names. */
enum {
  SHM_PRODUCT_UNKNOWN = 0,   /* "Unknown Product" */
  SHM_PRODUCT_DRELM = 5,     /* has its own least rate and MTU, and the short version of the protocol engine */
  SHM_PRODUCT_UNBRIDGED = 9, /* its two ports are not bridged in dual mode; restarted on changes other than rates */
  SHM_PRODUCT_ZEL = 11       /* writes its engine's process id to a file */
};

/* Sources of events: the front end behind a change. A source is a position in the table of names. */
enum {
  SHM_SOURCE_SYSTEM = 0,  /* "System" */
  SHM_SOURCE_ENGINE = 1,  /* "Kestrove" */
  SHM_SOURCE_HTTP = 2,    /* "HTTP" */
  SHM_SOURCE_SERIAL = 3,  /* "Serial" */
  SHM_SOURCE_SSH = 4,     /* "SSH" */
  SHM_SOURCE_SNMP_V1 = 5, /* "SNMP v1" */
  SHM_SOURCE_SNMP_V2 = 6, /* "SNMP v2" */
  SHM_SOURCE_SNMP_V3 = 7, /* "SNMP v3" */
  SHM_SOURCE_UNKNOWN = 8  /* "unknown" */
};

/* Events of the catalogue, with their descriptions. */
enum {
  SHM_EVENT_UNKNOWN = 0,                        /* "Unknown event" */
  SHM_EVENT_SYSTEM_STOPPED = 1,                 /* "System Stopped" */
  SHM_EVENT_SYSTEM_STARTED = 2,                 /* "System Started" */
  SHM_EVENT_SYSTEM_REBOOTED = 3,                /* "System Rebooted" */
  SHM_EVENT_SYSTEM_UPDATED = 4,                 /* "System Updated" */
  SHM_EVENT_UPDATE_FAILED = 5,                  /* "System Update Failed" */
  SHM_EVENT_DOWNLOAD_FAILED = 6,                /* "System File Download Failed" */
  SHM_EVENT_SIMPLE_ATTACH_ON = 7,               /* "simpleAttach On" */
  SHM_EVENT_SIMPLE_ATTACH_OFF = 8,              /* "simpleAttach Off" */
  SHM_EVENT_COMPRESSION_ON = 9,                 /* "System Compression On" */
  SHM_EVENT_COMPRESSION_OFF = 10,               /* "System Compression Off" */
  SHM_EVENT_SNMP_ENABLED = 11,                  /* "SNMP management enabled" */
  SHM_EVENT_SNMP_DISABLED = 12,                 /* "SNMP management disabled" */
  SHM_EVENT_TIME_SET = 13,                      /* "System time set" */
  SHM_EVENT_COMPRESSION_RATIO_CLEARED = 14,     /* "System Compression Ratio Cleared" */
  SHM_EVENT_OPTIMIZATION_STATS_CLEARED = 15,    /* "Optimization Stats Cleared" */
  SHM_EVENT_SYSTEM_STATS_CLEARED = 16,          /* "System Stats Cleared" */
  SHM_EVENT_EVENT_LOG_CLEARED = 17,             /* "System Event Log Cleared" */
  SHM_EVENT_WEB_ENABLED = 18,                   /* "Web interface enabled" */
  SHM_EVENT_WEB_DISABLED = 19,                  /* "Web interface disabled" */
  SHM_EVENT_GATEWAY_STARTED = 20,               /* "Gateway Started" */
  SHM_EVENT_WEB_LOGIN = 21,                     /* "Web interface login" */
  SHM_EVENT_WEB_LOGIN_FAILED = 22,              /* "Web interface login failed" */
  SHM_EVENT_WEB_SERVER_STARTED = 23,            /* "Web server started" */
  SHM_EVENT_CLI_LOGIN = 24,                     /* "CLI Login" */
  SHM_EVENT_CLI_LOGIN_FAILED = 25,              /* "CLI Login failed" */
  SHM_EVENT_SNMP_BAD_READ_COMMUNITY = 26,       /* "SNMP Unauthorized Read Community" */
  SHM_EVENT_SNMP_BAD_WRITE_COMMUNITY = 27,      /* "SNMP Unauthorized Write Community" */
  SHM_EVENT_SNMP_AGENT_STARTED = 28,            /* "SNMP agent started" */
  SHM_EVENT_OLD_EVENT_LOG_CLEARED = 29,         /* "Event log cleared" */
  SHM_EVENT_OLD_STATS_CLEARED = 30,             /* "Stats cleared" */
  SHM_EVENT_OLD_COMPRESSION_RATIO_CLEARED = 31, /* "Compression ratio cleared" */
  SHM_EVENT_INITIALIZATION_FAILED = 32,         /* "System Initialization failed" */
  SHM_EVENT_SERIAL_PORT_FAILED = 33,            /* "Initialization of serial port failed" */
  SHM_EVENT_MONITOR_RESTARTED = 34,             /* "The task monitor has restarted" */
  SHM_EVENT_MISC_MONITOR_STARTED = 35,          /* "The task miscMonitor has started" */
  SHM_EVENT_SSH_DAEMON_STARTED = 36,            /* "SSH daemon started" */
  SHM_EVENT_SSH_DAEMON_ENABLED = 37,            /* "SSH daemon enabled" */
  SHM_EVENT_SSH_DAEMON_DISABLED = 38,           /* "SSH daemon disabled" */
  SHM_EVENT_STATE_SAVED = 39,                   /* "System State Saved" */
  SHM_EVENT_STATE_RESTORED = 40,                /* "System Restored to Saved State" */
  SHM_EVENT_WEB_CACHE_ENABLED = 41,             /* "Web cache daemon enabled" */
  SHM_EVENT_WEB_CACHE_DISABLED = 42,            /* "Web cache daemon disabled" */
  SHM_EVENT_WEB_CACHE_CLEARED = 43,             /* "Web cache cleared" */
  SHM_EVENT_CIFS_ENABLED = 44,                  /* "CIFS daemon enabled" */
  SHM_EVENT_CIFS_DISABLED = 45,                 /* "CIFS daemon disabled" */
  SHM_EVENT_DRE_ENABLED = 46,                   /* "DRE daemon enabled" */
  SHM_EVENT_DRE_DISABLED = 47,                  /* "DRE daemon disabled" */
  SHM_EVENT_DRE_CACHE_CLEARED = 48              /* "DRE cache cleared" */
};

/* Operating modes, opModeState, with their names in oprmode_str. */
enum {
  SHM_MODE_DUAL = 0,          /* two interfaces bridged, "OPMODE_DUAL_IF" */
  SHM_MODE_SINGLE = 1,        /* two VLANs of one interface bridged, "OPMODE_SINGLIF_ONLY" */
  SHM_MODE_POLICY_ROUTING = 2 /* two VLANs of one interface routed, "OPMODE_SINGLIF_PBR" */
};

/* Application modes, opModeSubState, with their names in l7mode_str. */
enum {
  SHM_APPLICATION_NONE = 0,  /* "L7MODE_NONE" */
  SHM_APPLICATION_DOMO = 1,  /* "L7MODE_DOMO_ONLY" */
  SHM_APPLICATION_SQUID = 2, /* "L7MODE_SQUID_ONLY" */
  SHM_APPLICATION_BOTH = 3   /* "L7MODE_SQUID_DOMO" */
};

/* Events of the operating modes, with their names in event_str, where index 0 is event 1. */
enum {
  SHM_MODE_EVENT_POWERED_ON = 1,          /* "EVENT_POWERED_ON" */
  SHM_MODE_EVENT_SINGLE_ON = 2,           /* "EVENT_SINGLIF_INTERFACE_ON" */
  SHM_MODE_EVENT_SINGLE_OFF = 3,          /* "EVENT_SINGLIF_INTERFACE_OFF" */
  SHM_MODE_EVENT_PBR_ON = 4,              /* "EVENT_PBR_ON" */
  SHM_MODE_EVENT_PBR_OFF = 5,             /* "EVENT_PBR_OFF" */
  SHM_MODE_EVENT_VLAN_CHANGE = 6,         /* "EVENT_VLANID_CHANGE" */
  SHM_MODE_EVENT_SQUID_ON = 7,            /* "EVENT_SQUID_ON" */
  SHM_MODE_EVENT_SQUID_OFF = 8,           /* "EVENT_SQUID_OFF" */
  SHM_MODE_EVENT_DOMO_ON = 9,             /* "EVENT_DOMO_ON" */
  SHM_MODE_EVENT_DOMO_OFF = 10,           /* "EVENT_DOMO_OFF" */
  SHM_MODE_EVENT_OUTBAND_MANAGEMENT = 11, /* "EVENT_OUTBAND_MGT_IP_CHANGE" */
  SHM_MODE_EVENT_INBAND_MANAGEMENT = 12,  /* "EVENT_INBAND_MGT_IP_CHANGE" */
  SHM_MODE_EVENT_WAN_ADDRESS = 13,        /* "EVENT_WAN_IP_CHANGE" */
  SHM_MODE_EVENT_LAN_ADDRESS = 14,        /* "EVENT_LAN_IP_CHANGE" */
  SHM_MODE_EVENT_WAN_GATEWAY = 15,        /* "EVENT_WAN_GATEWAY_CHANGE" */
  SHM_MODE_EVENT_LAN_GATEWAY = 16,        /* "EVENT_LAN_GATEWAY_CHANGE" */
  SHM_MODE_EVENT_WAN_MASK = 17,           /* "EVENT_WAN_NETMASK_CHANGE" */
  SHM_MODE_EVENT_LAN_MASK = 18,           /* "EVENT_LAN_NETMASK_CHANGE" */
  SHM_MODE_EVENT_DNS = 19                 /* the name server changed; no mode handles it */
};

/* Bits of pendingChanges. */
enum {
  SHM_CHANGE_LAN_RATE = 1 << 0,    /* lanLinkRate */
  SHM_CHANGE_WAN_RATE = 1 << 1,    /* wanLinkRate */
  SHM_CHANGE_LAN_MTU = 1 << 2,     /* lanMaximumTransferUnit */
  SHM_CHANGE_WAN_MTU = 1 << 3,     /* wanMaximumTransferUnit */
  SHM_CHANGE_COMPRESSION = 1 << 5, /* compression */
  SHM_CHANGE_CONGESTION = 1 << 6,  /* wanCongestionControl */
  SHM_CHANGE_INTERFACE = 1 << 6,   /* an address given as text; the same bit */
  SHM_CHANGE_RULES = 1 << 7,       /* the rule table */
  SHM_CHANGE_ITEM_38 = 1 << 10,    /* item38Value */
  SHM_CHANGE_MANAGEMENT = 1 << 13, /* managementAddress, while policy routing is on */
  SHM_CHANGE_MODE = 1 << 14        /* the operating mode */
};

/* Task slots, indexes of taskPids. */
enum {
  SHM_TASK_SNMPD = 0,        /* "snmpd" */
  SHM_TASK_HTTPD = 1,        /* "httpd" */
  SHM_TASK_STATSD = 2,       /* "statsd" */
  SHM_TASK_SSHD = 3,         /* "sshd" */
  SHM_TASK_ENGINE = 4,       /* "kestrove" */
  SHM_TASK_MISC_MONITOR = 5, /* "miscMonitor" */
  SHM_TASK_MONITOR = 6       /* "monitor" */
};

/* Status of a route. */
enum {
  SHM_ROUTE_INACTIVE = 1, /* not installed: its gateway is not local, or the kernel refused it */
  SHM_ROUTE_DISABLED = 2, /* by the user */
  SHM_ROUTE_ACTIVE = 3    /* in the kernel */
};

/* Status of a management address. */
enum {
  SHM_ADDRESS_APPLIED = 1, /* on its interface */
  SHM_ADDRESS_KEPT = 2     /* not on its interface: the mode does not use it, or the kernel refused it */
};

/* Address families, ipVersion. */
enum {
  SHM_FAMILY_ANY = 1,  /* a rule for every family */
  SHM_FAMILY_IPV4 = 4, /* IPv4 */
  SHM_FAMILY_IPV6 = 6  /* IPv6 */
};

/* Targets of a rule; a positive one accelerates. */
enum {
  SHM_TARGET_BRIDGE = -1,   /* "BRIDGE" */
  SHM_TARGET_DROP = 0,      /* "DROP" */
  SHM_TARGET_ACCELERATE = 1 /* "NONE" in the configuration file */
};

/* Status of a rule, ruleAction. */
enum {
  SHM_RULE_UNDEFINED = 0, /* "* Undefined *" */
  SHM_RULE_INVALID = 1,   /* "Invalid" */
  SHM_RULE_NIS = 2,       /* "NIS" */
  SHM_RULE_ACTIVE = 3     /* "Active" */
};

/* Protocols of a rule; any other number is an IP protocol, too. */
enum {
  SHM_PROTO_ANY = 0, /* every protocol */
  SHM_PROTO_TCP = 6, /* TCP */
  SHM_PROTO_UDP = 17 /* UDP, never accelerated */
};

/* Congestion control. */
enum {
  SHM_CONGESTION_UNCONFIGURED = 0,    /* "Unconfigured" */
  SHM_CONGESTION_GLOBAL = 1,          /* "Global" */
  SHM_CONGESTION_PER_CONNECTION = 2,  /* "Per-Connection" */
  SHM_CONGESTION_TCP = 3,             /* "TCP" */
  SHM_CONGESTION_ERROR_TOLERANCE = 4, /* "Error Tolerance" */
  SHM_CONGESTION_NONE = 5             /* "None" */
};

/* Link settings. */
enum {
  SHM_LINK_AUTO = 1,       /* "auto" */
  SHM_LINK_10_HALF = 20,   /* "10baseT" */
  SHM_LINK_10_FULL = 40,   /* "10baseT-FD" */
  SHM_LINK_100_HALF = 80,  /* "100baseTx" */
  SHM_LINK_100_FULL = 100, /* "100baseTx-FD" */
  SHM_LINK_120 = 120,      /* passed to the tool as it is */
  SHM_LINK_1000_FULL = 140 /* "1000baseTx-FD" */
};

/* How a user logged in, loginFrom. */
enum {
  SHM_LOGIN_SERIAL = 3, /* "serial port" */
  SHM_LOGIN_SSH = 4     /* "ssh" */
};

#endif
