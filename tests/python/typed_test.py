# SPDX-License-Identifier: Apache-2.0
"""The package's own types over the operations: settings, tables, users, events, the lock and errors."""
import ctypes
import datetime
import os
import pathlib
import subprocess
import unittest
from ipaddress import ip_address, ip_interface

import kestrove
from kestrove import Route, Route6, Rule, Settings, functions, raw, values
from support import StoreTest

CONFIGURATION = pathlib.Path("/etc/config/kestrove.conf")


def in_another(script):
    return subprocess.run(["/usr/bin/python3", "-c", "import kestrove\n" + script], check=True, capture_output=True,
                          encoding="utf-8").stdout.strip()


def lock_is_free():
    """Whether another process would get the store's lock."""
    return in_another("import fcntl\nfile = open('/var/lock/shm', 'r+')\ntry:\n"
                      "    fcntl.lockf(file, fcntl.LOCK_EX | fcntl.LOCK_NB); print('free')\n"
                      "except OSError: print('held')") == "free"


class SettingsTest(StoreTest):
    def test_a_switch_is_a_bool(self):
        settings = Settings("admin", values.SHM_SOURCE_SSH)
        self.assertIs(settings.compression, True)
        settings.compression = False
        self.assertIs(Settings().compression, False)
        self.assertIn("COMPRESSION", CONFIGURATION.read_text())
        event = list(kestrove.events())[-1]
        self.assertEqual((event.id, event.source, event.user), (values.SHM_EVENT_COMPRESSION_OFF, 4, "admin"))

    def test_a_flag_is_a_bool(self):
        settings = Settings()
        for state in (True, False):
            settings.flag_57 = state
            self.assertIs(settings.flag_57, state)

    def test_a_rate_is_a_number(self):
        Settings().wan_link_rate = 3072000
        self.assertEqual(Settings().wan_link_rate, 3072000)

    def test_what_is_out_of_range_is_refused(self):
        for rate, problem in ((5, kestrove.KestroveError), (-1, OverflowError), (1 << 32, OverflowError)):
            with self.assertRaises(problem):
                Settings().wan_link_rate = rate
        self.assertEqual(Settings().wan_link_rate, 2048000)

    def test_an_address_is_an_address(self):
        settings = Settings()
        self.assertEqual(settings.lan_address, ip_address("10.1.0.1"))
        settings.lan_address = ip_address("10.1.0.9")
        self.assertEqual(settings.lan_address, ip_address("10.1.0.9"))

    def test_a_text_is_a_text(self):
        settings = Settings()
        for text in ("Zürich", "", "x" * 256, os.fsdecode(b"caf\xe9")):
            settings.sys_location = text
            self.assertEqual(settings.sys_location, text)
        for text, problem in (("x" * 257, kestrove.KestroveError), ("a\0b", ValueError)):
            with self.assertRaises(problem):
                settings.sys_location = text

    def test_every_item_address_and_text_has_its_attribute(self):
        numbers = {kind: sorted(row.item for row in vars(Settings).values() if isinstance(row, kind))
                   for kind in (kestrove.settings.Number, kestrove.settings.Switch, kestrove.settings.Address,
                                kestrove.settings.Text)}
        named = {head: sorted(value for name, value in vars(values).items() if name.startswith(head))
                 for head in ("SHM_ITEM_", "SHM_NET_", "SHM_TEXT_")}
        self.assertEqual(sorted(numbers[kestrove.settings.Number] + numbers[kestrove.settings.Switch]), named["SHM_ITEM_"])
        self.assertEqual(numbers[kestrove.settings.Address], named["SHM_NET_"])
        self.assertEqual(numbers[kestrove.settings.Text], named["SHM_TEXT_"])

    def test_a_change_that_is_not_saved_says_so(self):
        with kestrove.lock() as store:
            store.config.configFileName = b"/nowhere/kestrove.conf"
        for change in (lambda: setattr(Settings(), "wan_link_rate", 3072000),
                       lambda: setattr(Settings(), "sys_name", "branch-8"),
                       lambda: kestrove.delete_rule(0),
                       lambda: kestrove.add_route(Route(ip_interface("10.9.0.0/16"), ip_address("10.9.0.1"))),
                       lambda: kestrove.add_user("georg", "Abcdef12!x")):
            with self.assertRaises(kestrove.NotSaved) as caught:
                change()
            self.assertEqual(caught.exception.code, values.SHM_ESYSTEM)
            self.assertTrue(str(caught.exception).endswith("No such file or directory; the change is made and not saved"),
                            caught.exception)
        self.assertEqual((Settings().wan_link_rate, Settings().sys_name, len(list(kestrove.rules()))),
                         (3072000, "branch-8", 2))

    def test_a_route_that_the_kernel_refuses_is_saved_all_the_same(self):
        kestrove.add_route(Route6(ip_interface("fd77::/64"), ip_address("fd00:10::77")))
        self.assertIn("fd77::", CONFIGURATION.read_text())


