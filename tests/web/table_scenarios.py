# SPDX-License-Identifier: Apache-2.0
"""Rules, routes, addresses, users."""
import appliance
from selenium.webdriver.common.keys import Keys


def rules():
    return [row["source"] for row in appliance.shown("rule", "list")[:-1]]


def row(page, at):
    return page.one(f".grid-row[data-at='{at}']")


def FullTableOfRulesScrollsAtOnce(page):
    appliance.rules(8191)
    page.begin()
    page.open("rules")
    page.says("#rules-count", "8192 rules")
    page.run("document.querySelector('.grid-scroll').scrollTop = 4000 * 30")
    assert len(page.all(".grid-row")) < 120, "rows that nobody sees"
    page.one(".grid").send_keys(Keys.END)
    page.until("the default rule", lambda: "default rule" in row(page, 8191).get_attribute("aria-label"))
    page.one(".grid").send_keys(Keys.HOME)
    page.until("the first", lambda: "10.0.0.0/24" in row(page, 0).get_attribute("aria-label"))
    page.type("[name=search]", "10.31.200.0/24")
    page.says("#rules-count", "1 of 8192")
    assert row(page, 0).get_attribute("aria-label").startswith("8136:")
    page.fits()


def RuleIsMovedByHand(page):
    appliance.rules(6)
    page.begin()
    page.open("rules")
    page.says("#rules-count", "7 rules")
    height = row(page, 0).size["height"]
    page.drag(row(page, 0).find_element("css selector", ".grip"), int(height * 3))
    page.collected(1)
    assert "Rule 0 moved to" in page.run("return JSON.parse(sessionStorage['kestrove-basket'])[0].words")
    before = rules()
    page.review()
    page.apply()
    after = rules()
    assert sorted(after) == sorted(before) and after.index(before[0]) in (2, 3), after


def RuleIsMovedByKeys(page):
    appliance.rules(5)
    page.begin()
    page.open("rules")
    page.says("#rules-count", "6 rules")
    grid = page.one(".grid")
    grid.send_keys(Keys.END)
    page.keys(Keys.ARROW_UP)
    page.keys(Keys.ARROW_UP, held=(Keys.ALT,))
    page.keys(Keys.ARROW_UP, held=(Keys.ALT,))
    page.collected(1)
    page.review()
    page.apply()
    assert rules() == ["10.0.0.0/24", "10.0.1.0/24", "10.0.4.0/24", "10.0.2.0/24", "10.0.3.0/24"], rules()


def RuleIsAddedChangedAndTakenAway(page):
    appliance.rules(3)
    page.begin()
    page.open("rules")
    page.says("#rules-count", "4 rules")
    page.click("#rule-add")
    page.type("dialog [name=source]", "10.9.0.0/16")
    page.type("dialog [name=destinationPorts]", "443")
    page.type("dialog [name=position]", "1")
    page.click("#rule-keep")
    page.collected(1)
    page.says("#rules-count", "5 rules")
    row(page, 0).click()
    page.keys(Keys.ENTER)
    page.type("dialog [name=source]", "10.8.0.0/16")
    page.click("#rule-keep")
    page.collected(2)
    row(page, 3).click()
    page.keys(Keys.DELETE)
    page.collected(3)
    page.review()
    page.apply()
    assert rules() == ["10.8.0.0/16", "10.9.0.0/16", "10.0.1.0/24"], rules()
    added = appliance.shown("rule", "list")[1]
    assert (added["destinationPorts"], added["protocol"]) == ("443", "tcp"), added


def RuleThatMakesNoSenseIsTold(page):
    page.begin()
    page.open("rules")
    page.says("#rules-count", "3 rules")
    page.click("#rule-add")
    page.type("dialog [name=source]", "10.300.0.0/16")
    page.click("#rule-keep")
    page.collected(1)
    page.review()
    page.says("dialog .collected li.wrong", "10.300.0.0/16")
    page.press("Not yet", "dialog")
    page.one(".grid-row.wrong")
    assert len(rules()) == 2


def RoutesAreChangedInOneStep(page):
    page.begin()
    page.open("routes")
    page.press("Take away 172.20.0.0/16")
    page.collected(1)
    for destination in ("172.30.0.0/16", "172.31.0.0/16"):
        page.click("#routes-add")
        page.type("dialog [name=destination]", destination)
        page.type("dialog [name=gateway]", "192.168.10.3")
        page.click("#route-keep")
    page.collected(3)
    page.open("routes6")
    page.click("#routes6-add")
    page.type("dialog [name=destination]", "2001:db8:7::/48")
    page.type("dialog [name=gateway]", "fd00:10::3")
    page.click("#route-keep")
    page.collected(4)
    before = appliance.shown("history")[0]["revision"]
    page.review()
    page.says("dialog .diff", "route add 172.20.0.0/16")
    page.apply()
    listed = [one["destination"] for name in ("route", "route6") for one in appliance.shown(name, "list")]
    assert sorted(listed) == ["172.30.0.0", "172.31.0.0", "2001:db8:7::/48"], listed
    assert appliance.shown("history")[0]["revision"] == before + 1, "one revision"
    assert len(rules()) == 2, "what nobody touched stays"


def AddressesOfBothKindsAreCollected(page):
    page.begin()
    page.open("addresses")
    page.says(".view", "192.168.10.9/24")
    for address, port in (("192.168.77.7/24", "bridge"), ("fd00:99::1/64", "br0")):
        page.click("#addresses-add")
        page.type("dialog [name=address]", address)
        page.choose("dialog [name=interface]", port)
        page.click("#address-keep")
    page.collected(2)
    page.review()
    page.apply()
    listed = {one["address"] for one in appliance.shown("address", "list")}
    assert {"192.168.10.9", "192.168.77.7", "fd00:99::1"} <= listed, listed
    page.press("Take away fd00:99::1")
    page.review()
    page.apply()
    assert "fd00:99::1" not in {one["address"] for one in appliance.shown("address", "list")}


def UserIsAddedAndNoPasswordIsKept(page):
    page.begin()
    page.open("users")
    page.click("#users-add")
    page.type("dialog [name=name]", "carol")
    page.type("dialog [name=password]", "Cucumber7!")
    page.type("dialog [name=again]", "Cucumber8!")
    page.click("#user-form-keep")
    page.says("dialog", "not the same")
    page.type("dialog [name=again]", "Cucumber7!")
    page.click("#user-form-keep")
    page.collected(1)
    assert "Cucumber" not in page.run("return JSON.stringify(sessionStorage) + JSON.stringify(localStorage)")
    page.review()
    page.apply()
    assert "carol" in [one["name"] for one in appliance.shown("user", "list")]
    page.press("Take away carol")
    page.review()
    page.apply()
    assert "carol" not in [one["name"] for one in appliance.shown("user", "list")]


def WeakPasswordIsToldInItsLine(page):
    page.begin()
    page.open("users")
    page.click("#users-add")
    page.type("dialog [name=name]", "carol")
    for name in ("password", "again"):
        page.type(f"dialog [name={name}]", "cucumber")
    page.click("#user-form-keep")
    page.review()
    page.click("#review-apply")
    page.says("dialog .collected li.wrong", "password")
    assert "carol" not in [one["name"] for one in appliance.shown("user", "list")]
