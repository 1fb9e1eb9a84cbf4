# SPDX-License-Identifier: Apache-2.0
"""The route tables beside a dictionary, for both families, in memory and as they come back from the file."""
import sys
import unittest
from ipaddress import IPv4Address, IPv4Interface, IPv6Address, IPv6Interface

from hypothesis import strategies as st
from hypothesis.stateful import invariant, precondition, rule

import kestrove
from kestrove import Route, Route6
from model_support import Walk, case
from support import restarted

STATUS = st.integers(1, 3)
# Few keys, so that they meet; host bits are part of them.
KEYS4 = st.builds(lambda octet, host, length: IPv4Interface((bytes([172, octet, 0, host]), length)),
                  st.integers(0, 3), st.integers(0, 1), st.sampled_from([0, 8, 16, 23, 24, 31, 32]))
KEYS6 = st.builds(lambda octet, host, length: IPv6Interface((bytes([0xFD, octet, *[0] * 13, host]), length)),
                  st.integers(0, 3), st.integers(0, 1), st.sampled_from([0, 1, 16, 63, 64, 127, 128]))
ROUTES4 = st.builds(Route, KEYS4, st.builds(IPv4Address, st.integers(0, 2**32 - 1)), STATUS)
ROUTES6 = st.builds(Route6, KEYS6, st.builds(IPv6Address, st.integers(0, 2**128 - 1)), STATUS,
                    st.sampled_from(["", "eth0", "x" * 15]))


def rank4(key):
    """Words as they lie in memory: among equal masks the last byte counts most."""
    return tuple(int.from_bytes(address.packed, sys.byteorder) for address in (key.netmask, key.ip))


def rank6(key):
    return key.network.prefixlen, key.packed


class Routes(Walk):
    walk, rank, keyword = staticmethod(kestrove.routes), staticmethod(rank4), "ROUTE"

    def __init__(self):
        super().__init__()
        for route in list(self.walk()):
            kestrove.delete_route(route.destination)
        self.model = {}

    def add(self, route):
        self.expect("SHM_EEXIST" if route.destination in self.model else None, kestrove.add_route, route)
        self.model.setdefault(route.destination, route)

    def delete(self, key):
        self.expect(None if key in self.model else "SHM_ENOENT", kestrove.delete_route, key)
        self.model.pop(key, None)

    def replace(self, key, route):
        there = key in self.model
        self.model.pop(key, None)  # gone, whatever becomes of the new one
        taken = there and route.destination in self.model
        self.expect("SHM_ENOENT" if not there else "SHM_EEXIST" if taken else None, kestrove.replace_route, key, route)
        if there:
            self.model.setdefault(route.destination, route)

    def find(self, key):
        self.expect(None if key in self.model else "SHM_ENOENT", kestrove.find_route, key)
        if key in self.model:
            assert kestrove.find_route(key) == self.model[key]

    def expected(self):
        return [self.model[key] for key in sorted(self.model, key=self.rank, reverse=True)]

    @invariant()
    def the_walk_gives_the_model_in_order(self):
        assert list(self.walk()) == self.expected()

    def teardown(self):
        if not self.model:
            return
        restarted()
        assert [route[:2] for route in self.walk()] == [route[:2] for route in self.expected()]


class Routes4Walk(Routes):
    add = rule(route=ROUTES4)(Routes.add)
    delete = rule(key=KEYS4)(Routes.delete)
    replace = rule(key=KEYS4, route=ROUTES4)(Routes.replace)
    find = rule(key=KEYS4)(Routes.find)

    @precondition(lambda self: self.model)
    @rule(data=st.data())
    def delete_one_that_is_there(self, data):
        self.delete(data.draw(st.sampled_from(sorted(self.model, key=rank4))))


class Routes6Walk(Routes):
    walk, rank = staticmethod(kestrove.routes6), staticmethod(rank6)
    add = rule(route=ROUTES6)(Routes.add)
    delete = rule(key=KEYS6)(Routes.delete)
    replace = rule(key=KEYS6, route=ROUTES6)(Routes.replace)
    find = rule(key=KEYS6)(Routes.find)

    @precondition(lambda self: self.model)
    @rule(data=st.data())
    def delete_one_that_is_there(self, data):
        self.delete(data.draw(st.sampled_from(sorted(self.model, key=rank6))))


Routes4Test, Routes6Test = case(Routes4Walk), case(Routes6Walk)

if __name__ == "__main__":
    unittest.main()
