# SPDX-License-Identifier: Apache-2.0
"""Seen and heard by everybody: light and dark, by keyboard, by what a screen reader is told."""
import pathlib

import appliance
from selenium.webdriver.common.keys import Keys
from way_scenarios import VIEWS

CONTRAST = (pathlib.Path(__file__).parent / "contrast.js").read_text()


def filled(page, view):
    page.open(view)
    page.until("it is filled", lambda: len(page.text(f".view[data-view={view}]")) > 20)


def furnished(page):
    """Changes that are collected, refused, unsaved and unconfirmed: the page with all its colours."""
    page.begin()
    appliance.ctl("set", "compression", "off", "--confirm", "600")
    appliance.ctl("set", "snmpVersion", "2")
    page.open("items")
    page.type("#field-wanLinkRate", "1\t")
    page.collected(1)
    page.type("#field-sysContact", "the night shift\t")
    page.collected(2)
    page.open("routes")
    page.press("Take away 172.20.0.0/16")
    page.collected(3)
    page.open("rules")
    page.says("#rules-count", "3 rules")
    page.one(".grid").send_keys(Keys.DELETE)
    page.collected(4)
    page.review()
    page.says("dialog .collected li.wrong", "wanLinkRate")


def readable(page, what):
    page.picture(f"{what}-{page.scheme}")
    found = page.run(CONTRAST)
    assert found["count"] > 5, found
    return [(what, page.scheme, one) for one in found["faint"]]


def EveryTextCanBeReadInLightAndDark(page):
    furnished(page)
    faint = []
    for scheme in ("dark", "light"):
        page.be_coloured(scheme)
        faint += readable(page, "review")
    page.press("Not yet", "dialog")
    page.one("#bar-waiting")
    page.one("#bar-unsaved")
    for scheme in ("dark", "light"):
        page.be_coloured(scheme)
        for view in VIEWS:
            filled(page, view)
            faint += readable(page, view)
    page.click("#log-out")
    page.one("#user")
    for scheme in ("dark", "light"):
        page.be_coloured(scheme)
        faint += readable(page, "door")
    assert not faint, "\n".join(map(str, faint))


# What a person works with, as it is seen now: behind a dialog nothing can be worked with.
WORKABLE = """const workable = () => [...(document.querySelector('dialog[open]') ?? document).querySelectorAll('a[href], button, input, select, textarea, [tabindex="0"]')]
    .filter((one) => one.checkVisibility() && !one.disabled);"""


def nameless(page, what):
    def looked_through():
        return [(what, one.get_attribute("outerHTML")[:200]) for one in page.run(WORKABLE + "return workable()")
                if not one.accessible_name.strip() or (one.aria_role in ("", "generic", "none") and one.get_attribute("type") != "password")]
    return page.until("nothing is drawn anew meanwhile", lambda: (looked_through(),))[0]


def EveryControlSaysWhatItIs(page):
    furnished(page)
    found = nameless(page, "review")
    page.press("Not yet", "dialog")
    for view in VIEWS:
        filled(page, view)
        found += nameless(page, view)
        tables = page.run("return [...document.querySelectorAll('table')].filter((one) => one.checkVisibility())")
        heads = page.run("return arguments[0].map((one) => one.querySelectorAll('th[scope=col]').length)", tables)
        assert all(heads) and all(one.aria_role == "table" and one.accessible_name for one in tables), (view, heads)
    for view, opener in (("rules", "#rule-add"), ("routes", "#routes-add"), ("addresses", "#addresses-add"), ("users", "#users-add")):
        filled(page, view)
        page.click(opener)
        assert page.one("dialog").accessible_name and page.one("dialog").aria_role == "dialog"
        found += nameless(page, opener)
        page.press("Leave it", "dialog")
        page.gone("dialog")
    page.click("#log-out")
    page.one("#user")
    found += nameless(page, "door")
    assert not found, "\n".join(map(str, found))


WALK = WORKABLE + """
window.walked = new Set();
window.unseen = new Set();
const outlined = (one) => one && getComputedStyle(one).outlineStyle !== 'none' && parseFloat(getComputedStyle(one).outlineWidth) >= 2;
window.watched ??= addEventListener('focusin', ({target}) => {
    walked.add(target);
    if (!target.matches('.skip') && !outlined(target) && !outlined(target.closest('label'))) unseen.add(target.outerHTML.slice(0, 200));
}) ?? true;
document.querySelector('.skip').focus();
return workable().length"""

# Of a group of radio buttons the keyboard stops at one.
MISSED = WORKABLE + """
const groups = new Set([...walked].filter((one) => one.type === 'radio').map((one) => one.name));
const another = ({type, name}) => type !== 'radio' || (!groups.has(name) && groups.add(name));
return [workable().filter((one) => one.tabIndex >= 0 && !walked.has(one) && another(one))
    .map((one) => one.outerHTML.slice(0, 200)), [...unseen]]"""


def TabReachesEveryControlAndTheFocusIsSeen(page):
    furnished(page)
    page.press("Not yet", "dialog")
    page.gone("dialog")
    page.one("#bar-waiting")
    page.one("#bar-unsaved")
    for view in VIEWS:
        filled(page, view)
        left = page.run(WALK) + 20
        missed, unseen = page.run(MISSED)
        while missed and left > 0:  # never beyond the last one: there the browser's own controls begin
            page.keys(*[Keys.TAB] * len(missed))
            left -= len(missed)
            missed, unseen = page.run(MISSED)
        assert not missed and not unseen, (view, missed, unseen)


HEAR = """window.heard = [];
for (const region of document.querySelectorAll('[aria-live]')) {
    new MutationObserver((changes) => {
        for (const {addedNodes} of changes) for (const one of addedNodes) heard.push(`${region.id}: ${one.textContent}`);
    }).observe(region, {childList: true, subtree: true});
}"""


def WhatHappensIsTold(page):
    def told(region, words):
        page.until(f"{region} tells {words!r}", lambda: any(
            one.startswith(region) and words in one for one in page.run("return heard")))

    page.begin()
    page.run(HEAR)
    page.open("items")
    page.type("#field-wanLinkRate", "1\t")
    told("polite", "1 change collected.")
    page.review()
    told("urgent", "1 change refused")
    page.press("Drop", "dialog li.wrong")
    page.gone("dialog")
    page.open("rules")
    page.says("#rules-count", "3 rules")
    page.keys(Keys.ARROW_DOWN)
    page.one(".grid").send_keys(Keys.HOME)
    page.keys(Keys.ARROW_DOWN, held=(Keys.ALT,))
    told("polite", "Moved to 1.")
    page.review()
    page.apply()
    told("polite", "Applied.")
    appliance.ctl("set", "snmpVersion", "2")
    told("polite", "not in the configuration file")
    page.open("events")
    page.says("#events-state", "live")
    appliance.ctl("set", "compression", "off", "--user", "carol")
    told("polite", "Information from")
