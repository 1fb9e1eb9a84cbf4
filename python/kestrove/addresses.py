# SPDX-License-Identifier: Apache-2.0
"""Addresses of the store as objects of ipaddress, and back."""
import ctypes
import sys
from ipaddress import IPv4Address, IPv4Interface, IPv6Address, IPv6Interface

_ALL = 0xFFFFFFFF


def address4(word: int) -> IPv4Address:
    """A word of the store is in network byte order."""
    return IPv4Address(word.to_bytes(4, sys.byteorder))


def word_of(address: IPv4Address) -> int:
    return int.from_bytes(address.packed, sys.byteorder)


def interface4(address: int, mask: int) -> IPv4Interface:
    """ValueError for a mask with holes."""
    bits = int(address4(mask))
    length = bits.bit_count()
    if bits != _ALL << (32 - length) & _ALL:
        raise ValueError(f"{address4(address)}: {address4(mask)} is no netmask")
    return IPv4Interface((int(address4(address)), length))


def words_of(interface: IPv4Interface) -> tuple[int, int]:
    return word_of(interface.ip), word_of(interface.netmask)


def address6(octets: "ctypes.Array[ctypes.c_uint8]") -> IPv6Address:
    return IPv6Address(bytes(octets))


def interface6(octets: "ctypes.Array[ctypes.c_uint8]", length: int) -> IPv6Interface:
    """ValueError for a length beyond 128."""
    return IPv6Interface((bytes(octets), length))


def octets_of(address: IPv6Address) -> "ctypes.Array[ctypes.c_uint8]":
    return (ctypes.c_uint8 * 16)(*address.packed)
