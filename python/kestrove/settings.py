# SPDX-License-Identifier: Apache-2.0
"""The numbered items, addresses and texts as attributes."""
import ctypes
from ipaddress import IPv4Address

from kestrove import functions, values
from kestrove.addresses import address4, word_of
from kestrove.errors import KestroveError, NotSaved
from kestrove.store import bytes_of, change, text_of
from kestrove.values import SHM_EIO, SHM_ESYSTEM, SHM_OFF, SHM_ON, SHM_SOURCE_UNKNOWN

_TEXT_BYTES = 256


class Number:
    """An item that is a number."""

    def __init__(self, item: int) -> None:
        self.item = item

    def __get__(self, settings: "Settings", _owner: object = None) -> int:
        return settings.item(self.item)

    def __set__(self, settings: "Settings", value: int) -> None:
        settings.set_item(self.item, value)


class Switch:
    """An item that is on or off."""

    def __init__(self, item: int, off: int = SHM_OFF) -> None:
        self.item, self.off = item, off

    def __get__(self, settings: "Settings", _owner: object = None) -> bool:
        return settings.item(self.item) == SHM_ON

    def __set__(self, settings: "Settings", value: bool) -> None:
        settings.set_item(self.item, SHM_ON if value else self.off)


class Address:
    """An IPv4 address or mask."""

    def __init__(self, item: int) -> None:
        self.item = item

    def __get__(self, settings: "Settings", _owner: object = None) -> IPv4Address:
        return settings.address(self.item)

    def __set__(self, settings: "Settings", value: IPv4Address) -> None:
        settings.set_address(self.item, value)


class Text:
    """A text of up to 256 bytes."""

    def __init__(self, item: int) -> None:
        self.item = item

    def __get__(self, settings: "Settings", _owner: object = None) -> str:
        return settings.text(self.item)

    def __set__(self, settings: "Settings", value: str) -> None:
        settings.set_text(self.item, value)


