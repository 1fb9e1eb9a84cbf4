# SPDX-License-Identifier: Apache-2.0
# Made by scripts/python-binding from the dump of the binary interface and the headers. Not edited by hand.
"""The names of the values, as the headers have them."""
from typing import Final

SHM_ITEM_LAN_LINK_RATE: Final = 1  # lanLinkRate, bit/s
SHM_ITEM_WAN_LINK_RATE: Final = 2  # wanLinkRate, bit/s
SHM_ITEM_WAN_DEFAULT_RTT: Final = 3  # wanIpDefaultRtt
SHM_ITEM_WAN_MTU: Final = 4  # wanMaximumTransferUnit, bytes
SHM_ITEM_LAN_MTU: Final = 5  # lanMaximumTransferUnit, bytes
SHM_ITEM_LAN_LINK_SETTING: Final = 6  # lanLinkSetting, SHM_LINK_*
SHM_ITEM_WAN_LINK_SETTING: Final = 7  # wanLinkSetting, SHM_LINK_*
SHM_ITEM_MANAGEMENT_LINK_SETTING: Final = 8  # managementLinkSetting, SHM_LINK_*
SHM_ITEM_COMPRESSION: Final = 9  # compression, switch
SHM_ITEM_BRIDGING: Final = 10  # transparentBridgeOperState, switch
SHM_ITEM_SNMP: Final = 11  # snmpOperState, switch
SHM_ITEM_SNMP_VERSION: Final = 12  # snmpVersion, 1 to 3
SHM_ITEM_WEB: Final = 13  # httpOperState, switch
SHM_ITEM_CLI: Final = 14  # cliOperState, switch
SHM_ITEM_ENGINE: Final = 15  # kestroveOperState, switch
SHM_ITEM_SPARE_FLAG: Final = 16  # spareFlag, a byte
SHM_ITEM_SSH: Final = 17  # sshdOperState, switch
SHM_ITEM_BANNER: Final = 18  # bannerOperState, switch
SHM_ITEM_SINGLE_INTERFACE: Final = 19  # singleInterfaceMode, switch
SHM_ITEM_POLICY_ROUTING: Final = 20  # pbrOperState, switch
SHM_ITEM_LAN_PBR_ROUTE_SET: Final = 25  # lanPbrRouteSet
SHM_ITEM_WAN_PBR_ROUTE_SET: Final = 26  # wanPbrRouteSet
SHM_ITEM_WAN_CONGESTION: Final = 35  # wanCongestionControl, SHM_CONGESTION_*
SHM_ITEM_LOGGING: Final = 36  # loggingOperState, switch
SHM_ITEM_FILE_BUFFERING: Final = 37  # fileBuffering, switch
SHM_ITEM_VALUE_38: Final = 38  # item38Value
SHM_ITEM_RELAY_AVAILABLE: Final = 39  # failToWireAvailable, switch
SHM_ITEM_RELAY_STATUS: Final = 40  # failToWireStatus, bits
SHM_ITEM_RELAY_SETTING: Final = 41  # failToWireConfig, 1 bypass, 2 normal
SHM_ITEM_OPERATING_MODE: Final = 43  # opModeState, SHM_MODE_*
SHM_ITEM_PLATFORM: Final = 44  # hardwarePlatform, 0 to 15
SHM_ITEM_IPV6_SUPPORT: Final = 47  # ipv6Support, switch
SHM_ITEM_WAN_OPT_SUPPORT: Final = 48  # wanOptSupport, switch; 0 but on platform 14
SHM_ITEM_MIN_RATE: Final = 52  # minRate, bit/s
SHM_ITEM_MIN_MTU: Final = 53  # minMtu, bytes
SHM_ITEM_SESSION_TIMEOUT: Final = 54  # httpSessionTimeout
SHM_ITEM_FLAG_55: Final = 55  # flags[0], 0 or 1
SHM_ITEM_FLAG_56: Final = 56  # flags[1], 0 or 1
SHM_ITEM_FLAG_57: Final = 57  # flags[2], 0 or 1
SHM_ITEM_FLAG_58: Final = 58  # flags[3], 0 or 1
SHM_NET_MANAGEMENT_ADDRESS: Final = 1  # managementAddress
SHM_NET_MANAGEMENT_MASK: Final = 2  # managementAddressMask
SHM_NET_MANAGEMENT_BROADCAST: Final = 3  # managementBroadcastAddress
SHM_NET_LAN_ADDRESS: Final = 4  # lanIpAddress
SHM_NET_LAN_MASK: Final = 5  # lanIpAddressMask
SHM_NET_LAN_BROADCAST: Final = 6  # lanBroadcastAddress
SHM_NET_WAN_ADDRESS: Final = 7  # wanIpAddress
SHM_NET_WAN_MASK: Final = 8  # wanIpAddressMask
SHM_NET_WAN_BROADCAST: Final = 9  # wanBroadcastAddress
SHM_NET_MANAGEMENT_MASK_2: Final = 12  # managementAddressMask, as 2
SHM_NET_MANAGEMENT_BROADCAST_2: Final = 13  # managementBroadcastAddress, as 3
SHM_NET_LAN_GATEWAY: Final = 14  # lanGateway
SHM_NET_WAN_GATEWAY: Final = 15  # wanGateway
SHM_TEXT_SYS_NAME: Final = 1  # sysName
SHM_TEXT_SYS_LOCATION: Final = 2  # sysLocation
SHM_TEXT_SYS_CONTACT: Final = 3  # sysContact
SHM_TEXT_SYS_DESCRIPTION: Final = 4  # sysDescription, not settable
SHM_TEXT_WEB_SESSION: Final = 8  # httpEncryptedId
SHM_IF_LAN: Final = 0  # LAN
SHM_IF_WAN: Final = 1  # WAN
SHM_IF_MANAGEMENT: Final = 3  # management port
SHM_IF_BRIDGE: Final = 4  # the bridge, "br0"
SHM_IF_BASE: Final = 5  # bridge/router port, the base of the VLANs
SHM_PRODUCT_UNKNOWN: Final = 0  # "Unknown Product"
SHM_PRODUCT_DRELM: Final = 5  # has its own least rate and MTU, and the short version of the protocol engine
SHM_PRODUCT_UNBRIDGED: Final = 9  # its two ports are not bridged in dual mode; restarted on changes other than rates
SHM_PRODUCT_ZEL: Final = 11  # writes its engine's process id to a file
SHM_SOURCE_SYSTEM: Final = 0  # "System"
SHM_SOURCE_ENGINE: Final = 1  # "Kestrove"
SHM_SOURCE_HTTP: Final = 2  # "HTTP"
SHM_SOURCE_SERIAL: Final = 3  # "Serial"
SHM_SOURCE_SSH: Final = 4  # "SSH"
SHM_SOURCE_SNMP_V1: Final = 5  # "SNMP v1"
SHM_SOURCE_SNMP_V2: Final = 6  # "SNMP v2"
SHM_SOURCE_SNMP_V3: Final = 7  # "SNMP v3"
SHM_SOURCE_UNKNOWN: Final = 8  # "unknown"
SHM_EVENT_UNKNOWN: Final = 0  # "Unknown event"
SHM_EVENT_SYSTEM_STOPPED: Final = 1  # "System Stopped"
SHM_EVENT_SYSTEM_STARTED: Final = 2  # "System Started"
SHM_EVENT_SYSTEM_REBOOTED: Final = 3  # "System Rebooted"
SHM_EVENT_SYSTEM_UPDATED: Final = 4  # "System Updated"
SHM_EVENT_UPDATE_FAILED: Final = 5  # "System Update Failed"
SHM_EVENT_DOWNLOAD_FAILED: Final = 6  # "System File Download Failed"
SHM_EVENT_SIMPLE_ATTACH_ON: Final = 7  # "simpleAttach On"
SHM_EVENT_SIMPLE_ATTACH_OFF: Final = 8  # "simpleAttach Off"
SHM_EVENT_COMPRESSION_ON: Final = 9  # "System Compression On"
SHM_EVENT_COMPRESSION_OFF: Final = 10  # "System Compression Off"
SHM_EVENT_SNMP_ENABLED: Final = 11  # "SNMP management enabled"
SHM_EVENT_SNMP_DISABLED: Final = 12  # "SNMP management disabled"
SHM_EVENT_TIME_SET: Final = 13  # "System time set"
SHM_EVENT_COMPRESSION_RATIO_CLEARED: Final = 14  # "System Compression Ratio Cleared"
SHM_EVENT_OPTIMIZATION_STATS_CLEARED: Final = 15  # "Optimization Stats Cleared"
SHM_EVENT_SYSTEM_STATS_CLEARED: Final = 16  # "System Stats Cleared"
SHM_EVENT_EVENT_LOG_CLEARED: Final = 17  # "System Event Log Cleared"
SHM_EVENT_WEB_ENABLED: Final = 18  # "Web interface enabled"
SHM_EVENT_WEB_DISABLED: Final = 19  # "Web interface disabled"
SHM_EVENT_GATEWAY_STARTED: Final = 20  # "Gateway Started"
SHM_EVENT_WEB_LOGIN: Final = 21  # "Web interface login"
SHM_EVENT_WEB_LOGIN_FAILED: Final = 22  # "Web interface login failed"
SHM_EVENT_WEB_SERVER_STARTED: Final = 23  # "Web server started"
SHM_EVENT_CLI_LOGIN: Final = 24  # "CLI Login"
SHM_EVENT_CLI_LOGIN_FAILED: Final = 25  # "CLI Login failed"
SHM_EVENT_SNMP_BAD_READ_COMMUNITY: Final = 26  # "SNMP Unauthorized Read Community"
SHM_EVENT_SNMP_BAD_WRITE_COMMUNITY: Final = 27  # "SNMP Unauthorized Write Community"
SHM_EVENT_SNMP_AGENT_STARTED: Final = 28  # "SNMP agent started"
SHM_EVENT_OLD_EVENT_LOG_CLEARED: Final = 29  # "Event log cleared"
SHM_EVENT_OLD_STATS_CLEARED: Final = 30  # "Stats cleared"
SHM_EVENT_OLD_COMPRESSION_RATIO_CLEARED: Final = 31  # "Compression ratio cleared"
SHM_EVENT_INITIALIZATION_FAILED: Final = 32  # "System Initialization failed"
SHM_EVENT_SERIAL_PORT_FAILED: Final = 33  # "Initialization of serial port failed"
SHM_EVENT_MONITOR_RESTARTED: Final = 34  # "The task monitor has restarted"
SHM_EVENT_MISC_MONITOR_STARTED: Final = 35  # "The task miscMonitor has started"
SHM_EVENT_SSH_DAEMON_STARTED: Final = 36  # "SSH daemon started"
SHM_EVENT_SSH_DAEMON_ENABLED: Final = 37  # "SSH daemon enabled"
SHM_EVENT_SSH_DAEMON_DISABLED: Final = 38  # "SSH daemon disabled"
SHM_EVENT_STATE_SAVED: Final = 39  # "System State Saved"
SHM_EVENT_STATE_RESTORED: Final = 40  # "System Restored to Saved State"
SHM_EVENT_WEB_CACHE_ENABLED: Final = 41  # "Web cache daemon enabled"
SHM_EVENT_WEB_CACHE_DISABLED: Final = 42  # "Web cache daemon disabled"
SHM_EVENT_WEB_CACHE_CLEARED: Final = 43  # "Web cache cleared"
SHM_EVENT_CIFS_ENABLED: Final = 44  # "CIFS daemon enabled"
SHM_EVENT_CIFS_DISABLED: Final = 45  # "CIFS daemon disabled"
SHM_EVENT_DRE_ENABLED: Final = 46  # "DRE daemon enabled"
SHM_EVENT_DRE_DISABLED: Final = 47  # "DRE daemon disabled"
SHM_EVENT_DRE_CACHE_CLEARED: Final = 48  # "DRE cache cleared"
SHM_MODE_DUAL: Final = 0  # two interfaces bridged, "OPMODE_DUAL_IF"
SHM_MODE_SINGLE: Final = 1  # two VLANs of one interface bridged, "OPMODE_SINGLIF_ONLY"
SHM_MODE_POLICY_ROUTING: Final = 2  # two VLANs of one interface routed, "OPMODE_SINGLIF_PBR"
SHM_APPLICATION_NONE: Final = 0  # "L7MODE_NONE"
SHM_APPLICATION_DOMO: Final = 1  # "L7MODE_DOMO_ONLY"
SHM_APPLICATION_SQUID: Final = 2  # "L7MODE_SQUID_ONLY"
SHM_APPLICATION_BOTH: Final = 3  # "L7MODE_SQUID_DOMO"
SHM_MODE_EVENT_POWERED_ON: Final = 1  # "EVENT_POWERED_ON"
SHM_MODE_EVENT_SINGLE_ON: Final = 2  # "EVENT_SINGLIF_INTERFACE_ON"
SHM_MODE_EVENT_SINGLE_OFF: Final = 3  # "EVENT_SINGLIF_INTERFACE_OFF"
SHM_MODE_EVENT_PBR_ON: Final = 4  # "EVENT_PBR_ON"
SHM_MODE_EVENT_PBR_OFF: Final = 5  # "EVENT_PBR_OFF"
SHM_MODE_EVENT_VLAN_CHANGE: Final = 6  # "EVENT_VLANID_CHANGE"
SHM_MODE_EVENT_SQUID_ON: Final = 7  # "EVENT_SQUID_ON"
SHM_MODE_EVENT_SQUID_OFF: Final = 8  # "EVENT_SQUID_OFF"
SHM_MODE_EVENT_DOMO_ON: Final = 9  # "EVENT_DOMO_ON"
SHM_MODE_EVENT_DOMO_OFF: Final = 10  # "EVENT_DOMO_OFF"
SHM_MODE_EVENT_OUTBAND_MANAGEMENT: Final = 11  # "EVENT_OUTBAND_MGT_IP_CHANGE"
SHM_MODE_EVENT_INBAND_MANAGEMENT: Final = 12  # "EVENT_INBAND_MGT_IP_CHANGE"
SHM_MODE_EVENT_WAN_ADDRESS: Final = 13  # "EVENT_WAN_IP_CHANGE"
SHM_MODE_EVENT_LAN_ADDRESS: Final = 14  # "EVENT_LAN_IP_CHANGE"
SHM_MODE_EVENT_WAN_GATEWAY: Final = 15  # "EVENT_WAN_GATEWAY_CHANGE"
SHM_MODE_EVENT_LAN_GATEWAY: Final = 16  # "EVENT_LAN_GATEWAY_CHANGE"
SHM_MODE_EVENT_WAN_MASK: Final = 17  # "EVENT_WAN_NETMASK_CHANGE"
SHM_MODE_EVENT_LAN_MASK: Final = 18  # "EVENT_LAN_NETMASK_CHANGE"
SHM_MODE_EVENT_DNS: Final = 19  # the name server changed; no mode handles it
SHM_CHANGE_LAN_RATE: Final = 1  # lanLinkRate
SHM_CHANGE_WAN_RATE: Final = 2  # wanLinkRate
SHM_CHANGE_LAN_MTU: Final = 4  # lanMaximumTransferUnit
SHM_CHANGE_WAN_MTU: Final = 8  # wanMaximumTransferUnit
SHM_CHANGE_COMPRESSION: Final = 32  # compression
SHM_CHANGE_CONGESTION: Final = 64  # wanCongestionControl
SHM_CHANGE_INTERFACE: Final = 64  # an address given as text; the same bit
SHM_CHANGE_RULES: Final = 128  # the rule table
SHM_CHANGE_ITEM_38: Final = 1024  # item38Value
SHM_CHANGE_MANAGEMENT: Final = 8192  # managementAddress, while policy routing is on
SHM_CHANGE_MODE: Final = 16384  # the operating mode
SHM_TASK_SNMPD: Final = 0  # "snmpd"
SHM_TASK_HTTPD: Final = 1  # "httpd"
SHM_TASK_STATSD: Final = 2  # "statsd"
SHM_TASK_SSHD: Final = 3  # "sshd"
SHM_TASK_ENGINE: Final = 4  # "kestrove"
SHM_TASK_MISC_MONITOR: Final = 5  # "miscMonitor"
SHM_TASK_MONITOR: Final = 6  # "monitor"
SHM_ROUTE_INACTIVE: Final = 1  # not installed: its gateway is not local, or the kernel refused it
SHM_ROUTE_DISABLED: Final = 2  # by the user
SHM_ROUTE_ACTIVE: Final = 3  # in the kernel
SHM_ADDRESS_APPLIED: Final = 1  # on its interface
SHM_ADDRESS_KEPT: Final = 2  # not on its interface: the mode does not use it, or the kernel refused it
SHM_FAMILY_ANY: Final = 1  # a rule for every family
SHM_FAMILY_IPV4: Final = 4  # IPv4
SHM_FAMILY_IPV6: Final = 6  # IPv6
SHM_TARGET_BRIDGE: Final = -1  # "BRIDGE"
SHM_TARGET_DROP: Final = 0  # "DROP"
SHM_TARGET_ACCELERATE: Final = 1  # "NONE" in the configuration file
SHM_RULE_UNDEFINED: Final = 0  # "* Undefined *"
SHM_RULE_INVALID: Final = 1  # "Invalid"
SHM_RULE_NIS: Final = 2  # "NIS"
SHM_RULE_ACTIVE: Final = 3  # "Active"
SHM_PROTO_ANY: Final = 0  # every protocol
SHM_PROTO_TCP: Final = 6  # TCP
SHM_PROTO_UDP: Final = 17  # UDP, never accelerated
SHM_CONGESTION_UNCONFIGURED: Final = 0  # "Unconfigured"
SHM_CONGESTION_GLOBAL: Final = 1  # "Global"
SHM_CONGESTION_PER_CONNECTION: Final = 2  # "Per-Connection"
SHM_CONGESTION_TCP: Final = 3  # "TCP"
SHM_CONGESTION_ERROR_TOLERANCE: Final = 4  # "Error Tolerance"
SHM_CONGESTION_NONE: Final = 5  # "None"
SHM_LINK_AUTO: Final = 1  # "auto"
SHM_LINK_10_HALF: Final = 20  # "10baseT"
SHM_LINK_10_FULL: Final = 40  # "10baseT-FD"
SHM_LINK_100_HALF: Final = 80  # "100baseTx"
SHM_LINK_100_FULL: Final = 100  # "100baseTx-FD"
SHM_LINK_120: Final = 120  # passed to the tool as it is
SHM_LINK_1000_FULL: Final = 140  # "1000baseTx-FD"
SHM_LOGIN_SERIAL: Final = 3  # "serial port"
SHM_LOGIN_SSH: Final = 4  # "ssh"
SHM_OK: Final = 0
SHM_EATTACH: Final = 1  # the store cannot be attached
SHM_ESYSTEM: Final = 2  # a system call failed, errno tells more
SHM_EINVAL: Final = 3  # invalid argument
SHM_EREADONLY: Final = 4  # the object cannot be changed
SHM_ELOGOFF: Final = 5  # event logging is switched off
SHM_EFULL: Final = 6  # the table is full
SHM_ENOENT: Final = 7  # the entity does not exist
SHM_EEXIST: Final = 8  # the entity exists already
SHM_EOPEN: Final = 9  # a file cannot be opened
SHM_EIO: Final = 10  # a file cannot be read or written
SHM_EEOF: Final = 11  # read beyond the end of a file
SHM_ERANGE: Final = 12  # the value is out of its range
SHM_EOCTET: Final = 13  # a field of a dotted quad is no octet
SHM_EDOTS: Final = 14  # a dotted quad lacks dots
SHM_EMASK: Final = 15  # no netmask
SHM_EIPV6: Final = 16  # no IPv6 address
SHM_ESTARTS: Final = 17  # the engine failed to start too often
SHM_EREBOOTS: Final = 18  # rebooted too often because of the engine
SHM_ENOUSER: Final = 19  # no such user
SHM_EPASSWORD: Final = 20  # wrong password, or too close to the old one
SHM_EUNKNOWN: Final = 23
SHM_KEY: Final = 6001
SHM_SIZE: Final = 1308576
SHM_IP6_ADDRESSES: Final = 6
SHM_MANAGEMENT_ADDRESSES: Final = 7
SHM_ROUTES: Final = 1024
SHM_ROUTES6: Final = 1024
SHM_RULES: Final = 8192
SHM_EVENTS: Final = 8192
SHM_USERS: Final = 5
SHM_TASKS: Final = 7
SHM_QOS_ROWS: Final = 10
SHM_INTERVAL_WORDS: Final = 180
SHM_STATE_UNINITIALIZED: Final = 0
SHM_STATE_OPERATIONAL: Final = 1
SHM_STATE_DISABLED: Final = 2
SHM_STATE_UNCONFIGURED: Final = 3
SHM_STATE_CONFIGURATION: Final = 4  # changes touch the store alone: no save, event, kernel change or signal
SHM_STATE_DEBUG: Final = 5  # as 1, but items and rules do not signal the engine and routes stay out of the kernel
SHM_ON: Final = 1
SHM_OFF: Final = 2
KESTROVE_CHECK_BYTES: Final = 256  # room for any message of kestrove_check_layout()
SHM_NO_SLOT: Final = 4294967295  # free mark of inUse, end mark of next, head6 of an emptied list

# Code: its name.
ERROR_NAMES: Final = {
    0: "SHM_OK",
    1: "SHM_EATTACH",
    2: "SHM_ESYSTEM",
    3: "SHM_EINVAL",
    4: "SHM_EREADONLY",
    5: "SHM_ELOGOFF",
    6: "SHM_EFULL",
    7: "SHM_ENOENT",
    8: "SHM_EEXIST",
    9: "SHM_EOPEN",
    10: "SHM_EIO",
    11: "SHM_EEOF",
    12: "SHM_ERANGE",
    13: "SHM_EOCTET",
    14: "SHM_EDOTS",
    15: "SHM_EMASK",
    16: "SHM_EIPV6",
    17: "SHM_ESTARTS",
    18: "SHM_EREBOOTS",
    19: "SHM_ENOUSER",
    20: "SHM_EPASSWORD",
    23: "SHM_EUNKNOWN",
}
