# SPDX-License-Identifier: Apache-2.0
"""Static routes."""
from collections.abc import Iterator
from ipaddress import IPv4Address, IPv4Interface, IPv6Address, IPv6Interface
from typing import Any, NamedTuple, Union, overload

from kestrove import functions, raw
from kestrove._abi import Route6Entry, RouteEntry
from kestrove.addresses import address4, address6, interface4, interface6, octets_of, word_of, words_of
from kestrove.errors import last_error
from kestrove.store import bytes_of, change, lock, text_of
from kestrove.values import SHM_ENOENT, SHM_ROUTE_ACTIVE, SHM_ROUTES, SHM_ROUTES6


class Route(NamedTuple):
    """An IPv4 route. The destination's address and mask, as they are, are its key; status: SHM_ROUTE_*."""

    destination: IPv4Interface
    gateway: IPv4Address
    status: int = SHM_ROUTE_ACTIVE


class Route6(NamedTuple):
    """An IPv6 route. The destination's address and prefix length are its key; interface: that reaches the gateway."""

    destination: IPv6Interface
    gateway: IPv6Address
    status: int = SHM_ROUTE_ACTIVE
    interface: str = ""


def _entry(route: Route) -> RouteEntry:
    destination, netmask = words_of(route.destination)
    return RouteEntry(destination, netmask, word_of(route.gateway), route.status)


def _entry6(route: Route6) -> Route6Entry:
    return Route6Entry(octets_of(route.destination.ip), octets_of(route.gateway), route.destination.network.prefixlen,
                       route.status, bytes_of(route.interface))


def _route(entry: RouteEntry) -> Route:
    return Route(interface4(entry.destination, entry.netmask), address4(entry.gateway), entry.status)


def _route6(entry: Route6Entry) -> Route6:
    return Route6(interface6(entry.destination, entry.prefixLength), address6(entry.gateway), entry.status,
                  text_of(entry.interfaceName))


def _after(keys: list[tuple[Any, int]], family: str, entry: Any) -> bool:
    """Fetches the route behind the last key that is still there, the first one when none is; false at the end."""
    with lock():
        while keys and getattr(raw, f"get{family}TableEntry")(*keys[-1], type(entry)()) == -1:
            keys.pop()
        name = f"getNext{family}TableEntry" if keys else f"getFirst{family}TableEntry"
        result: int = getattr(raw, name)(*(keys[-1] if keys else ()), entry)
        if result == -1 and raw.shm_errno.value != SHM_ENOENT:
            raise last_error(name)
    return result == 0


def routes() -> Iterator[Route]:
    """The IPv4 routes, the longest masks first. The lock is held for one at a time; a route that is deleted meanwhile
    neither ends the walk nor makes it miss another one."""
    keys: list[tuple[Any, int]] = []
    entry = RouteEntry()
    for _ in range(SHM_ROUTES):
        if not _after(keys, "Route", entry):
            return
        keys.append((entry.destination, entry.netmask))
        yield _route(entry)


def routes6() -> Iterator[Route6]:
    """The IPv6 routes, the longest prefixes first, as routes() has the others."""
    keys: list[tuple[Any, int]] = []
    entry = Route6Entry()
    for _ in range(SHM_ROUTES6):
        if not _after(keys, "Route6", entry):
            return
        keys.append((bytes(entry.destination), entry.prefixLength))
        yield _route6(entry)


@overload
def find_route(destination: IPv4Interface) -> Route: ...
@overload
def find_route(destination: IPv6Interface) -> Route6: ...
def find_route(destination: Union[IPv4Interface, IPv6Interface]) -> Union[Route, Route6]:
    """The route with that key; KestroveError with SHM_ENOENT when there is none."""
    if isinstance(destination, IPv4Interface):
        entry = RouteEntry()
        functions.getRouteTableEntry(*words_of(destination), entry)
        return _route(entry)
    entry6 = Route6Entry()
    functions.getRoute6TableEntry(destination.packed, destination.network.prefixlen, entry6)
    return _route6(entry6)


def add_route(route: Union[Route, Route6]) -> None:
    """Adds a route. One that the kernel refuses is kept as inactive."""
    if isinstance(route, Route):
        change(functions.addUserRoute, _entry(route))
    else:
        change(functions.addUserRoute6, _entry6(route))


def replace_route(old: Union[IPv4Interface, IPv6Interface], route: Union[Route, Route6]) -> None:
    """Puts a route in the place of the one with that key, which is gone also when the new one cannot be added."""
    if isinstance(route, Route) and isinstance(old, IPv4Interface):
        change(functions.replaceUserRoute, *words_of(old), _entry(route), 0, b"")
    elif isinstance(route, Route6) and isinstance(old, IPv6Interface):
        change(functions.replaceUserRoute6, old.packed, old.network.prefixlen, _entry6(route), 0, b"")
    else:
        raise TypeError("a route is replaced by one of its own family")


def delete_route(destination: Union[IPv4Interface, IPv6Interface]) -> None:
    if isinstance(destination, IPv4Interface):
        change(functions.deleteUserRoute, *words_of(destination))
    else:
        change(functions.deleteUserRoute6, destination.packed, destination.network.prefixlen)
