# SPDX-License-Identifier: Apache-2.0
"""The basket: collected, looked through, applied, taken back."""
import re

import appliance


def value(item):
    return appliance.shown("show", item)[0]["value"]


def collect(page, item, words):
    page.open("items")
    page.type(f"#field-{item}", words + "\t")


def ItemIsCollectedShownAndApplied(page):
    page.begin()
    collect(page, "wanLinkRate", "4000000")
    page.collected(1)
    page.run("document.querySelector('[data-item=compression] input[value=off]').click()")
    page.collected(2)
    assert value("wanLinkRate") == 2048000, "nothing is made before"
    page.review()
    page.says("dialog .diff", "set wanLinkRate 4000000")
    page.says("dialog .diff", "set compression off")
    page.type("#confirm-comment", "more for the branch")
    page.apply()
    page.gone("#tray")
    assert (value("wanLinkRate"), value("compression")) == (4000000, "off")
    assert appliance.shown("history")[0]["comment"] == "more for the branch"
    page.until("the field has it", lambda: page.one("#field-wanLinkRate").get_attribute("value") == "4000000")


def RefusedValueIsToldAtItsFieldAndInItsLine(page):
    page.begin()
    collect(page, "wanLinkRate", "1")
    collect(page, "sysContact", "the night shift")
    page.collected(2)
    page.review()
    page.says("dialog .collected li.wrong", "wanLinkRate takes 10000..2147483647")
    assert not page.one("#review-apply").is_enabled()
    page.press("Not yet", "dialog")
    page.says("#field-wanLinkRate-problem", "allowed range")
    assert page.one("#field-wanLinkRate").get_attribute("aria-invalid") == "true"
    page.review()
    page.press("Drop", "dialog li.wrong")
    page.until("the rest can be applied", lambda: page.one("#review-apply").is_enabled())
    page.apply()
    assert (value("sysContact"), value("wanLinkRate")) == ("the night shift", 2048000)


def UnconfirmedChangeGoesBackByTheBar(page):
    page.begin()
    collect(page, "lanLinkRate", "9000000")
    page.review()
    page.type("#confirm-minutes", "5")
    page.apply()
    page.says("#bar-waiting", "A change of alice")
    page.until("it counts down", lambda: re.fullmatch(r"[0-4]:\d\d", page.text("#bar-waiting .left")))
    assert value("lanLinkRate") == 9000000
    page.press("Take it back", "#bar")
    page.gone("#bar-waiting")
    assert value("lanLinkRate") == 100000000


def ConfirmedChangeStays(page):
    page.begin()
    collect(page, "lanLinkRate", "8000000")
    page.review()
    page.type("#confirm-minutes", "soon")
    page.click("#review-apply")
    page.says("#confirm-minutes-problem", "0 to 1440 minutes")
    page.type("#confirm-minutes", "5")
    page.apply()
    page.press("Keep it", "#bar")
    page.gone("#bar-waiting")
    assert value("lanLinkRate") == 8000000
    assert not appliance.shown("confirm", "--status")["pending"]


def ChangeFromTheCommandLineShowsInTheBar(page):
    page.begin()
    appliance.ctl("set", "snmpVersion", "2")
    page.says("#bar-unsaved", "not in the configuration file")
    page.press("Show", "#bar")
    page.says("dialog .diff", "set snmpVersion 2")
    page.press("Close", "dialog")
    page.press("Save now", "#bar")
    page.gone("#bar-unsaved")
    appliance.ctl("set", "compression", "off", "--confirm", "20")
    page.says("#bar-waiting", "A change of root")
    page.press("Keep it", "#bar")
    page.says("#bar", "not permitted to alice")


def SomebodyElsesChangeIsSeenBeforeAnythingIsMade(page):
    page.begin()
    collect(page, "wanLinkRate", "5000000")
    page.review()
    page.until("it can be applied", lambda: page.one("#review-apply").is_enabled())
    appliance.ctl("set", "wanMaximumTransferUnit", "1400")
    page.click("#review-apply")
    page.says("#review-problem", "Somebody else changed the settings")
    assert value("wanLinkRate") == 2048000
    page.until("it can be applied again", lambda: page.one("#review-apply").is_enabled())
    page.apply()
    assert (value("wanLinkRate"), value("wanMaximumTransferUnit")) == (5000000, 1400)


def ModeIsLookedAtBeforeItIsCollected(page):
    page.begin()
    page.open("mode")
    page.says(".way", "Two interfaces")
    page.run("document.querySelector('[name=mode][value=OPMODE_SINGLIF_ONLY]').click()")
    page.type("[name=lan]", "10")
    page.type("[name=wan]", "5000")
    page.click("#mode-look")
    page.says("#mode-problem", "5000")
    page.type("[name=wan]", "20")
    page.click("#mode-look")
    page.says("#mode-preview", "mode single 10 20")
    page.says("#mode-preview", "VLAN 10 and 20")
    page.until("the kernel was tried", lambda: "Trying" not in page.text("#mode-system"))
    page.says("#mode-system", "kestrove.conf")
    assert appliance.shown("mode", "show")["singleInterface"] == "off"
    page.click("#mode-keep")
    page.review()
    page.says("dialog .diff", "mode single 10 20")
    page.press("Not yet", "dialog")


def HistoryLeadsBack(page):
    page.begin()
    before = appliance.shown("history")[0]["revision"]
    collect(page, "sysName", "branch-8")
    page.review()
    page.apply()
    page.open("history")
    page.press(f"Show revision {before + 1}")
    page.says("dialog .diff", "set sysName branch-8")
    page.press("Close", "dialog")
    page.press(f"Go back to revision {before}")
    page.says("dialog .diff", "set sysName branch-7")
    page.click("#back-make")
    page.gone("dialog")
    assert value("sysName") == "branch-7"
    page.says(".view", f"rollback {before}")


def StateIsSavedAndListed(page):
    page.begin()
    page.open("states")
    page.says(".view", "What the script of a state cannot hold")
    page.click("#states-save")
    page.says(".view", "config-")
    page.says(".view", "archive of files")
    page.click("#states-load")
    page.says("dialog", "built anew")
    page.press("Leave it", "dialog")
    page.gone("dialog")
