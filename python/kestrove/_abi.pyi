# SPDX-License-Identifier: Apache-2.0
# Made by scripts/python-binding from the dump of the binary interface and the headers. Not edited by hand.
import ctypes
from collections.abc import Callable
from typing import Any

LAYOUT_HASH: int
VERSION: str

class EngineLink(ctypes.Structure):
    interfaceName: bytes  # no terminator when 16 characters long
    sendBufferSize: int
    receiveBufferSize: int
    linkRate: int
    congestionMode: int  # 2 congestion control, 0 none
    side: int  # 0 LAN, 1 WAN
    mtu: int  # the smaller MTU of both sides
    reserved40: ctypes.Array[ctypes.c_uint8]
    congestionFlagA: int  # 1 for TCP
    congestionFlagB: int  # 1 for error tolerance
    reserved68: ctypes.Array[ctypes.c_uint8]
    hardwareAddress: ctypes.Array[ctypes.c_uint8]
    reserved114: ctypes.Array[ctypes.c_uint8]

class EventRecord(ctypes.Structure):
    timestamp: int  # seconds since the epoch
    eventId: int  # SHM_EVENT_*; other numbers are kept, too
    source: int  # SHM_SOURCE_*
    userName: bytes  # no terminator when 32 characters long

class FilterRule(ctypes.Structure):
    ipVersion: int  # SHM_FAMILY_*; the fields of the other family are zero
    srcAddr: int  # IPv4, network order
    srcMask: int  # IPv4, network order; 0 any source
    dstAddr: int  # IPv4, network order
    dstMask: int  # IPv4, network order; 0 any destination
    srcAddr6: ctypes.Array[ctypes.c_uint8]  # IPv6 address
    srcPrefixLen6: int  # 0 to 128; 0 any source
    dstAddr6: ctypes.Array[ctypes.c_uint8]  # IPv6 address
    dstPrefixLen6: int  # 0 to 128; 0 any destination
    proto: int  # SHM_PROTO_* or another IP protocol number
    srcPort: int  # first source port; 0 any
    srcPortEnd: int  # last source port
    destPort: int  # first destination port; 0 any
    destPortEnd: int  # last destination port
    target: int  # SHM_TARGET_*
    order: int  # place from 1 on in the engine's copy; 0 in the store
    priority: int  # class of accelerated traffic, the default rule has 8
    bandwidth: int  # limit of accelerated traffic, bit/s, at least minRate
    accel: int  # switch, a word; off for an active UDP rule
    ruleAction: int  # SHM_RULE_*

class FilterTable(ctypes.Structure):
    ruleCount: int  # rules in use, 1 to 8192
    rule: ctypes.Array[FilterRule]  # the first match decides, the last is the default rule; SELEC_ACCEL*

class InterfaceCounters(ctypes.Structure):
    bytesSent: int  # bytes
    bytesReceived: int  # bytes
    packetsSent: int  # packets
    packetsReceived: int  # packets
    dropsSent: int  # packets
    dropsReceived: int  # packets

class Ip6Address(ctypes.Structure):
    address: ctypes.Array[ctypes.c_uint8]  # IPv6 address of the bridge; MANAGEMENT_ADDR_6
    prefixLength: int  # 0 to 128

class ManagementAddress(ctypes.Structure):
    ipVersion: int  # SHM_FAMILY_IPV4 or SHM_FAMILY_IPV6; all others count as IPv4
    status: int  # SHM_ADDRESS_*
    address: int  # IPv4, network order; of an IPv4 entry
    mask: int  # IPv4, network order; of an IPv4 entry
    address6: ctypes.Array[ctypes.c_uint8]  # IPv6 address; of an IPv6 entry
    prefixLength6: int  # 0 to 128; of an IPv6 entry
    interfaceKind: int  # SHM_IF_*

class MessageEntry(ctypes.Structure):
    code: int
    message: bytes | None

class MessageTable(ctypes.Structure):
    count: int
    defaultCode: int
    entries: ctypes._Pointer[MessageEntry]

class OpModeContext(ctypes.Structure):
    mode: int  # the present one; a handler writes the new one here
    l7Mode: int
    l7ModeCopy: int
    locked: int  # not 0: the caller holds the store lock and keeps it
    word5: int  # words 5 and 6 are cleared
    word6: int
    wanVlanId: int  # the ids to use: the configuration's, or the caller's new ones for event 6
    lanVlanId: int
    wanVlanIdCopy: int  # the same again; for event 6 the caller's old ones, both 0 for the configuration's
    lanVlanIdCopy: int