class Tables(StoreTest):
    ROUTE = Route(ip_interface("172.20.0.0/16"), ip_address("192.168.10.3"), values.SHM_ROUTE_ACTIVE)

    def test_routes_of_both_families(self):
        self.assertEqual([route.destination for route in kestrove.routes()], [self.ROUTE.destination])
        more = Route(ip_interface("10.9.0.0/16"), ip_address("10.9.0.1"), values.SHM_ROUTE_DISABLED)
        more6 = Route6(ip_interface("fd01::/64"), ip_address("fd00:10::3"), values.SHM_ROUTE_DISABLED)
        for route in (more, more6):
            kestrove.add_route(route)
            self.assertEqual(kestrove.find_route(route.destination), route)
        self.assertIn(more, list(kestrove.routes()))
        self.assertEqual(list(kestrove.routes6()), [more6])
        kestrove.replace_route(more6.destination, more6._replace(gateway=ip_address("fd00:10::4")))
        self.assertEqual([route.gateway for route in kestrove.routes6()], [ip_address("fd00:10::4")])
        for route in (more, more6):
            kestrove.delete_route(route.destination)
            with self.assertRaises(kestrove.KestroveError) as caught:
                kestrove.find_route(route.destination)
            self.assertEqual((caught.exception.code, caught.exception.name), (values.SHM_ENOENT, "SHM_ENOENT"))

    def test_a_route_of_the_other_family_replaces_none(self):
        with self.assertRaises(TypeError):
            kestrove.replace_route(ip_interface("fd01::/64"), self.ROUTE)

    def test_a_route_deleted_during_a_walk_does_not_end_it(self):
        for number in range(5):
            kestrove.add_route(Route(ip_interface(f"10.{number}.0.0/24"), ip_address("10.9.0.1"), 2))
        walk = kestrove.routes()
        first = next(walk)
        kestrove.delete_route(first.destination)
        self.assertEqual(len(list(walk)), 5)

    def test_a_walk_holds_the_lock_no_longer_than_a_record(self):
        for walk in (kestrove.routes(), kestrove.rules(), kestrove.events()):
            next(walk)
            self.assertTrue(lock_is_free())

    def test_two_routes_of_one_key_in_the_store_end_the_walk(self):
        kestrove.add_route(Route(ip_interface("10.9.0.0/16"), ip_address("10.9.0.1"), 2))
        with kestrove.lock() as store:
            for slot in store.routes.slot[:2]:
                slot.destination, slot.netmask = 0x0000090A, 0x0000FFFF
        self.assertLessEqual(len(list(kestrove.routes())), values.SHM_ROUTES)

    def test_a_mask_with_holes_in_the_store_is_named(self):
        with kestrove.lock() as store:
            store.routes.slot[0].netmask = 0x00FF00FF
        with self.assertRaisesRegex(ValueError, "255.0.255.0 is no netmask"):
            list(kestrove.routes())

    def test_rules_in_their_order(self):
        self.assertEqual([rule.protocol for rule in kestrove.rules()], [6, 17, 0])
        web = Rule(values.SHM_FAMILY_IPV4, ip_interface("10.1.0.0/16"), ip_interface("0.0.0.0/0"), values.SHM_PROTO_TCP,
                   (0, 0), (443, 443), bandwidth=2000000)
        anybody = Rule(bandwidth=2000000)
        far = Rule(values.SHM_FAMILY_IPV6, ip_interface("fd01::/64"), ip_interface("::/0"), bandwidth=2000000)
        for position, rule in enumerate((web, anybody, far)):
            kestrove.insert_rule(position, rule)
        self.assertEqual(list(kestrove.rules())[:3], [web, anybody, far])
        kestrove.move_rule(0, 2)
        kestrove.change_rule(0, anybody._replace(target=values.SHM_TARGET_DROP))
        self.assertEqual([rule.target for rule in list(kestrove.rules())[:2]], [0, 1])
        self.assertEqual(kestrove.get_rule(1), web)
        kestrove.delete_rule(1)
        self.assertEqual(kestrove.get_rule(1), far)
        with self.assertRaises(kestrove.KestroveError) as caught:
            kestrove.delete_rule(4)
        self.assertEqual(caught.exception.name, "SHM_EREADONLY")

    def test_users_come_and_go(self):
        kestrove.add_user("georg", "Abcdef12!x", administrator=True)
        kestrove.add_user("maria")
        with kestrove.lock() as store:
            store.config.users[0].lastLoginSeconds = 1700000000
            store.config.users[0].lastLoginMicroseconds = 250000
        georg, maria = kestrove.users()
        self.assertEqual((georg.name, georg.administrator, maria.administrator), ("georg", True, False))
        self.assertEqual(georg.last_login, datetime.datetime(2023, 11, 14, 22, 13, 20, 250000, datetime.timezone.utc))
        self.assertIsNone(maria.last_login)
        self.assertTrue(kestrove.authenticate("georg", "Abcdef12!x"))
        self.assertFalse(kestrove.authenticate("georg", "something"))
        for name, code in (("georg", "SHM_EEXIST"), ("x" * 32, "SHM_ERANGE"), ("abc", "SHM_ERANGE"), ("a b c d", "SHM_EINVAL")):
            with self.assertRaises(kestrove.KestroveError) as caught:
                kestrove.add_user(name)
            self.assertEqual(caught.exception.name, code, name)
        kestrove.remove_user("georg")
        with self.assertRaises(kestrove.KestroveError) as caught:
            kestrove.remove_user("georg")
        self.assertEqual(caught.exception.code, values.SHM_ENOUSER)


