# SPDX-License-Identifier: Apache-2.0
"""User accounts."""
from collections.abc import Iterator
from datetime import datetime, timedelta, timezone
from typing import NamedTuple, Optional

from kestrove import functions, raw
from kestrove._abi import UserAccount
from kestrove.errors import last_error
from kestrove.store import bytes_of, change, in_file, text_of
from kestrove.values import SHM_EINVAL, SHM_USERS


class User(NamedTuple):
    """An account. The times are UTC, None for never."""

    name: str
    administrator: bool
    last_login: Optional[datetime]
    password_changed: Optional[datetime]


def time_of(seconds: int, microseconds: int = 0) -> datetime:
    return datetime.fromtimestamp(seconds, timezone.utc) + timedelta(microseconds=microseconds)


def _user(account: UserAccount) -> User:
    login = account.lastLoginSeconds, account.lastLoginMicroseconds
    return User(text_of(account.username), account.superUser == 1, time_of(*login) if any(login) else None,
                time_of(account.lastPasswdChange) if account.lastPasswdChange else None)


def users() -> Iterator[User]:
    """The accounts in the order of adding. The lock is held for one at a time."""
    account = UserAccount()
    for index in range(SHM_USERS):
        if raw.getUserTableEntry(index, account) == -1:
            if raw.shm_errno.value == SHM_EINVAL:
                return
            raise last_error("getUserTableEntry")
        yield _user(account)


def add_user(name: str, password: Optional[str] = None, administrator: bool = False) -> None:
    """Adds an account, with a line in the password database when a password is given."""
    field = bytes_of(name)
    if len(field) > 31:
        field = field[:32]  # too long is the library's to say
    account = UserAccount(username=field, superUser=int(administrator))
    change(functions.addUser, account, None if password is None else bytes_of(password))


def remove_user(name: str) -> None:
    """KestroveError with SHM_ENOUSER when there is no such account."""
    if functions.removeUser(bytes_of(name)) == 0:
        raise last_error("removeUser")
    in_file("removeUser")


def authenticate(name: str, password: str) -> bool:
    """Whether there is the account and the password is the right one. An empty password is not compared."""
    return functions.authenticateUser(bytes_of(name), bytes_of(password)) == 1