class QosRow(ctypes.Structure):
    priority: int  # of the class; no reset changes it
    bytesSent: int  # since the last reset
    packetsSent: int  # since the last reset
    packetsDropped: int  # since the last reset
    currentRate: int  # of the latest interval, in the engine's unit
    averageRate: int  # of the latest interval, in the engine's unit
    maximumRate: int  # largest since the last reset, in the engine's unit
    sessions: int  # of the latest interval

class ReadFilter(ctypes.Structure):
    stream: int | None
    squeeze: int  # not 0: collapse blanks
    delimiter: bytes  # ends a line
    lineCount: int  # lines read that held at least one character

class Route6Entry(ctypes.Structure):
    destination: ctypes.Array[ctypes.c_uint8]  # IPv6 prefix; key with prefixLength
    gateway: ctypes.Array[ctypes.c_uint8]  # IPv6 next hop
    prefixLength: int  # 0 to 128
    status: int  # SHM_ROUTE_*
    interfaceName: bytes  # terminated, reaches the gateway; set when the route is installed
    inUse: int  # 1 used, SHM_NO_SLOT free
    next: int  # slot of the next route in order, SHM_NO_SLOT at the end

class Route6Table(ctypes.Structure):
    head6: int  # slot of the first route, SHM_NO_SLOT when the last one went
    slot: ctypes.Array[Route6Entry]  # longer prefixes first; ROUTE6

class RouteEntry(ctypes.Structure):
    destination: int  # IPv4 network, network order; key with netmask
    netmask: int  # IPv4, network order, without holes
    gateway: int  # IPv4 next hop, network order
    status: int  # SHM_ROUTE_*
    inUse: int  # 1 used, SHM_NO_SLOT free
    next: int  # slot of the next route in order, SHM_NO_SLOT at the end

class RouteTable(ctypes.Structure):
    head: int  # slot of the first route; the list is empty when that is not in use
    slot: ctypes.Array[RouteEntry]  # longer masks first; ROUTE

class SessionEngineStats(ctypes.Structure):
    counter: ctypes.Array[ctypes.c_uint64]  # bytes and packets: 0 to 3 LAN, 4 to 7 WAN
    sessions: int  # gauge, as last reported
    resetWord: ctypes.Array[ctypes.c_uint32]  # written by the resets alone

class StatisticsBlock(ctypes.Structure):
    accumulationInterval: int  # seconds that a record of the engine spans; divides the peaks
    accumulatedIntervals: int  # records folded in since the last reset
    reserved1: ctypes.Array[ctypes.c_uint8]
    counterLastResetTime: int  # uptime in hundredths of a second
    intervalRecord: ctypes.Array[ctypes.c_uint32]  # the engine's latest record, as it came
    totalUncompressedDataSize: int  # sum of word 25 of the records
    totalCompressedDataSize: int  # sum of word 26
    filter_total_bytes_in: int  # sum of word 27
    filter_total_bytes_out: int  # sum of word 28
    intervalPeak14: int  # largest word 14
    intervalTotals: ctypes.Array[ctypes.c_uint64]  # sums of words 18, 19, 22 and 20
    intervalPeak42: int  # largest word 42
    maxTcpSessionInitiationsPerSecond: int  # largest word 43 by accumulationInterval
    maxTcpSessionTerminationsPerSecond: int  # largest word 44 by accumulationInterval
    totalTcpSessionRequestsFailed: int  # sum of word 21
    totalTcpSessionsTimedOut: int  # sum of word 23
    totalTcpSegmentsBadChecksum: int  # sum of word 24
    compressionRatio: int  # percent, compressed of uncompressed; 100 after a reset
    filter_compression_ratio: int  # percent, out of in; 100 while nothing came in
    filterLastValue: int  # word 29 of the latest record
    furtherCounters: ctypes.Array[ctypes.c_uint8]  # of the engine, zeroed by resetStats
    interfaceRow: ctypes.Array[InterfaceCounters]  # 0 LAN, 1 WAN
    reserved2: ctypes.Array[ctypes.c_uint8]

