# SPDX-License-Identifier: Apache-2.0
# Made by scripts/python-binding from the dump of the binary interface and the headers. Not edited by hand.
"""The binary interface: records, callbacks and prototypes."""
from ctypes import (CFUNCTYPE, POINTER, Structure, c_char, c_char_p, c_int, c_int32, c_long, c_uint8, c_uint32, c_uint64,
                    c_ulong, c_void_p)

LAYOUT_HASH = 0x58a2cb6260745e64
VERSION = "1.1.0"


class EngineLink(Structure):
    _pack_ = 4
    _fields_ = [
        ("interfaceName", c_char * 16), ("sendBufferSize", c_uint32), ("receiveBufferSize", c_uint32),
        ("linkRate", c_uint32), ("congestionMode", c_uint32), ("side", c_uint32), ("mtu", c_uint32),
        ("reserved40", c_uint8 * 20), ("congestionFlagA", c_uint32), ("congestionFlagB", c_uint32),
        ("reserved68", c_uint8 * 40), ("hardwareAddress", c_uint8 * 6), ("reserved114", c_uint8 * 14),
    ]


class EventRecord(Structure):
    _pack_ = 4
    _fields_ = [
        ("timestamp", c_int32), ("eventId", c_uint32), ("source", c_uint32), ("userName", c_char * 32),
    ]


class FilterRule(Structure):
    _pack_ = 4
    _fields_ = [
        ("ipVersion", c_uint32), ("srcAddr", c_uint32), ("srcMask", c_uint32), ("dstAddr", c_uint32),
        ("dstMask", c_uint32), ("srcAddr6", c_uint8 * 16), ("srcPrefixLen6", c_uint32), ("dstAddr6", c_uint8 * 16),
        ("dstPrefixLen6", c_uint32), ("proto", c_uint32), ("srcPort", c_int32), ("srcPortEnd", c_int32),
        ("destPort", c_int32), ("destPortEnd", c_int32), ("target", c_int32), ("order", c_uint32),
        ("priority", c_int32), ("bandwidth", c_int32), ("accel", c_uint32), ("ruleAction", c_uint32),
    ]


class FilterTable(Structure):
    _pack_ = 4
    _fields_ = [
        ("ruleCount", c_int32), ("rule", FilterRule * 8192),
    ]


class InterfaceCounters(Structure):
    _pack_ = 4
    _fields_ = [
        ("bytesSent", c_uint64), ("bytesReceived", c_uint64), ("packetsSent", c_uint64), ("packetsReceived", c_uint64),
        ("dropsSent", c_uint64), ("dropsReceived", c_uint64),
    ]


class Ip6Address(Structure):
    _pack_ = 4
    _fields_ = [
        ("address", c_uint8 * 16), ("prefixLength", c_uint32),
    ]


class ManagementAddress(Structure):
    _pack_ = 4
    _fields_ = [
        ("ipVersion", c_uint32), ("status", c_uint32), ("address", c_uint32), ("mask", c_uint32),
        ("address6", c_uint8 * 16), ("prefixLength6", c_uint32), ("interfaceKind", c_int32),
    ]


class MessageEntry(Structure):
    _fields_ = [
        ("code", c_int32), ("message", c_char_p),
    ]


class MessageTable(Structure):
    _fields_ = [
        ("count", c_int32), ("defaultCode", c_int32), ("entries", POINTER(MessageEntry)),
    ]


class OpModeContext(Structure):
    _pack_ = 4
    _fields_ = [
        ("mode", c_uint32), ("l7Mode", c_uint32), ("l7ModeCopy", c_uint32), ("locked", c_uint32), ("word5", c_uint32),
        ("word6", c_uint32), ("wanVlanId", c_uint32), ("lanVlanId", c_uint32), ("wanVlanIdCopy", c_uint32),
        ("lanVlanIdCopy", c_uint32),
    ]


class QosRow(Structure):
    _pack_ = 4
    _fields_ = [
        ("priority", c_int32), ("bytesSent", c_uint64), ("packetsSent", c_uint64), ("packetsDropped", c_uint64),
        ("currentRate", c_uint32), ("averageRate", c_uint32), ("maximumRate", c_uint32), ("sessions", c_uint32),
    ]


class ReadFilter(Structure):
    _fields_ = [
        ("stream", c_void_p), ("squeeze", c_int32), ("delimiter", c_char), ("lineCount", c_int32),
    ]


