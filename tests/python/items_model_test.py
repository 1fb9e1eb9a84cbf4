# SPDX-License-Identifier: Apache-2.0
"""The numbered items beside doc/items.md: what it says that each accepts is taken, and nothing else."""
import os
import pathlib
import re
import unittest

from hypothesis import strategies as st
from hypothesis.stateful import initialize, invariant, rule

import kestrove
from kestrove import Settings, values
from model_support import Walk, case

DOCUMENT = pathlib.Path(os.environ["KESTROVE_SOURCE"]) / "doc/items.md"
SLOW = {6, 7, 8, 20, 41}  # they run programs of the appliance, some for a second
RANGED = {1, 2, 4, 5}  # rates and MTUs


class Item:
    def __init__(self, cells):
        self.number, accepted, change = int(cells[0]), cells[5], cells[6]
        self.bounds = re.fullmatch(r"(\w+)\.\.(\d+)", accepted)
        self.listed = {1, 2} if accepted == "on, off" else {0, 1} if accepted == "0, 1" else set()
        assert self.bounds or self.listed or accepted == "read only", accepted
        logged = re.search(r"event (\d+) or (\d+)", change)
        self.events = dict(zip((1, 2), map(int, logged.groups()))) if logged else {}

    def least(self):
        word = self.bounds.group(1)
        return int(word) if word.isdigit() else Settings().min_rate if word == "minRate" else Settings().min_mtu

    def takes(self, value):
        return self.least() <= value <= int(self.bounds.group(2)) if self.bounds else value in self.listed

    def refusal(self, value):
        return None if self.takes(value) else "SHM_ERANGE" if self.number in RANGED else "SHM_EINVAL"

    def values(self):
        edges = {0, 1, 2, 3, 2**31 - 1, 2**31, 2**32 - 1}
        if self.bounds:
            edges |= {bound + step for bound in (self.least(), int(self.bounds.group(2))) for step in (-1, 0, 1)}
        return sorted(edge for edge in edges if 0 <= edge < 2**32)


ROWS = [line.strip("|").split("|") for line in DOCUMENT.read_text(encoding="utf-8").split("## Network")[0].splitlines()
        if re.match(r"\| \d+ \| `SHM_ITEM", line)]
ITEMS = [item for item in (Item([cell.strip() for cell in row]) for row in ROWS if int(row[0]) not in SLOW)]
assert len(ITEMS) > 30, ROWS


class ItemsWalk(Walk):
    @initialize()
    def begin(self):
        self.model = {item.number: Settings().item(item.number) for item in ITEMS}
        self.logged = [event.id for event in kestrove.events()]

    def note(self, item, value):
        """What a change logs, while it is logged: the switch of the log itself counts before."""
        if self.model[item.number] != value and value in item.events and self.model[values.SHM_ITEM_LOGGING] == 1:
            self.logged.append(item.events[value])

    @rule(data=st.data(), item=st.sampled_from(ITEMS), source=st.integers(0, 8))
    def set(self, data, item, source):
        value = data.draw(st.sampled_from(item.values()))
        code = item.refusal(value)
        self.expect(code, Settings("maria", source).set_item, item.number, value)
        if code is None:
            self.note(item, value)
            self.model[item.number] = value

    @rule(number=st.sampled_from([-1, 0, 21, 34, 42, 59, 2**31 - 1]))
    def no_such_item(self, number):
        self.expect("SHM_EINVAL", Settings().item, number)
        self.expect("SHM_EINVAL", Settings().set_item, number, 1)

    @invariant()
    def every_item_is_that_of_the_model(self):
        if hasattr(self, "model"):
            read = {item.number: Settings().item(item.number) for item in ITEMS}
            wanted = dict(self.model)
            if wanted[values.SHM_ITEM_PLATFORM] != 14:
                wanted[values.SHM_ITEM_WAN_OPT_SUPPORT] = 0
            assert read == wanted

    @invariant()
    def the_log_has_what_the_model_says(self):
        if hasattr(self, "logged"):
            assert [event.id for event in kestrove.events()] == self.logged


ItemsTest = case(ItemsWalk)

if __name__ == "__main__":
    unittest.main()
