# SPDX-License-Identifier: Apache-2.0
"""The rule table beside a list."""
import unittest
from ipaddress import IPv4Interface, IPv6Interface

from hypothesis import strategies as st
from hypothesis.stateful import invariant, rule

import kestrove
from kestrove import Rule, values
from model_support import Walk, case

PORTS = st.tuples(st.integers(0, 65535), st.integers(0, 65535))
END4 = st.builds(lambda address, length: IPv4Interface((address, length)), st.integers(0, 2**32 - 1), st.integers(0, 32))
END6 = st.builds(lambda address, length: IPv6Interface((address, length)), st.integers(0, 2**128 - 1), st.integers(0, 128))


def rules_of(family, ends):
    return st.builds(Rule, st.just(family), ends, ends, st.sampled_from([0, 1, 6, 17, 47]), PORTS, PORTS,
                     st.sampled_from([-1, 0, 1, 4]), st.integers(1, 8), st.integers(0, 2**31 - 1), st.booleans(),
                     st.integers(0, 3), st.integers(0, 9))


RULES = st.one_of(rules_of(values.SHM_FAMILY_ANY, st.none()), rules_of(values.SHM_FAMILY_IPV4, END4),
                  rules_of(values.SHM_FAMILY_IPV6, END6))
POSITIONS = st.integers(-1, 9)


def network_of(end):
    return end if end is None else type(end)(end.network)


def normal(given, least):
    """As the table keeps a rule that it is given."""
    kept = given._replace(bandwidth=max(given.bandwidth, least))
    if given.status != values.SHM_RULE_ACTIVE:
        return kept
    accelerate = given.accelerate and given.protocol != values.SHM_PROTO_UDP
    return kept._replace(source=network_of(given.source), destination=network_of(given.destination), accelerate=accelerate)


class RulesWalk(Walk):
    def __init__(self):
        super().__init__()
        self.model = list(kestrove.rules())
        self.least = kestrove.Settings().min_rate

    def refusal(self, *positions):
        return None if all(0 <= position < len(self.model) for position in positions) else "SHM_EINVAL"

    def of_the_default(self, position, *positions):
        return self.refusal(position, *positions) or ("SHM_EREADONLY" if position == len(self.model) - 1 else None)

    @rule(position=POSITIONS, given=RULES)
    def insert(self, position, given):
        code = self.refusal(position)
        self.expect(code, kestrove.insert_rule, position, given)
        if code is None:
            self.model.insert(position, normal(given, self.least)._replace(order=0))

    @rule(position=POSITIONS, given=RULES)
    def change(self, position, given):
        code = self.of_the_default(position)
        self.expect(code, kestrove.change_rule, position, given)
        if code is None:
            self.model[position] = normal(given, self.least)

    @rule(old=POSITIONS, new=POSITIONS)
    def move(self, old, new):
        code = self.of_the_default(old, new)
        self.expect(code, kestrove.move_rule, old, new)
        if code is None:
            target = new if new <= old else new - 1
            self.model.insert(target, self.model.pop(old))

    @rule(position=POSITIONS)
    def delete(self, position):
        code = self.of_the_default(position)
        self.expect(code, kestrove.delete_rule, position)
        if code is None:
            del self.model[position]

    @rule(position=POSITIONS)
    def get(self, position):
        self.expect(self.refusal(position), kestrove.get_rule, position)

    @invariant()
    def the_walk_gives_the_model(self):
        assert list(kestrove.rules()) == self.model
        assert kestrove.functions.getRuleCount() == len(self.model)


RulesTest = case(RulesWalk)

if __name__ == "__main__":
    unittest.main()