class Route6Entry(Structure):
    _pack_ = 4
    _fields_ = [
        ("destination", c_uint8 * 16), ("gateway", c_uint8 * 16), ("prefixLength", c_uint32), ("status", c_uint32),
        ("interfaceName", c_char * 16), ("inUse", c_uint32), ("next", c_uint32),
    ]


class Route6Table(Structure):
    _pack_ = 4
    _fields_ = [
        ("head6", c_uint32), ("slot", Route6Entry * 1024),
    ]


class RouteEntry(Structure):
    _pack_ = 4
    _fields_ = [
        ("destination", c_uint32), ("netmask", c_uint32), ("gateway", c_uint32), ("status", c_uint32),
        ("inUse", c_uint32), ("next", c_uint32),
    ]


class RouteTable(Structure):
    _pack_ = 4
    _fields_ = [
        ("head", c_uint32), ("slot", RouteEntry * 1024),
    ]


class SessionEngineStats(Structure):
    _pack_ = 4
    _fields_ = [
        ("counter", c_uint64 * 8), ("sessions", c_int32), ("resetWord", c_uint32 * 3),
    ]


class StatisticsBlock(Structure):
    _pack_ = 4
    _fields_ = [
        ("accumulationInterval", c_int32), ("accumulatedIntervals", c_uint64), ("reserved1", c_uint8 * 8),
        ("counterLastResetTime", c_uint32), ("intervalRecord", c_uint32 * 180), ("totalUncompressedDataSize", c_uint64),
        ("totalCompressedDataSize", c_uint64), ("filter_total_bytes_in", c_uint64),
        ("filter_total_bytes_out", c_uint64), ("intervalPeak14", c_int32), ("intervalTotals", c_uint64 * 4),
        ("intervalPeak42", c_int32), ("maxTcpSessionInitiationsPerSecond", c_int32),
        ("maxTcpSessionTerminationsPerSecond", c_int32), ("totalTcpSessionRequestsFailed", c_uint64),
        ("totalTcpSessionsTimedOut", c_uint64), ("totalTcpSegmentsBadChecksum", c_uint64),
        ("compressionRatio", c_uint32), ("filter_compression_ratio", c_uint32), ("filterLastValue", c_uint32),
        ("furtherCounters", c_uint8 * 192), ("interfaceRow", InterfaceCounters * 2), ("reserved2", c_uint8 * 4),
    ]


class UserAccount(Structure):
    _pack_ = 4
    _fields_ = [
        ("username", c_char * 32), ("superUser", c_int32), ("lastLoginSeconds", c_int32),
        ("lastLoginMicroseconds", c_int32), ("lastPasswdChange", c_int32),
    ]


