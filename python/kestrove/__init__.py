# SPDX-License-Identifier: Apache-2.0
"""libkestrove for Python: the settings, tables and events of the appliance as Python's own types.

kestrove.functions has every exported function under its own name, one that fails raising KestroveError; kestrove.raw has
them as C does; kestrove.values has the names of the values. The library is for one thread of a process.
"""
from kestrove import _library, functions, raw, values
from kestrove._abi import (ConfigRecord, EngineConfiguration, EngineLink, EventLog, EventRecord, FilterRule, FilterTable,
                           InterfaceCounters, Ip6Address, ManagementAddress, MessageEntry, MessageTable, OpModeContext,
                           QosRow, ReadFilter, Route6Entry, Route6Table, RouteEntry, RouteTable, SessionEngineStats,
                           ShmData, StatisticsBlock, UserAccount)
from kestrove.errors import KestroveError, NotSaved
from kestrove.events import Event, events, log_event
from kestrove.routes import Route, Route6, add_route, delete_route, find_route, replace_route, routes, routes6
from kestrove.rules import Rule, change_rule, delete_rule, get_rule, insert_rule, move_rule, rules
from kestrove.settings import Settings
from kestrove.store import Lock, lock
from kestrove.streams import stream
from kestrove.users import User, add_user, authenticate, remove_user, users

LIBRARY_PATH = _library.PATH


def version() -> str:
    """The library's version."""
    return (functions.kestrove_version() or b"").decode()


__all__ = [
    "ConfigRecord", "EngineConfiguration", "EngineLink", "Event", "EventLog", "EventRecord", "FilterRule",
    "FilterTable", "InterfaceCounters", "Ip6Address", "KestroveError", "LIBRARY_PATH", "Lock", "ManagementAddress",
    "MessageEntry", "MessageTable", "NotSaved", "OpModeContext", "QosRow", "ReadFilter", "Route", "Route6",
    "Route6Entry", "Route6Table", "RouteEntry", "RouteTable", "Rule", "SessionEngineStats", "Settings", "ShmData",
    "StatisticsBlock", "User", "UserAccount", "add_route", "add_user", "authenticate", "change_rule",
    "delete_route", "delete_rule", "events", "find_route", "functions", "get_rule", "insert_rule", "lock",
    "log_event", "move_rule", "raw", "remove_user", "replace_route", "routes", "routes6", "rules", "stream",
    "users", "values", "version",
]
