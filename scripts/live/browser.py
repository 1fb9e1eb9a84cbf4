#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Speaks to the appliance as its page does: browser.py URL look, or browser.py URL change USER <SCRIPT, where the first
line is the password and the rest the changes.

A server that starts anew refuses or cuts off a connection: it is asked again for a minute.
"""
import http.client
import json
import ssl
import sys
import time
import urllib.parse

PATIENCE = 60  # seconds


class Browser:
    def __init__(self, url):
        self.place = urllib.parse.urlsplit(url)
        self.origin = f"{self.place.scheme}://{self.place.netloc}"
        self.own = {}  # what goes with each request once somebody is logged in

    def send(self, method, path, body, headers):
        """Status, headers and text of the answer. The certificate is the appliance's own: nobody else signed it."""
        connection = http.client.HTTPSConnection(self.place.netloc, timeout=PATIENCE, context=ssl._create_unverified_context())
        try:
            connection.request(method, path, body, headers)
            reply = connection.getresponse()
            return reply.status, reply.headers, reply.read().decode()
        finally:
            connection.close()

    def reach(self, method, path, body=None, headers=None):
        end = time.monotonic() + PATIENCE
        while True:
            try:
                found = self.send(method, path, body, headers or {})
                if found[0] not in (502, 503) or time.monotonic() > end:
                    return found
            except (OSError, http.client.HTTPException):
                if time.monotonic() > end:
                    raise
            time.sleep(0.1)

    def ask(self, method, path, body=None):
        """Status and data of a request below /api/1. What changes something says whose page it comes from."""
        headers = dict(self.own)
        if method != "GET":
            headers.update({"Origin": self.origin, "Sec-Fetch-Site": "same-origin", "Content-Type": "application/json"})
        status, replied, text = self.reach(method, "/api/1" + path, None if body is None else json.dumps(body), headers)
        self.cookie = (replied["Set-Cookie"] or "").split(";")[0]
        return status, json.loads(text) if text else None

    def log_in(self, user, password):
        status, session = self.ask("POST", "/session", {"user": user, "password": password})
        if status == 201:
            self.own = {"Cookie": self.cookie, "X-CSRF-Token": session["csrf"]}
        return status

    def log_out(self):
        return self.ask("DELETE", "/session")[0]


def must(status, wanted, what):
    if status not in wanted:
        sys.exit(f"browser: {what}: {status}")


def look(browser):
    must(browser.send("GET", "/", None, {})[0], {200}, "the page")
    must(browser.send("GET", "/api/1", None, {})[0], {200}, "the store behind it")


def change(browser, user):
    """The collected changes are shown as a difference before they are made."""
    password, *lines = sys.stdin.read().splitlines()
    must(browser.reach("GET", "/")[0], {200}, "the page")
    must(browser.log_in(user, password), {201}, "log-in")
    basket = {"script": "\n".join(lines) + "\n"}
    status, seen = browser.ask("POST", "/apply", {**basket, "check": True, "diff": True})
    must(status, {200}, f"the difference: {seen}")
    for row in seen["changes"]:
        print("\n".join(mark + row[side] for mark, side in (("- ", "before"), ("+ ", "after")) if row[side]))
    status, made = browser.ask("POST", "/apply?comment=on+the+page", basket)
    must(status, {200}, f"the change: {made}")
    print("applied" if made["changed"] else "nothing to change")
    must(browser.log_out(), {200, 204}, "log-out")


if __name__ == "__main__":
    {"look": look, "change": change}[sys.argv[2]](Browser(sys.argv[1]), *sys.argv[3:])