class ConfigRecord(Structure):
    _pack_ = 4
    _fields_ = [
        ("kestroveFullVersion", c_char * 64), ("kestroveVersion", c_char * 64), ("drelmFullVersion", c_char * 64),
        ("drelmVersion", c_char * 64), ("unitId", c_char * 256), ("configFileName", c_char * 128),
        ("eventLogFileName", c_char * 128), ("adminUserCount", c_int32), ("userCount", c_int32),
        ("users", UserAccount * 5), ("reserved11", c_uint8 * 4), ("kestroveRestartCount", c_uint32),
        ("kestroveRebootCount", c_uint32), ("gatewayId", c_uint8 * 4), ("idleTimeout", c_uint32),
        ("failToWireStatus", c_uint32), ("failToWireConfig", c_uint32), ("failToWireAvailable", c_uint8),
        ("compression", c_uint8), ("transparentBridgeOperState", c_uint8), ("loggingOperState", c_uint8),
        ("snmpOperState", c_uint8), ("httpOperState", c_uint8), ("cliOperState", c_uint8),
        ("kestroveOperState", c_uint8), ("webCacheOperState", c_uint8), ("cifsOperState", c_uint8),
        ("cifsConfigured", c_uint8), ("spareFlag", c_uint8), ("ddupOperState", c_uint32), ("reserved31", c_uint8 * 8),
        ("lanPbrRouteSet", c_uint32), ("wanPbrRouteSet", c_uint32), ("dnsAddress", c_uint32), ("snmpVersion", c_uint8),
        ("sshdOperState", c_uint8), ("bannerOperState", c_uint8), ("pbrOperState", c_uint8),
        ("singleInterfaceMode", c_uint8), ("reserved40", c_uint8 * 3), ("wanVlanId", c_uint32), ("lanVlanId", c_uint32),
        ("hardwarePlatform", c_uint32), ("productId", c_uint32), ("reserved45", c_uint8 * 16),
        ("ipv6Support", c_uint32), ("wanOptSupport", c_uint8), ("reserved48", c_uint8 * 3), ("zipType", c_uint32),
        ("httpEncryptedId", c_char * 256), ("httpSessionTimeout", c_int32), ("reserved52", c_uint8 * 520),
        ("minRate", c_uint32), ("minMtu", c_uint32), ("lanCongestionControl", c_uint8), ("reserved56", c_uint8 * 3),
        ("lanLinkRate", c_uint32), ("lanSendBufferSize", c_uint32), ("lanReceiveBufferSize", c_uint32),
        ("lanMaximumTransferUnit", c_uint32), ("lanIpAddress", c_uint32), ("lanIpAddressMask", c_uint32),
        ("lanBroadcastAddress", c_uint32), ("lanInterfaceName", c_char * 16), ("lanLinkSetting", c_uint32),
        ("physicalLanInterfaceName", c_char * 16), ("bridgeRouterPhysicalName", c_char * 16),
        ("wanCongestionControl", c_uint8), ("reserved68", c_uint8 * 3), ("wanLinkRate", c_uint32),
        ("wanSendBufferSize", c_uint32), ("wanReceiveBufferSize", c_uint32), ("wanMaximumTransferUnit", c_uint32),
        ("wanIpDefaultRtt", c_uint32), ("wanIpAddress", c_uint32), ("wanIpAddressMask", c_uint32),
        ("wanBroadcastAddress", c_uint32), ("reserved77", c_uint8 * 1), ("managementInterfaceName", c_char * 16),
        ("reserved77b", c_uint8 * 3), ("managementLinkSetting", c_uint32), ("reserved79", c_uint8 * 12),
        ("lanGateway", c_uint32), ("wanGateway", c_uint32), ("wanInterfaceName", c_char * 16),
        ("wanLinkSetting", c_uint32), ("physicalWanInterfaceName", c_char * 16), ("fileBuffering", c_uint32),
        ("flags", c_uint32 * 4), ("item38Value", c_uint32), ("managementAddress", c_uint32),
        ("managementAddressMask", c_uint32), ("managementBroadcastAddress", c_uint32), ("sysName", c_char * 256),
        ("sysLocation", c_char * 256), ("sysContact", c_char * 256), ("sysDescription", c_char * 256),
        ("reserved95", c_uint8 * 256), ("opModeState", c_uint32), ("opModeSubState", c_uint32),
        ("reserved98", c_uint8 * 4),
    ]


class EngineConfiguration(Structure):
    _pack_ = 4
    _fields_ = [
        ("lan", EngineLink), ("wan", EngineLink), ("wanIpDefaultRtt", c_uint32), ("bridging", c_uint32),
        ("ipv6Support", c_uint32), ("item38Value", c_uint32), ("managementAddress", c_uint32),
        ("managementAddressMask", c_uint32), ("gatewayId", c_uint8 * 4), ("compression", c_uint32),
        ("globalCongestion", c_uint32), ("accumulationInterval", c_int32), ("constant8", c_uint32),
        ("ruleCount", c_int32), ("rule", FilterRule * 8192), ("reserved852272", c_uint8 * 4),
        ("singleInterfaceMode", c_uint8), ("reserved852277", c_uint8 * 3), ("ddupOperState", c_uint32),
        ("ddupStartupOptions", c_char * 260),
    ]


class EventLog(Structure):
    _pack_ = 4
    _fields_ = [
        ("eventLogFull", c_uint32), ("readIndex", c_uint32), ("writeIndex", c_uint32), ("record", EventRecord * 8192),
    ]


