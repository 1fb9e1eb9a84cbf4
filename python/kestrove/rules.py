# SPDX-License-Identifier: Apache-2.0
"""The policy rules."""
from collections.abc import Iterator
from ipaddress import IPv4Interface, IPv6Interface
from typing import NamedTuple, Optional, Union

from kestrove import functions, raw
from kestrove._abi import FilterRule
from kestrove.addresses import interface4, interface6, octets_of, words_of
from kestrove.errors import last_error
from kestrove.store import change
from kestrove.values import (SHM_EINVAL, SHM_FAMILY_ANY, SHM_FAMILY_IPV4, SHM_FAMILY_IPV6, SHM_OFF, SHM_ON,
                             SHM_PROTO_ANY, SHM_RULE_ACTIVE, SHM_RULES, SHM_TARGET_ACCELERATE)

End = Union[IPv4Interface, IPv6Interface, None]


class Rule(NamedTuple):
    """A rule. Both ends are of its family and None in a rule for every family; a pair of ports is the first and the last
    one, 0 any; bandwidth in bit/s; target: SHM_TARGET_*; status: SHM_RULE_*; order: the place in the engine's copy."""

    family: int = SHM_FAMILY_ANY
    source: End = None
    destination: End = None
    protocol: int = SHM_PROTO_ANY
    source_ports: tuple[int, int] = (0, 0)
    destination_ports: tuple[int, int] = (0, 0)
    target: int = SHM_TARGET_ACCELERATE
    priority: int = 8
    bandwidth: int = 0
    accelerate: bool = True
    status: int = SHM_RULE_ACTIVE
    order: int = 0


def _put_end(entry: FilterRule, name: str, end: End) -> None:
    if isinstance(end, IPv4Interface):
        address, mask = words_of(end)
        setattr(entry, name + "Addr", address)
        setattr(entry, name + "Mask", mask)
    elif isinstance(end, IPv6Interface):
        setattr(entry, name + "Addr6", octets_of(end.ip))
        setattr(entry, name + "PrefixLen6", end.network.prefixlen)


def _entry(rule: Rule) -> FilterRule:
    entry = FilterRule(
        ipVersion=rule.family, proto=rule.protocol, srcPort=rule.source_ports[0], srcPortEnd=rule.source_ports[1],
        destPort=rule.destination_ports[0], destPortEnd=rule.destination_ports[1], target=rule.target,
        order=rule.order, priority=rule.priority, bandwidth=rule.bandwidth,
        accel=SHM_ON if rule.accelerate else SHM_OFF, ruleAction=rule.status)
    _put_end(entry, "src", rule.source)
    _put_end(entry, "dst", rule.destination)
    return entry


def _ends(entry: FilterRule) -> tuple[End, End]:
    if entry.ipVersion == SHM_FAMILY_IPV4:
        return interface4(entry.srcAddr, entry.srcMask), interface4(entry.dstAddr, entry.dstMask)
    if entry.ipVersion == SHM_FAMILY_IPV6:
        return interface6(entry.srcAddr6, entry.srcPrefixLen6), interface6(entry.dstAddr6, entry.dstPrefixLen6)
    return None, None


def _rule(entry: FilterRule) -> Rule:
    return Rule(entry.ipVersion, *_ends(entry), entry.proto, (entry.srcPort, entry.srcPortEnd),
                (entry.destPort, entry.destPortEnd), entry.target, entry.priority, entry.bandwidth,
                entry.accel == SHM_ON, entry.ruleAction, entry.order)


def rules() -> Iterator[Rule]:
    """The rules in their order, the default rule last. The lock is held for one at a time: rules that another process
    inserts or deletes meanwhile move those behind them."""
    entry = FilterRule()
    for position in range(SHM_RULES):
        if raw.getRuleTableEntry(position, entry) == -1:
            if raw.shm_errno.value == SHM_EINVAL:
                return
            raise last_error("getRuleTableEntry")
        yield _rule(entry)


def get_rule(position: int) -> Rule:
    entry = FilterRule()
    functions.getRuleTableEntry(position, entry)
    return _rule(entry)


def insert_rule(position: int, rule: Rule) -> None:
    """Puts a rule in front of the one at that position, which counts from 0."""
    change(functions.insertRule, position, _entry(rule))


def change_rule(position: int, rule: Rule) -> None:
    change(functions.changeRule, position, _entry(rule))


def move_rule(old: int, new: int) -> None:
    """Takes a rule out and puts it in front of the one that is now at the new position."""
    change(functions.moveRule, old, new)


def delete_rule(position: int) -> None:
    change(functions.deleteRule, position)