class Events(StoreTest):
    def ids(self, walk):
        return [event.id for event in walk]

    def test_an_event_says_when_who_and_what(self):
        before = datetime.datetime.now(datetime.timezone.utc).replace(microsecond=0)
        kestrove.log_event(values.SHM_EVENT_WEB_LOGIN, values.SHM_SOURCE_HTTP, "georg")
        event = list(kestrove.events())[-1]
        self.assertEqual(event[1:], (21, 2, "georg", "Web interface login"))
        self.assertTrue(before <= event.time <= datetime.datetime.now(datetime.timezone.utc))

    def test_an_event_logged_during_a_walk_comes_too(self):
        count = len(list(kestrove.events()))
        walk = kestrove.events()
        next(walk)
        kestrove.log_event(40)
        self.assertEqual((self.ids(walk)[-1], len(list(kestrove.events()))), (40, count + 1))

    def test_a_log_cleared_during_a_walk_ends_it(self):
        for _ in range(4):
            kestrove.log_event(40)
        walk = kestrove.events()
        for _ in range(3):
            next(walk)
        functions.wipeEventLog()
        self.assertEqual(self.ids(walk), [])

    def full(self):
        """A log that has gone round: ids count from the oldest on."""
        with kestrove.lock() as store:
            log = store.eventLog
            log.eventLogFull, log.readIndex, log.writeIndex = 1, 5, 5
            for place in range(values.SHM_EVENTS):
                log.record[(place + 5) % values.SHM_EVENTS].eventId = place

    def test_a_full_log_is_walked_from_its_oldest_event(self):
        self.full()
        self.assertEqual(self.ids(kestrove.events()), [*range(values.SHM_EVENTS)])

    def test_events_that_push_old_ones_out_during_a_walk_let_none_be_missed(self):
        self.full()
        walk = kestrove.events()
        seen = [next(walk).id for _ in range(3)]
        for event in (40, 41):
            kestrove.log_event(event)
        seen += self.ids(walk)
        self.assertEqual(seen, [*range(values.SHM_EVENTS), 40, 41])


