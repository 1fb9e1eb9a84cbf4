# SPDX-License-Identifier: Apache-2.0
"""The event log."""
from collections.abc import Iterator
from datetime import datetime
from typing import NamedTuple, Optional

from kestrove import functions, raw
from kestrove._abi import EventLog, EventRecord
from kestrove.store import bytes_of, lock, text_of
from kestrove.users import time_of
from kestrove.values import SHM_EVENTS, SHM_SOURCE_UNKNOWN


class Event(NamedTuple):
    """An event: its time in UTC, id (SHM_EVENT_*), source (SHM_SOURCE_*), user and description."""

    time: datetime
    id: int
    source: int
    user: str
    message: str


def _event(record: EventRecord) -> Event:
    message = functions.getEventMessage(record.eventId)
    return Event(time_of(record.timestamp), record.eventId, record.source, text_of(record.userName),
                 text_of(message or b""))


class _Place:
    """How many events are behind the reader, in a ring whose oldest ones may go meanwhile."""

    def __init__(self) -> None:
        self.passed = 0
        self.oldest: Optional[int] = None
        self.full = False

    def next(self, log: EventLog) -> Optional[Event]:
        oldest = log.readIndex % SHM_EVENTS
        full = log.eventLogFull == 1
        if self.oldest is not None:
            self.passed = max(0, self.passed - (oldest - self.oldest) % SHM_EVENTS)
        if self.full and not full or self.passed >= (SHM_EVENTS if full else log.writeIndex % SHM_EVENTS):
            return None  # the end, or a log that was cleared
        self.oldest, self.full = oldest, full
        self.passed += 1
        return _event(log.record[(oldest + self.passed - 1) % SHM_EVENTS])


def events() -> Iterator[Event]:
    """The events, the oldest first. The lock is held for one at a time; events that come meanwhile are given, too."""
    place = _Place()
    while True:
        with lock() as store:
            event = place.next(store.eventLog)
        if event is None:
            return
        yield event


def log_event(event: int, source: int = SHM_SOURCE_UNKNOWN, user: str = "") -> None:
    functions.logEvent(event, source, bytes_of(user))