class UserAccount(ctypes.Structure):
    username: bytes  # terminated name, at most 31 letters and digits; USER_ACCOUNT
    superUser: int  # 1 for an administrator
    lastLoginSeconds: int  # last log-in, seconds since the epoch
    lastLoginMicroseconds: int  # the microseconds of that
    lastPasswdChange: int  # seconds since the epoch, kept by the front ends

class ConfigRecord(ctypes.Structure):
    kestroveFullVersion: bytes  # text, version of the engine; KESTROVE_VERSION
    kestroveVersion: bytes  # text made from it at start-up, no terminator when 64 characters long
    drelmFullVersion: bytes  # text, version of the protocol engine; DRELM_VERSION
    drelmVersion: bytes  # text made from it at start-up for SHM_PRODUCT_DRELM
    unitId: bytes  # text, identifier of the unit
    configFileName: bytes  # path; KESTROVE_CONFIG, else as start-up was told
    eventLogFileName: bytes  # path
    adminUserCount: int  # users whose superUser is 1
    userCount: int  # users in use, 0 to 5
    users: ctypes.Array[UserAccount]  # without gaps, in the order of adding; USER_ACCOUNT
    reserved11: ctypes.Array[ctypes.c_uint8]
    kestroveRestartCount: int  # failed starts of the engine in a row
    kestroveRebootCount: int  # reboots because the engine would not start; REBOOT_COUNT
    gatewayId: ctypes.Array[ctypes.c_uint8]  # made from the WAN hardware address; the first byte stands for its vendor
    idleTimeout: int  # of sessions, in the engine's unit
    failToWireStatus: int  # bits of the relay
    failToWireConfig: int  # the relay without power: 1 bypass, 2 normal; FTW_CONFIG
    failToWireAvailable: int  # switch: there is a relay
    compression: int  # switch; COMPRESSION
    transparentBridgeOperState: int  # switch: the ports are bridged; BRIDGING
    loggingOperState: int  # switch: events are logged; EVENT_LOGGING
    snmpOperState: int  # switch: configuration through SNMP; CONFIG_BY_SNMP
    httpOperState: int  # switch: configuration through the web interface; CONFIG_BY_WEB
    cliOperState: int  # switch: configuration through the serial port; CONFIG_BY_SERIAL
    kestroveOperState: int  # switch: the engine runs; KESTROVE_OP_STATE
    webCacheOperState: int  # switch; WEB_CACHE
    cifsOperState: int  # switch: CIFS acceleration; CIFS
    cifsConfigured: int  # 1 once CIFS or WEB_CACHE was switched on, else 0
    spareFlag: int  # any byte, read by nobody
    ddupOperState: int  # method: 0 none, bits 1 LZ, 2 LZP, 4 DDUP, 8 extended header, 255 off; DDUP
    reserved31: ctypes.Array[ctypes.c_uint8]
    lanPbrRouteSet: int  # 1 once policy routing has its LAN default route
    wanPbrRouteSet: int  # 1 once policy routing has its WAN default route
    dnsAddress: int  # IPv4, network order; DNS_ADDR
    snmpVersion: int  # 1 to 3; SNMP_VERSION
    sshdOperState: int  # switch: SSH daemon; SSHD
    bannerOperState: int  # switch: banner at log-in; BANNER
    pbrOperState: int  # switch: policy routing; PBR
    singleInterfaceMode: int  # switch: LAN and WAN are VLANs of one port; SINGLE_INTERFACE
    reserved40: ctypes.Array[ctypes.c_uint8]
    wanVlanId: int  # number, 0 none; WAN_VLAN_ID
    lanVlanId: int  # number, 0 none; LAN_VLAN_ID
    hardwarePlatform: int  # 0 to 15; 14 has a management port and WAN optimisation
    productId: int  # SHM_PRODUCT_*; PRODUCT_ID
    reserved45: ctypes.Array[ctypes.c_uint8]
    ipv6Support: int  # switch, a word
    wanOptSupport: int  # switch, read on platform 14 alone
    reserved48: ctypes.Array[ctypes.c_uint8]
    zipType: int  # archive type of a saved state
    httpEncryptedId: bytes  # text, the current web session; no terminator when 256 characters long
    httpSessionTimeout: int  # number, in the web interface's unit
    reserved52: ctypes.Array[ctypes.c_uint8]
    minRate: int  # lowest WAN link rate and bandwidth of a rule, bit/s; by product
    minMtu: int  # lowest MTU, bytes; by product
    lanCongestionControl: int  # SHM_CONGESTION_*; LAN_CONGESTION, LAN_CC
    reserved56: ctypes.Array[ctypes.c_uint8]
    lanLinkRate: int  # bit/s; LAN_RATE
    lanSendBufferSize: int  # number, in the engine's unit; LAN_BUF
    lanReceiveBufferSize: int  # number, in the engine's unit; LAN_RBUF
    lanMaximumTransferUnit: int  # bytes, at least minMtu; LAN_MTU
    lanIpAddress: int  # IPv4, network order; LAN_ADDR
    lanIpAddressMask: int  # IPv4, network order; LAN_MASK
    lanBroadcastAddress: int  # IPv4, network order
    lanInterfaceName: bytes  # terminated; LAN_NAME
    lanLinkSetting: int  # SHM_LINK_*; LAN_LINK_SETTING
    physicalLanInterfaceName: bytes  # port of SHM_IF_LAN, terminated; PHYSICAL_LAN_NAME
    bridgeRouterPhysicalName: bytes  # port of SHM_IF_BASE, terminated; REAL_LAN_NAME
    wanCongestionControl: int  # SHM_CONGESTION_*; INTERNET_CONGESTION, GLOBAL_CONGESTION_CONTROL
    reserved68: ctypes.Array[ctypes.c_uint8]
    wanLinkRate: int  # bit/s, at least minRate; INTERNET_RATE
    wanSendBufferSize: int  # number, in the engine's unit; INTERNET_BUF
    wanReceiveBufferSize: int  # number, in the engine's unit; INTERNET_RBUF
    wanMaximumTransferUnit: int  # bytes, at least minMtu; INTERNET_MTU
    wanIpDefaultRtt: int  # round trip of the WAN path, in the engine's unit; INTERNET_DELAY
    wanIpAddress: int  # IPv4, network order; INTERNET_ADDR
    wanIpAddressMask: int  # IPv4, network order; INTERNET_MASK
    wanBroadcastAddress: int  # IPv4, network order
    reserved77: ctypes.Array[ctypes.c_uint8]
    managementInterfaceName: bytes  # port of SHM_IF_MANAGEMENT, terminated; MANAGEMENT_NAME
    reserved77b: ctypes.Array[ctypes.c_uint8]
    managementLinkSetting: int  # SHM_LINK_*; MANAGEMENT_LINK_SETTING
    reserved79: ctypes.Array[ctypes.c_uint8]
    lanGateway: int  # IPv4, network order; LAN_GATEWAY
    wanGateway: int  # IPv4, network order; INTERNET_GATEWAY
    wanInterfaceName: bytes  # terminated; INTERNET_NAME
    wanLinkSetting: int  # SHM_LINK_*; INTERNET_LINK_SETTING
    physicalWanInterfaceName: bytes  # port of SHM_IF_WAN, terminated; PHYSICAL_WAN_NAME
    fileBuffering: int  # switch, a word
    flags: ctypes.Array[ctypes.c_uint32]  # 0 or 1 each, items 55 to 58
    item38Value: int  # any number, item 38, handed to the engine
    managementAddress: int  # IPv4 of the bridge, network order; BRIDGE_ADDR
    managementAddressMask: int  # IPv4, network order; BRIDGE_MASK
    managementBroadcastAddress: int  # IPv4, network order
    sysName: bytes  # text of SNMP; as the next three not terminated when 256 characters long; SYS_NAME
    sysLocation: bytes  # text of SNMP; SYS_LOCATION
    sysContact: bytes  # text of SNMP; SYS_CONTACT
    sysDescription: bytes  # text of SNMP; SYS_DESCRIPTION
    reserved95: ctypes.Array[ctypes.c_uint8]
    opModeState: int  # SHM_MODE_*
    opModeSubState: int  # SHM_APPLICATION_*
    reserved98: ctypes.Array[ctypes.c_uint8]