class Lock(StoreTest):
    def test_the_block_holds_the_store_over_operations(self):
        with kestrove.lock() as store:
            Settings().wan_link_rate = 3072000
            self.assertFalse(lock_is_free())
            with kestrove.lock():
                functions.getUserCount()
            self.assertFalse(lock_is_free())
            self.assertEqual(store.config.wanLinkRate, 3072000)
        self.assertTrue(lock_is_free())

    def test_an_exception_gives_the_lock_back(self):
        with self.assertRaises(ZeroDivisionError), kestrove.lock():
            raise ZeroDivisionError
        self.assertTrue(lock_is_free())

    def test_a_release_without_a_hold_is_an_error(self):
        with self.assertRaises(kestrove.KestroveError) as caught, kestrove.lock():
            functions.kestrove_release()
        self.assertEqual((caught.exception.function, caught.exception.code), ("kestrove_release", values.SHM_EINVAL))


class Functions(StoreTest):
    def test_every_exported_name_is_there_and_described(self):
        for name in dir(functions):
            found = getattr(functions, name)
            if name in kestrove._abi.PROTOTYPES:
                self.assertIn(f"{name}(", found.__doc__)
                self.assertEqual(found.__name__, name)
            self.assertIsNotNone(getattr(raw, name))
        self.assertGreater(len(dir(functions)), 280)

    def test_what_is_not_exported_is_no_function(self):
        for module in (functions, raw):
            with self.assertRaises(AttributeError):
                module.makeCoffee  # pylint: disable=pointless-statement

    def test_the_raw_function_leaves_the_code(self):
        functions.shm_errno.value = 99
        self.assertEqual(raw.getRuleTableEntry(-1, kestrove.FilterRule()), -1)
        self.assertEqual(raw.shm_errno.value, values.SHM_EINVAL)

    def test_minus_one_that_is_an_answer_raises_nothing(self):
        self.assertEqual(functions.checkIp6(bytes(16)), -1)
        self.assertEqual(functions.v4AddressIsLocal(0), -1)

    def test_a_failure_without_a_code_says_so(self):
        functions.shm_errno.value = 7
        with self.assertRaises(kestrove.KestroveError) as caught:
            functions.netMaskCIDRNumber(0)
        self.assertEqual((caught.exception.code, str(caught.exception)), (0, "netMaskCIDRNumber: failed without a code"))

    def test_results_other_than_minus_one_that_are_failures(self):
        with self.assertRaises(kestrove.KestroveError):
            functions.load_shared_memory(b"/nowhere")
        with self.assertRaises(kestrove.KestroveError):
            functions.shm_getMessage(None, 1)

    def test_without_a_store_each_kind_of_result_fails(self):
        subprocess.run(["ipcrm", "-M", "6001"], check=True)
        said = in_another("for name in ('getUserCount', 'checkStatsCounter', 'getLastResetTimeStamp',\n"
                          "             'getKestroveProductName', 'shm_getMonitoredTaskPointer'):\n"
                          "    try: getattr(kestrove.functions, name)()\n"
                          "    except kestrove.KestroveError as error: print(error.name)")
        self.assertEqual(said.split(), ["SHM_EATTACH"] * 5)
        new = in_another("print(kestrove.functions.getSharedMemoryStatus())")
        self.assertEqual(new, "0")

    def test_a_hook_is_a_function_of_python(self):
        called = []
        hook = kestrove._abi.ConfigHook(lambda first, second: called.append((first, second)) or 5)
        self.assertEqual(functions.setKestroveConfigItemPostAct(1, 4000000, 0, b"--", hook, 1, 2), 5)
        self.assertEqual(called, [(1, 2)])

    def test_a_stream_takes_the_dump(self):
        with open("/tmp/dump", "w+", encoding="utf-8") as file:
            with kestrove.stream(file) as stream:
                functions.dumpSharedMemory(stream)
            file.seek(0)
            self.assertTrue(file.read().startswith("Kestrove shared memory:"))

    def test_the_engine_gets_its_snapshot(self):
        block = kestrove.EngineConfiguration()
        functions.setConfiguration(ctypes.addressof(block))
        self.assertEqual((block.ruleCount, block.rule[0].order, block.lan.interfaceName), (3, 1, b"eth1"))


if __name__ == "__main__":
    unittest.main()