class ShmData(Structure):
    _pack_ = 4
    _fields_ = [
        ("operationalState", c_uint32), ("config", ConfigRecord), ("ip6Address", Ip6Address * 6), ("ip6Count", c_int32),
        ("managementAddressCount", c_int32), ("reserved6", c_uint8 * 4), ("managementAddress", ManagementAddress * 7),
        ("reserved8", c_uint8 * 4), ("routes", RouteTable), ("reserved11", c_uint8 * 4), ("routes6", Route6Table),
        ("filterTable", FilterTable), ("qos", QosRow * 10), ("eventLog", EventLog), ("reserved17", c_uint8 * 4),
        ("notificationStatus", c_uint8), ("reserved19", c_uint8 * 3), ("statistics", StatisticsBlock),
        ("taskPids", c_int32 * 7), ("sessionEngine", SessionEngineStats), ("lanHardwareAddress", c_uint8 * 6),
        ("wanHardwareAddress", c_uint8 * 6), ("managementHardwareAddress", c_uint8 * 6), ("reserved26", c_uint8 * 2),
        ("sourceComponent", c_uint32), ("eventSourceUsername", c_char * 32), ("loginFrom", c_uint32),
        ("oldAdminUsername", c_char * 31), ("oldAdminPassword", c_char * 31), ("reserved30b", c_uint8 * 6),
        ("pendingChanges", c_uint32), ("reserved32", c_uint8 * 56), ("ddupStartupOptions", c_char * 256),
    ]


ConfigHook = CFUNCTYPE(c_int, c_void_p, c_void_p)
DhcpCallback = CFUNCTYPE(c_int, POINTER(c_uint32), c_char_p)
OpModeHandler = CFUNCTYPE(c_int, c_int, POINTER(OpModeContext))
_FilterRule = POINTER(FilterRule)
_Ip6Address = POINTER(Ip6Address)
_ManagementAddress = POINTER(ManagementAddress)
_MessageTable = POINTER(MessageTable)
_OpModeContext = POINTER(OpModeContext)
_ReadFilter = POINTER(ReadFilter)
_Route6Entry = POINTER(Route6Entry)
_RouteEntry = POINTER(RouteEntry)
_UserAccount = POINTER(UserAccount)
_c_char = POINTER(c_char)
_c_char_p = POINTER(c_char_p)
_c_int32 = POINTER(c_int32)
_c_long = POINTER(c_long)
_c_uint32 = POINTER(c_uint32)
_c_uint8 = POINTER(c_uint8)

