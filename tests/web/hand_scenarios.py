# SPDX-License-Identifier: Apache-2.0
"""A hand on the mouse, another on the keys, while the page draws what others change."""
import re

import appliance
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.keys import Keys

ANSWERS = "return performance.getEntriesByType('resource').filter((one) => one.name.endsWith(arguments[0]) && one.responseStatus === 200).length"


def looked_again(page, path, act):
    """What act changed has come to the page, in a reply of its own."""
    before = page.run(ANSWERS, path)
    act()
    page.until(f"{path} has come again", lambda: page.run(ANSWERS, path) > before)


def focus(page):
    return page.run("const one = document.activeElement; return one.getAttribute('aria-label') || one.textContent")


def place(element):
    return element.location["y"]


def ClickIsNotLostToWhatIsDrawnMeanwhile(page):
    page.begin()
    page.open("routes")
    button = page.button("Take away 172.20.0.0/16")
    ActionChains(page.driver, duration=50).click_and_hold(button).perform()
    looked_again(page, "/api/1/routes", lambda: appliance.ctl("route", "add", "172.19.0.0/16", "192.168.10.3"))
    assert "172.19.0.0/16" not in page.text(".view"), "drawn under the hand"
    ActionChains(page.driver, duration=50).release().perform()
    page.collected(1)
    page.says(".view", "172.19.0.0/16")
    page.button("Leave 172.20.0.0/16 as it is")


def RowThatIsDraggedStaysTheSameRow(page):
    page.begin()
    page.open("rules")
    page.says("#rules-count", "3 rules")
    first = page.one(".grid-row[data-at='0']").get_attribute("aria-label").partition(": ")[2]
    grip = page.one(".grid-row[data-at='0'] .grip")
    height = page.one(".grid-row[data-at='0']").size["height"]
    ActionChains(page.driver, duration=50).click_and_hold(grip).move_by_offset(0, height).perform()
    looked_again(page, "/api/1/rules", lambda: appliance.ctl("rule", "add", "0", "--from", "10.99.0.0/16"))
    ActionChains(page.driver, duration=50).move_by_offset(0, height).release().perform()
    page.collected(1)
    page.says("#rules-count", "4 rules")
    page.review()
    page.says("dialog .collected", f"moved to 1: {first.partition(' →')[0]}")


def WhatComesByItselfMovesNothing(page):
    page.begin()
    page.open("routes")
    button = page.button("Take away 172.20.0.0/16")
    before = place(button)
    appliance.ctl("set", "compression", "off", "--confirm", "600")
    appliance.ctl("set", "snmpVersion", "2")
    page.until("it counts down", lambda: re.fullmatch(r"9:59:\d\d", page.text("#bar-waiting .left")))
    page.one("#bar-unsaved")
    assert place(button) == before
    page.fits()
    lowest = page.run("return document.querySelector('#foot').getBoundingClientRect().bottom - innerHeight")
    assert abs(lowest) < 1, lowest
    page.press("Take away 172.20.0.0/16")
    page.collected(1)


def FocusStaysWhereARowIsDrawnAnew(page):
    page.begin()
    page.open("routes")
    page.run("arguments[0].focus()", page.button("Take away 172.20.0.0/16"))
    page.keys(Keys.ENTER)
    page.until("the row keeps the focus", lambda: focus(page) == "Leave 172.20.0.0/16 as it is")
    appliance.ctl("route", "add", "172.19.0.0/16", "192.168.10.3")
    page.says(".view", "172.19.0.0/16")
    assert focus(page) == "Leave 172.20.0.0/16 as it is"
    page.keys(Keys.ENTER)
    page.gone("#tray")
    page.until("the row keeps the focus", lambda: "172.20.0.0/16" in focus(page))
    page.run("arguments[0].focus()", page.button("Change 172.20.0.0/16"))
    page.keys(Keys.ENTER)
    page.one("dialog [name=gateway]").clear()
    page.one("dialog [name=gateway]").send_keys("192.168.10.4", Keys.ENTER)
    page.collected(1)
    page.until("the row has the focus again", lambda: focus(page) == "Change 172.20.0.0/16")
