# SPDX-License-Identifier: Apache-2.0
"""In and out, looking around."""
import json, re

import appliance
from selenium.webdriver.common.keys import Keys

VIEWS = ("dashboard", "events", "items", "rules", "routes", "routes6", "addresses", "mode", "users", "history", "states")
BETWEEN = {360: 768, 1440: 1920}


def WrongPasswordIsToldAndNothingIsShown(page):
    page.driver.get(appliance.PAGE)
    page.driver.delete_all_cookies()
    page.driver.get(appliance.PAGE)
    page.log_in(password="Passw0rd?")
    page.says("#door-problem", "wrong")
    assert not any(e.is_displayed() for e in page.all("#nav, #tray, #bar"))
    assert page.run("return document.activeElement.id") == "password"

    def tried_again():
        page.log_in()
        page.until("an answer", lambda: page.all(".view") or (page.text("#door-problem") and page.one(".door button").is_enabled()))
        return page.all(".view")

    page.until("the delay is over", tried_again)


def LoggingOutShowsTheDoorAgain(page):
    page.begin()
    page.says("#unit-name", "branch-7")
    page.click("#log-out")
    page.one("#user")
    page.run("location.hash = 'users'")
    assert "bertha" not in page.text()
    page.driver.get(appliance.PAGE)
    page.one("#user")


def ReaderSeesEverythingAndChangesNothing(page):
    page.begin("bertha")
    page.open("items")
    page.one("[data-item=compression]")
    assert all(not e.is_enabled() for e in page.all(".item input, .item select"))
    page.open("rules")
    page.says("#rules-count", "3 rules")
    assert not page.one("#rule-add").is_enabled()
    page.open("routes")
    page.says(".view", "172.20.0.0/16")
    assert not page.all(".view td.acts")


def DashboardIsDrawnAndCounts(page):
    page.begin()
    page.says(".way", "LAN · eth1")
    page.says(".way", "Two interfaces")
    page.until("a reading", lambda: "WAN" in page.one("canvas[aria-label^=Rates]").get_attribute("aria-label"))
    drawn = page.run("const c = document.querySelector('canvas'), d = c.getContext('2d').getImageData(0, 0, c.width, c.height).data;"
                     "return d.some(v => v !== 0)")
    assert drawn, "an empty canvas"
    assert len(page.all(".shares tbody tr")) == 8
    kept = "dispatchEvent(new Event('pagehide')); return JSON.parse(sessionStorage['kestrove-series'] ?? '[]').length"
    page.open("history")
    before = page.run(kept)
    assert before > 1, before
    page.until("it goes on beside another view", lambda: page.run(kept) > before + 1)
    page.driver.refresh()
    page.one(".view")
    assert page.run(kept) > before + 1, "a reload forgets"


def NoViewScrollsSideways(page):
    here = page.width
    page.begin()
    for view in VIEWS:
        page.open(view)
        page.until("it is filled", lambda: len(page.text(f".view[data-view={view}]")) > 20)
        for width in (BETWEEN[here], here):
            page.be_wide(width)
            page.fits()
        assert page.run("return document.querySelectorAll('h1').length") == 1
        assert not page.run("const ids = [...document.querySelectorAll('[id]')].map(e => e.id); return ids.filter((id, i) => ids.indexOf(id) !== i)")
        nameless = page.run("""return [...document.querySelectorAll('input, select, button, canvas, dialog')].filter(e => e.checkVisibility())
            .filter(e => !(e.labels?.length || e.getAttribute('aria-label') || e.getAttribute('aria-labelledby') || e.textContent.trim()))
            .map(e => e.outerHTML)""")
        assert not nameless, nameless


def KeyboardAloneLeadsThroughAChange(page):
    page.begin()
    page.run("location.hash = 'items'")
    page.one("#field-wanLinkRate")
    page.until("the heading has the focus", lambda: page.run("return document.activeElement.tagName") == "H1")
    walked = []
    while not walked or walked[-1] != "field-wanLinkRate":
        page.keys(Keys.TAB)
        walked.append(page.run("return document.activeElement.id || document.activeElement.name || document.activeElement.tagName"))
        assert len(walked) < 60, walked
    page.keys("a", held=(Keys.CONTROL,))
    page.keys("3000000", Keys.TAB)
    page.collected(1)
    page.until("the review has the focus", lambda: page.run("document.getElementById('tray-review').focus(); return document.activeElement.id") == "tray-review")
    page.keys(Keys.ENTER)
    page.until("it can be applied", lambda: page.one("#review-apply").is_enabled())
    while page.run("return document.activeElement.id") != "review-apply":
        assert page.run("return document.activeElement.closest('dialog') !== null || document.activeElement === document.body"), "the focus left the dialog"
        page.keys(Keys.TAB)
    page.keys(Keys.ENTER)
    page.gone("dialog")
    assert appliance.shown("show", "wanLinkRate")[0]["value"] == 3000000


def EventsComeLiveAndAreFiltered(page):
    appliance.ctl("events", "clear")  # of another width
    page.begin()
    page.open("events")
    page.says("#events-state", "live")
    appliance.ctl("set", "compression", "off", "--source", "4", "--user", "carol")
    page.says(".events-list", "carol")
    page.type("[name=words]", "carol")
    page.until("only hers", lambda: page.text("#events-count").startswith("1 of "))
    page.type("[name=words]", "")
    page.choose("[name=from]", "SSH")
    page.until("only by SSH", lambda: page.text("#events-count").startswith("1 of "))
    page.choose("[name=from]", "")
    page.press("Hold")
    appliance.ctl("set", "compression", "on", "--user", "dora")
    page.says("#events-state", "held")
    assert "dora" not in page.text(".events-list")
    page.press("Hold")
    page.says(".events-list", "dora")


def SomebodyElseDoesNotFindWhatWasCollected(page):
    page.begin()
    page.open("items")
    page.type("#field-sysLocation", "cellar\t")
    page.collected(1)
    page.driver.delete_all_cookies()
    page.one("#user")
    page.log_in("bertha")
    page.one(".view")
    page.gone("#tray")


def EndedSessionKeepsWhatIsCollected(page):
    page.begin()
    page.open("items")
    page.type("#field-sysLocation", "cellar\t")
    page.collected(1)
    page.driver.delete_all_cookies()
    page.one("#user")
    page.says("#door-problem", "has ended")
    page.log_in()
    page.collected(1)
    page.review()
    page.says("dialog .diff", "cellar")