class EngineConfiguration(ctypes.Structure):
    lan: EngineLink
    wan: EngineLink
    wanIpDefaultRtt: int
    bridging: int  # 1 on, 0 off
    ipv6Support: int  # 1 on, 0 off
    item38Value: int
    managementAddress: int  # network byte order
    managementAddressMask: int  # network byte order
    gatewayId: ctypes.Array[ctypes.c_uint8]
    compression: int  # 1 on, 0 off
    globalCongestion: int  # 1 when the WAN congestion code is 1
    accumulationInterval: int  # seconds
    constant8: int  # always 8
    ruleCount: int
    rule: ctypes.Array[FilterRule]  # order, and a positive target, count from 1
    reserved852272: ctypes.Array[ctypes.c_uint8]
    singleInterfaceMode: int  # 1 on, 2 off
    reserved852277: ctypes.Array[ctypes.c_uint8]
    ddupOperState: int
    ddupStartupOptions: bytes  # always terminated

class EventLog(ctypes.Structure):
    eventLogFull: int  # 1 once the ring has gone round, else 0
    readIndex: int  # slot of the oldest record
    writeIndex: int  # slot of the next record
    record: ctypes.Array[EventRecord]  # a ring

class ShmData(ctypes.Structure):
    operationalState: int  # SHM_STATE_*
    config: ConfigRecord  # the settings
    ip6Address: ctypes.Array[Ip6Address]  # the bridge's own, without gaps
    ip6Count: int  # IPv6 addresses in use, 0 to 6
    managementAddressCount: int  # management addresses in use, 0 to 7
    reserved6: ctypes.Array[ctypes.c_uint8]
    managementAddress: ctypes.Array[ManagementAddress]  # in the order of adding; MANAGEMENT_ADDR
    reserved8: ctypes.Array[ctypes.c_uint8]
    routes: RouteTable  # IPv4
    reserved11: ctypes.Array[ctypes.c_uint8]
    routes6: Route6Table  # IPv6
    filterTable: FilterTable  # traffic policy
    qos: ctypes.Array[QosRow]  # 0 WAN total, 1 to 8 WAN classes, 9 LAN
    eventLog: EventLog  # also the image in the event log's file
    reserved17: ctypes.Array[ctypes.c_uint8]
    notificationStatus: int  # bits 0 to 2: notifications 1 to 3 set
    reserved19: ctypes.Array[ctypes.c_uint8]
    statistics: StatisticsBlock  # of the engine
    taskPids: ctypes.Array[ctypes.c_int32]  # process ids by SHM_TASK_*
    sessionEngine: SessionEngineStats  # of the session engine
    lanHardwareAddress: ctypes.Array[ctypes.c_uint8]  # of SHM_IF_BASE, read at start-up
    wanHardwareAddress: ctypes.Array[ctypes.c_uint8]  # of SHM_IF_WAN, read at start-up
    managementHardwareAddress: ctypes.Array[ctypes.c_uint8]  # of SHM_IF_MANAGEMENT, read at start-up
    reserved26: ctypes.Array[ctypes.c_uint8]
    sourceComponent: int  # SHM_SOURCE_*, the front end that acts
    eventSourceUsername: bytes  # terminated name of the user who acts
    loginFrom: int  # SHM_LOGIN_*; other numbers: unknown
    oldAdminUsername: bytes  # terminated, the first account to be made; ADMIN_USERNAME
    oldAdminPassword: bytes  # terminated, its password; ADMIN_PASSWORD
    reserved30b: ctypes.Array[ctypes.c_uint8]
    pendingChanges: int  # SHM_CHANGE_*, not yet fetched by the engine
    reserved32: ctypes.Array[ctypes.c_uint8]  # the first eight name a change of a table in progress (segment.h), else zero
    ddupStartupOptions: bytes  # text for the engine, no terminator when 256 characters long; DDUP_OPTIONS

class ConfigHook(ctypes._SimpleCData[Any]):
    def __init__(self, function: Callable[[int | None, int | None], int] = ...) -> None: ...
    def __call__(self, *arguments: Any) -> int: ...
class DhcpCallback(ctypes._SimpleCData[Any]):
    def __init__(self, function: Callable[[ctypes._Pointer[ctypes.c_uint32], bytes | None], int] = ...) -> None: ...
    def __call__(self, *arguments: Any) -> int: ...
class OpModeHandler(ctypes._SimpleCData[Any]):
    def __init__(self, function: Callable[[int, ctypes._Pointer[OpModeContext]], int] = ...) -> None: ...
    def __call__(self, *arguments: Any) -> int: ...

PROTOTYPES: dict[str, tuple[Any, tuple[Any, ...]]]
VARIABLES: dict[str, Any]
