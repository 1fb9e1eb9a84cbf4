# SPDX-License-Identifier: Apache-2.0
"""The accounts beside a list of names and a dictionary of passwords, in memory and as they come back from the file."""
import unittest

from hypothesis import strategies as st
from hypothesis.stateful import invariant, rule

import kestrove
from kestrove import functions, values
from model_support import PASSWORDS, Walk, case
from support import restarted

EVERYBODY = ["georg", "georgina", "maria", "petra1", "X" * 31, "abcde"]
NAMES = st.sampled_from(EVERYBODY)
BAD_NAMES = st.sampled_from([("abcd", "SHM_ERANGE"), ("x" * 32, "SHM_ERANGE"), ("x" * 300, "SHM_ERANGE"),
                             ("georg hans", "SHM_EINVAL"), ("geörg", "SHM_EINVAL"), ("georg:", "SHM_EINVAL")])
GOOD = st.sampled_from(["Abcdef12!x", "Zyxwvu98?a", "P@ssw0rdZürich"])
BAD = st.sampled_from([("Ab1!", "SHM_ERANGE"), ("", "SHM_ERANGE"), ("Abcdef12!" + "x" * 23, "SHM_ERANGE"),
                       ("abcdef12!x", "SHM_EINVAL"), ("Abcdefgh!x", "SHM_EINVAL"), ("Abcdef1234", "SHM_EINVAL")])


class UsersWalk(Walk):
    def __init__(self):
        super().__init__()
        self.table = []  # name, administrator
        self.lines = {}  # name: password, in the password database

    def exists(self, name, table):
        """A user exists when the database has the name and the table one that begins with it."""
        return name in self.lines and any(other.startswith(name) for other, _ in table)

    def refusal(self, name):
        return "SHM_EFULL" if len(self.table) == values.SHM_USERS else "SHM_EEXIST" if self.exists(name, self.table) else None

    @rule(name=NAMES, password=st.none() | GOOD, administrator=st.booleans())
    def add(self, name, password, administrator):
        code = self.refusal(name)
        self.expect(code, kestrove.add_user, name, password, administrator)
        if code is None:
            self.table.append((name, administrator))
        if code is None and password is not None:
            self.lines[name] = password

    @rule(name=NAMES, bad=BAD)
    def add_with_a_bad_password(self, name, bad):
        self.expect(self.refusal(name) or bad[1], kestrove.add_user, name, bad[0])

    @rule(bad=BAD_NAMES)
    def add_with_a_bad_name(self, bad):
        self.expect(bad[1], kestrove.add_user, bad[0], "Abcdef12!x")

    @rule(name=NAMES)
    def remove(self, name):
        places = [place for place, (other, _) in enumerate(self.table) if other == name]
        known = name in self.lines and places
        self.expect(None if known else "SHM_ENOUSER", kestrove.remove_user, name)
        if known:
            del self.table[places[0]], self.lines[name]

    @rule(name=NAMES, password=GOOD)
    def log_in(self, name, password):
        right = self.exists(name, self.table) and self.lines[name] == password
        assert kestrove.authenticate(name, password) == right

    @invariant()
    def the_walk_gives_the_model(self):
        assert [user[:2] for user in kestrove.users()] == self.table
        assert functions.getUserCount() == len(self.table)
        assert functions.getAdminUserCount() == sum(administrator for _, administrator in self.table)

    @invariant()
    def the_password_database_has_those_with_a_password(self):
        lines = {line.split(":")[0] for line in PASSWORDS.read_text(encoding="utf-8").splitlines()}
        assert {*self.lines} == {name for name in lines if name in EVERYBODY}

    def teardown(self):
        """Each row of the file is added anew, and one of a user who exists by then is not."""
        restarted()
        rows, self.table = self.table, []
        for name, administrator in rows:
            if not self.exists(name, self.table):
                self.table.append((name, administrator))
        self.the_walk_gives_the_model()


UsersTest = case(UsersWalk)

if __name__ == "__main__":
    unittest.main()