class Settings:
    """The settings, each an attribute: settings.compression = True. doc/items.md says what each accepts and does.

    source (SHM_SOURCE_*) and user say who changes something, for the event log.
    """

    lan_link_rate = Number(values.SHM_ITEM_LAN_LINK_RATE)
    wan_link_rate = Number(values.SHM_ITEM_WAN_LINK_RATE)
    wan_default_rtt = Number(values.SHM_ITEM_WAN_DEFAULT_RTT)
    wan_mtu = Number(values.SHM_ITEM_WAN_MTU)
    lan_mtu = Number(values.SHM_ITEM_LAN_MTU)
    lan_link_setting = Number(values.SHM_ITEM_LAN_LINK_SETTING)
    wan_link_setting = Number(values.SHM_ITEM_WAN_LINK_SETTING)
    management_link_setting = Number(values.SHM_ITEM_MANAGEMENT_LINK_SETTING)
    compression = Switch(values.SHM_ITEM_COMPRESSION)
    bridging = Switch(values.SHM_ITEM_BRIDGING)
    snmp = Switch(values.SHM_ITEM_SNMP)
    snmp_version = Number(values.SHM_ITEM_SNMP_VERSION)
    web = Switch(values.SHM_ITEM_WEB)
    cli = Switch(values.SHM_ITEM_CLI)
    engine = Switch(values.SHM_ITEM_ENGINE)
    spare_flag = Number(values.SHM_ITEM_SPARE_FLAG)
    ssh = Switch(values.SHM_ITEM_SSH)
    banner = Switch(values.SHM_ITEM_BANNER)
    single_interface = Switch(values.SHM_ITEM_SINGLE_INTERFACE)
    policy_routing = Switch(values.SHM_ITEM_POLICY_ROUTING)
    lan_pbr_route_set = Number(values.SHM_ITEM_LAN_PBR_ROUTE_SET)
    wan_pbr_route_set = Number(values.SHM_ITEM_WAN_PBR_ROUTE_SET)
    wan_congestion = Number(values.SHM_ITEM_WAN_CONGESTION)
    logging = Switch(values.SHM_ITEM_LOGGING)
    file_buffering = Switch(values.SHM_ITEM_FILE_BUFFERING)
    value_38 = Number(values.SHM_ITEM_VALUE_38)
    relay_available = Switch(values.SHM_ITEM_RELAY_AVAILABLE)
    relay_status = Number(values.SHM_ITEM_RELAY_STATUS)
    relay_setting = Number(values.SHM_ITEM_RELAY_SETTING)
    operating_mode = Number(values.SHM_ITEM_OPERATING_MODE)
    platform = Number(values.SHM_ITEM_PLATFORM)
    ipv6_support = Switch(values.SHM_ITEM_IPV6_SUPPORT)
    wan_opt_support = Switch(values.SHM_ITEM_WAN_OPT_SUPPORT)
    min_rate = Number(values.SHM_ITEM_MIN_RATE)
    min_mtu = Number(values.SHM_ITEM_MIN_MTU)
    session_timeout = Number(values.SHM_ITEM_SESSION_TIMEOUT)
    flag_55 = Switch(values.SHM_ITEM_FLAG_55, off=0)
    flag_56 = Switch(values.SHM_ITEM_FLAG_56, off=0)
    flag_57 = Switch(values.SHM_ITEM_FLAG_57, off=0)
    flag_58 = Switch(values.SHM_ITEM_FLAG_58, off=0)

    management_address = Address(values.SHM_NET_MANAGEMENT_ADDRESS)
    management_mask = Address(values.SHM_NET_MANAGEMENT_MASK)
    management_broadcast = Address(values.SHM_NET_MANAGEMENT_BROADCAST)
    lan_address = Address(values.SHM_NET_LAN_ADDRESS)
    lan_mask = Address(values.SHM_NET_LAN_MASK)
    lan_broadcast = Address(values.SHM_NET_LAN_BROADCAST)
    wan_address = Address(values.SHM_NET_WAN_ADDRESS)
    wan_mask = Address(values.SHM_NET_WAN_MASK)
    wan_broadcast = Address(values.SHM_NET_WAN_BROADCAST)
    management_mask_2 = Address(values.SHM_NET_MANAGEMENT_MASK_2)
    management_broadcast_2 = Address(values.SHM_NET_MANAGEMENT_BROADCAST_2)
    lan_gateway = Address(values.SHM_NET_LAN_GATEWAY)
    wan_gateway = Address(values.SHM_NET_WAN_GATEWAY)

    sys_name = Text(values.SHM_TEXT_SYS_NAME)
    sys_location = Text(values.SHM_TEXT_SYS_LOCATION)
    sys_contact = Text(values.SHM_TEXT_SYS_CONTACT)
    sys_description = Text(values.SHM_TEXT_SYS_DESCRIPTION)
    web_session = Text(values.SHM_TEXT_WEB_SESSION)

    def __init__(self, user: str = "", source: int = SHM_SOURCE_UNKNOWN) -> None:
        self.user, self.source = bytes_of(user), source

    def item(self, number: int) -> int:
        """The value of an item, by its number."""
        value = ctypes.c_uint32()
        functions.getKestroveConfigItem(number, value)
        return value.value

    def set_item(self, number: int, value: int) -> None:
        if not 0 <= value <= 0xFFFFFFFF:
            raise OverflowError(f"{value} does not fit an item")
        try:
            change(functions.setKestroveConfigItem, number, value, self.source, self.user)
        except NotSaved:
            raise
        except KestroveError as error:
            # A save that could not be begun fails an item that is set all the same.
            if error.code in (SHM_ESYSTEM, SHM_EIO) and self.item(number) == value:
                raise NotSaved(error.function, error.code, error.errno) from None
            raise

    def address(self, number: int) -> IPv4Address:
        value = ctypes.c_uint32()
        functions.getNetworkConfigItem(number, value)
        return address4(value.value)

    def set_address(self, number: int, value: IPv4Address) -> None:
        change(functions.setNetworkConfigItem, number, ctypes.c_uint32(word_of(value)), self.source, self.user)

    def text(self, number: int) -> str:
        buffer = ctypes.create_string_buffer(_TEXT_BYTES)
        functions.getShmString(number, buffer, _TEXT_BYTES)
        return text_of(buffer.value)

    def set_text(self, number: int, value: str) -> None:
        change(functions.setShmString, number, bytes_of(value))