# Name: result, parameters.
PROTOTYPES = {
    "GetDefaultGW": (c_int, (_c_char,)),
    "OpModeState": (c_int, (c_int, _OpModeContext)),
    "ReadFilter_init": (None, (_ReadFilter, c_void_p, c_int, c_char)),
    "ReadFilter_readLine": (c_int, (_ReadFilter, _c_char, c_int)),
    "ZELrestore": (c_int, ()),
    "__printIpv6Route": (c_int, (c_void_p, _Route6Entry)),
    "__printRoute": (c_int, (c_void_p, _RouteEntry)),
    "__saveCliState": (c_int, (c_char_p,)),
    "__saveIpv6Routes": (c_int, (c_void_p,)),
    "__saveLink": (c_int, (c_void_p, c_int)),
    "__saveManagement": (c_int, (c_void_p,)),
    "__saveRoutes": (c_int, (c_void_p,)),
    "__saveSARules": (c_int, (c_void_p,)),
    "__saveShmState": (c_int, (c_char_p, c_uint32, c_char_p)),
    "addAddressesToInterfaces": (c_int, (_OpModeContext,)),
    "addAllRoutes": (c_int, ()),
    "addArpEntry": (c_int, (c_uint32, c_char_p, c_int)),
    "addIp6": (c_int, (_Ip6Address,)),
    "addIp6tablesDropRule": (c_int, ()),
    "addKernelRoute": (c_int, (_RouteEntry,)),
    "addKernelRoute6": (c_int, (_Route6Entry,)),
    "addManagementAddr": (c_int, (_ManagementAddress,)),
    "addOldUser": (c_int, ()),
    "addPassword": (c_int, (c_char_p, c_char_p)),
    "addRule": (c_int, (c_int, _FilterRule, c_int, c_int)),
    "addToRestoreFile": (c_int, (c_char_p,)),
    "addUser": (c_int, (_UserAccount, c_char_p)),
    "addUserRoute": (c_int, (_RouteEntry,)),
    "addUserRoute6": (c_int, (_Route6Entry,)),
    "appAccelerationModeChange": (c_int, (c_int, _OpModeContext)),
    "appNetConfigChange": (c_int, (c_int, _OpModeContext)),
    "authenticateUser": (c_int, (c_char_p, c_char_p)),
    "br_add_bridge": (c_int, (c_char_p,)),
    "br_close": (c_int, ()),
    "br_cmd_addbr": (c_int, (c_char_p,)),
    "br_cmd_addif": (c_int, (c_void_p, c_char_p, c_char_p)),
    "br_cmd_delbr": (c_int, (c_char_p,)),
    "br_cmd_delif": (c_int, (c_void_p, c_char_p, c_char_p)),
    "br_find_bridge": (c_void_p, (c_char_p,)),
    "br_init": (c_int, ()),
    "br_ioctldev": (c_int, (c_char_p, c_ulong, c_ulong, c_ulong, c_ulong)),
    "callSystem": (c_int, (c_char_p,)),
    "callSystem2": (c_int, (c_char_p, c_int, c_char_p)),
    "changeDnsServerIp": (c_int, (c_uint32,)),
    "changeRule": (c_int, (c_int, _FilterRule)),
    "checkIp6": (c_int, (c_void_p,)),
    "checkKestroveRebootCounter": (c_int, ()),
    "checkStatsCounter": (c_uint64, ()),
    "clearEventLog": (c_int, (c_uint32, c_char_p)),
    "commitHandler": (c_int, ()),
    "convPrefixToMask": (None, (c_void_p, c_int)),
    "create_lock_file": (c_int, ()),
    "delArpEntry": (c_int, (c_uint32,)),
    "deleteExistingChains": (c_int, ()),
    "deleteKernelRoute": (c_int, (_RouteEntry,)),
    "deleteKernelRoute6": (c_int, (_Route6Entry,)),
    "deleteRule": (c_int, (c_int,)),
    "deleteUserRoute": (c_int, (c_uint32, c_uint32)),
    "deleteUserRoute6": (c_int, (c_void_p, c_uint32)),
    "delete_shared_memory": (c_int, ()),
    "dhcp_start": (c_int, (c_char_p, c_int, DhcpCallback, _c_uint32)),
    "dumpSharedMemory": (c_int, (c_void_p,)),
    "encryptPasswd": (c_int, (c_char_p, _c_char)),
    "findManagementAddr": (c_int, (c_char_p, _ManagementAddress)),
    "flushExistingChains": (c_int, ()),
    "formatTime": (None, (_c_char, _c_char, c_char_p, _c_long)),
    "freshenRoute6Table": (c_int, (c_uint32, c_char_p)),
    "freshenRouteTable": (c_int, (c_uint32, c_char_p)),
    "gatewayIsLocal6": (c_int, (_Route6Entry,)),
    "getAdminUserCount": (c_int, ()),
    "getBridgeRouterLanWanPhysName": (c_int, (_c_char, _c_char, c_int)),
    "getCIDRSubnet": (c_int, (c_uint32, c_uint32, _c_char, c_int)),
    "getCliOperationalState": (c_int, ()),
    "getCurrentUser": (c_int, (_UserAccount,)),
    "getDrelmVersion": (c_int, (_c_char, c_int)),
    "getEventCount": (c_int, ()),
    "getEventMessage": (c_char_p, (c_uint32,)),
    "getEventSourceUsername": (c_int, (_c_char,)),
    "getEventString": (c_int, (c_uint32, _c_char, c_int, c_int)),
    "getFirstRoute6TableEntry": (c_int, (_Route6Entry,)),
    "getFirstRouteTableEntry": (c_int, (_RouteEntry,)),
    "getFullDrelmVersionNumber": (c_int, (_c_char, c_int)),
    "getFullVersionNumber": (c_int, (_c_char, c_int)),
    "getGatewayId": (c_int, (_c_char,)),
    "getHardwarePlatform": (c_int, (_c_uint32,)),
    "getIfaceIndex": (c_int, (c_char_p,)),
    "getInterfaceName": (c_int, (c_int, _c_char, c_int)),
    "getInterfaceStats": (c_int, (c_int, c_void_p)),
    "getIp6Count": (c_int, ()),
    "getIp6TableEntry": (c_int, (c_int, _Ip6Address)),
    "getIp6TableEntryByAddr": (c_int, (c_char_p, _Ip6Address)),
    "getIpv6Addrs": (c_int, (c_char_p, c_void_p)),
    "getKestroveConfigItem": (c_int, (c_int, _c_uint32)),
    "getKestroveProduct": (c_int, (_c_uint32,)),
    "getKestroveProductName": (c_char_p, ()),
    "getKestroveVersion": (c_int, (_c_char, c_int)),
    "getLanWanVlanId": (c_int, (_c_uint32, _c_uint32, c_int)),
    "getLastLoginTimeStamp": (c_int, (c_char_p,)),
    "getLastResetTimeStamp": (c_uint32, ()),
    "getLinkStatus": (c_int, (c_int, _c_char, _c_char, _c_char)),
    "getLoginFrom": (c_int, ()),
    "getManagementAddr": (c_int, (c_int, _ManagementAddress)),
    "getManagementAddrCount": (c_int, ()),
    "getManagementAddressList": (c_int, (_c_char, c_int)),
    "getNetworkConfigItem": (c_int, (c_int, _c_uint32)),
    "getNextRoute6TableEntry": (c_int, (c_void_p, c_uint32, _Route6Entry)),
    "getNextRouteTableEntry": (c_int, (c_uint32, c_uint32, _RouteEntry)),
    "getNotificationStatus": (c_int, (c_int,)),
    "getPhysicalInterfaceName": (c_int, (c_int, _c_char, c_int)),
    "getProductName": (c_char_p, (c_uint32,)),
    "getQueueIntervalStats": (c_int, (c_int, c_void_p)),
    "getRoute6TableEntry": (c_int, (c_void_p, c_uint32, _Route6Entry)),
    "getRouteTableEntry": (c_int, (c_uint32, c_uint32, _RouteEntry)),
    "getRuleCount": (c_int, ()),
    "getRuleTableEntry": (c_int, (c_int, _FilterRule)),
    "getSharedMemoryStatus": (c_int, ()),
    "getShmFileBuffering": (c_int, ()),
    "getShmOperationalState": (c_int, ()),
    "getShmSourceComponent": (c_int, ()),
    "getShmString": (c_int, (c_int, _c_char, c_int)),
    "getSingleInterfaceMode": (c_int, (_c_uint32, _c_uint32, _c_uint32)),
    "getSystemTime": (None, (_c_char, _c_char, c_char_p)),
    "getSystemUptime": (c_int, (_c_uint32,)),
    "getUnitId": (c_int, (_c_char, c_int)),
    "getUserAccount": (c_int, (c_char_p, _UserAccount)),
    "getUserCount": (c_int, ()),
    "getUserPassword": (c_int, (c_char_p, _c_char)),
    "getUserTableEntry": (c_int, (c_int, _UserAccount)),
    "getZipType": (c_int, (_c_uint32,)),
    "incrKestroveRebootCounter": (c_int, ()),
    "incrKestroveRestartCounter": (c_int, ()),
    "inet_ntocidr": (c_int, (c_uint32,)),
    "init_shared_memory": (c_int, (c_char_p, c_char_p)),
    "insertRule": (c_int, (c_int, _FilterRule)),
    "ipv4_to_a": (c_char_p, (c_uint32,)),
    "ipv6_to_a": (c_int, (c_void_p, _c_char, c_int)),
    "isProcessActive": (c_int, (c_int,)),
    "kestrove_build": (c_int, (c_char_p, c_char_p)),
    "kestrove_check_layout": (c_int, (c_char_p, c_uint64, _c_char, c_int)),
    "kestrove_hold": (c_int, ()),
    "kestrove_layout_hash": (c_uint64, ()),
    "kestrove_mark": (c_int, (c_uint32,)),
    "kestrove_release": (c_int, ()),
    "kestrove_version": (c_char_p, ()),
    "loadSystemState": (c_int, (c_uint32, c_char_p)),
    "load_shared_memory": (c_int, (c_char_p,)),
    "logEvent": (c_int, (c_uint32, c_uint32, c_char_p)),
    "logSystemUpdateEvent": (c_int, (c_uint32, c_uint32, c_char_p)),
    "moveRule": (c_int, (c_int, c_int)),
    "neighb_mac": (c_int, (c_int, c_char_p, c_char_p, _c_char)),
    "netMaskCIDRNumber": (c_int, (c_uint32,)),
    "notifyKestrove": (c_int, ()),
    "opModeDualIf": (c_int, (c_int, _OpModeContext)),
    "opModeSingleOnly": (c_int, (c_int, _OpModeContext)),
    "opModeSinglePBR": (c_int, (c_int, _OpModeContext)),
    "parseIpv4Address": (c_int, (_c_char, _c_uint32)),
    "parseIpv6Address": (c_int, (c_char_p, c_void_p)),
    "pbrPolicyRule": (None, (c_int,)),
    "printEventLog": (c_int, (c_void_p,)),
    "printRoute6Info": (c_int, (c_void_p,)),
    "printRouteInfo": (c_int, (c_void_p,)),
    "printSharedMemory": (c_int, (c_void_p,)),
    "printSharedMemoryStats": (c_int, ()),
    "printTelemetry": (c_int, (c_void_p,)),
    "readCommandLine": (c_int, (_c_char, c_int, c_void_p)),
    "readDomoStats": (c_int, (c_void_p,)),
    "readInterfaceStats": (c_int, (c_void_p, c_char_p)),
    "readLine": (c_int, (_c_char, c_int, c_void_p)),
    "readMacAddr": (c_int, (c_int, _c_char)),
    "readOperationalStats": (c_int, (c_void_p,)),
    "readQosStats": (c_int, (c_void_p,)),
    "read_event_log": (c_int, (c_char_p, c_void_p)),
    "reboot": (c_int, (c_uint32, c_char_p)),
    "receiveKestroveEvent": (c_int, (_c_uint32,)),
    "refresh_userinterface_apps": (c_int, ()),
    "removeIp6": (c_int, (c_void_p,)),
    "removeManagementAddr": (c_int, (_ManagementAddress,)),
    "removeResolvConf": (c_int, ()),
    "removeUser": (c_int, (c_char_p,)),
    "replaceUserRoute": (c_int, (c_uint32, c_uint32, _RouteEntry, c_uint32, c_char_p)),
    "replaceUserRoute6": (c_int, (c_void_p, c_uint32, _Route6Entry, c_uint32, c_char_p)),
    "resetCompressionRatio": (c_int, (c_uint32, c_char_p)),
    "resetFilterStats": (c_int, ()),
    "resetKestroveRebootCounter": (c_int, ()),
    "resetKestroveRestartCounter": (c_int, ()),
    "resetOptimizationStats": (c_int, (c_uint32, c_char_p)),
    "resetPolicyRules": (c_int, ()),
    "resetStats": (c_int, (c_uint32, c_char_p)),
    "restart_kestrove": (c_int, (c_uint32, c_char_p)),
    "restoreFactoryDefaults": (c_int, (c_uint32, c_char_p)),
    "restoreZELFactoryDefaults": (c_int, (c_uint32, c_char_p)),
    "runCommand": (c_int, (_c_char_p, c_char_p, c_char_p)),
    "saveRuleTable": (c_int, ()),
    "saveSystemState": (c_int, (c_uint32, c_char_p)),
    "save_shared_memory": (c_int, ()),
    "setConfiguration": (c_int, (c_void_p,)),
    "setEventSourceUsername": (c_int, (c_char_p,)),
    "setGatewayId": (c_int, ()),
    "setHardwarePlatform": (c_int, (c_uint32,)),
    "setInterfaceName": (c_int, (c_int, c_char_p, c_int)),
    "setKestroveConfigItem": (c_int, (c_int, c_uint32, c_uint32, c_char_p)),
    "setKestroveConfigItemPostAct": (c_int, (c_int, c_uint32, c_uint32, c_char_p, ConfigHook, c_void_p, c_void_p)),
    "setKestroveConfigItemPreAct": (c_int, (c_int, c_uint32, c_uint32, c_char_p, ConfigHook, c_void_p, c_void_p)),
    "setLastLoginTimeStamp": (c_int, (c_char_p,)),
    "setLoginFrom": (c_int, (c_uint32,)),
    "setManagementIP": (c_int, (_c_char,)),
    "setNetworkConfigItem": (c_int, (c_int, _c_uint32, c_uint32, c_char_p)),
    "setNetworkConfigItemPostAct": (c_int, (c_int, _c_uint32, c_uint32, c_char_p, ConfigHook, c_void_p, c_void_p)),
    "setNotificationStatus": (c_int, (c_int,)),
    "setPermArpEntry": (c_int, (c_uint32, c_char_p)),
    "setShmOperationalState": (c_int, (c_uint32,)),
    "setShmSourceComponent": (c_int, (c_uint32,)),
    "setShmString": (c_int, (c_int, c_char_p)),
    "setSingleInterfaceMode": (c_int, (c_uint32, c_uint32, c_uint32)),
    "setSystemLinkSetting": (c_int, (c_int,)),
    "setSystemTime": (c_int, (_c_int32, c_uint32, c_char_p)),
    "setZipType": (c_int, (c_uint32,)),
    "set_bridge_down": (c_int, (c_char_p, c_char_p, c_char_p)),
    "set_bridge_up": (c_int, (c_char_p, c_char_p, c_char_p)),
    "set_iface_down": (c_int, (c_char_p,)),
    "set_iface_up": (c_int, (c_char_p,)),
    "setinBandWanGateway": (c_int, (_c_char,)),
    "shm_addIp6": (c_int, (_Ip6Address,)),
    "shm_addUser": (c_int, (_UserAccount,)),
    "shm_detach": (None, ()),
    "shm_editIp6Address": (c_int, (c_int, c_void_p)),
    "shm_editIp6Prefix": (c_int, (c_int, c_uint32)),
    "shm_getMessage": (c_char_p, (_MessageTable, c_int)),
    "shm_getMonitoredTaskPointer": (_c_int32, ()),
    "shm_getTaskPid": (c_int, (c_int,)),
    "shm_if6config": (c_int, (c_char_p, c_void_p, c_uint32, c_int)),
    "shm_ifconfig": (c_int, (c_char_p, c_uint32, c_uint32, c_uint32)),
    "shm_ifconfig_down1": (c_int, (c_char_p, c_uint32)),
    "shm_lock": (c_int, ()),
    "shm_netlinkConfig": (c_int, (c_char_p, c_uint32, c_uint32, c_uint32, c_int)),
    "shm_perror": (None, (c_char_p,)),
    "shm_setTaskPid": (c_int, (c_int, c_int)),
    "shm_strerror": (c_char_p, (c_int,)),
    "shm_unlock": (c_int, ()),
    "shm_updateKestroveStats": (c_int, (_c_uint32,)),
    "shm_vconfig_add1": (c_int, (c_char_p, c_uint32)),
    "shm_vconfig_add2": (c_int, (c_char_p, c_uint32, c_uint32)),
    "shm_vconfig_down": (c_int, (c_int, c_uint32, c_uint32)),
    "shm_vconfig_rem1": (c_int, (c_char_p, c_uint32)),
    "shm_vconfig_rem2": (c_int, (c_char_p, c_uint32, c_uint32)),
    "shm_vconfig_up": (c_int, (c_int, c_uint32, c_uint32)),
    "shutdownSystem": (c_int, (c_uint32, c_char_p)),
    "strCongestionControl": (c_char_p, (c_int,)),
    "strDDupState": (c_char_p, (c_int,)),
    "strOperationalState": (c_char_p, (c_int,)),
    "stringCopy": (c_int, (_c_char, c_char_p)),
    "turnOffBridge": (c_int, (c_char_p, c_char_p)),
    "turnOffIpfoward": (c_int, (c_char_p,)),
    "turnOnBridge": (c_int, (c_char_p, c_char_p)),
    "turnOnIpfoward": (c_int, (c_char_p,)),
    "updateDomoStats": (c_int, (c_void_p,)),
    "updateKernelRules": (c_int, ()),
    "v4AddressIsLocal": (c_int, (c_uint32,)),
    "v6And": (None, (c_void_p, c_void_p, c_void_p)),
    "v6Match": (c_int, (c_void_p, c_void_p)),
    "validateIntInBounds": (c_int, (c_int, c_int, c_int)),
    "validateInterfaceStatus": (c_int, (c_int,)),
    "validateManagementAddress": (c_int, (_c_char, _c_uint32)),
    "validateNetmask": (c_int, (_c_uint32,)),
    "validatePasswordComplexity": (c_int, (c_char_p, c_char_p)),
    "wipeEventLog": (c_int, ()),
    "writeMacAddr": (c_int, (c_int, _c_uint8)),
    "write_event_log": (c_int, (c_char_p, c_void_p)),
    "write_shared_memory": (c_int, ()),
}

VARIABLES = {
    "appAccelerateModeFtbl": OpModeHandler * 4,
    "br_socket_fd": c_int32,
    "event_str": c_char_p * 20,
    "fp": c_void_p,
    "l7mode_str": c_char_p * 4,
    "manAddrEnt": ManagementAddress,
    "oprmode_str": c_char_p * 3,
    "shm": POINTER(ShmData),
    "shm_errno": c_uint32,
    "shm_lock_count": c_int32,
    "state_domo_str": c_char_p * 2,
    "state_pbr_str": c_char_p * 2,
    "state_single_str": c_char_p * 2,
    "state_squid_str": c_char_p * 2,
}
