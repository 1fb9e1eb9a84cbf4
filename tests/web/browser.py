# SPDX-License-Identifier: Apache-2.0
"""Debian's browsers, and what the scenarios say to a page in them."""
import os, pathlib

from selenium import webdriver
from selenium.common.exceptions import StaleElementReferenceException, WebDriverException
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

import appliance
import marionette

PATIENCE = float(os.environ.get("PATIENCE", 180))  # seconds; only what never comes takes so long
HEIGHT = 900


def chromium(folder):
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for word in ("--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--disable-gpu", "--ignore-certificate-errors",
                 "--force-prefers-reduced-motion", f"--user-data-dir={folder}/chromium", "--disable-background-networking"):
        options.add_argument(word)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=webdriver.chrome.service.Service("/usr/bin/chromedriver"), options=options)


def firefox(folder):
    options = webdriver.FirefoxOptions()
    options.accept_insecure_certs = True
    return webdriver.Remote(command_executor=marionette.start(folder), options=options)


START = {"chromium": chromium, "firefox": firefox}


class Page:
    def __init__(self, name, folder, pictures):
        os.environ["HOME"] = folder
        self.driver = START[name](folder)
        self.name, self.width, self.scheme, self.folder = name, 0, "light", pictures

    def be_wide(self, width):
        """The frame of a window is not the page's; neither browser makes a window of 360 without it."""
        if self.width == width:
            return
        if self.name == "firefox":  # whose window is 500 wide at least: what is in it is made narrower
            self.driver.set_window_rect(0, 0, max(width, 500), HEIGHT)
            self.driver.command_executor.be_wide(width)
        else:
            self.driver.set_window_rect(0, 0, width, HEIGHT)
            lost = width - self.run("return window.innerWidth")
            self.driver.set_window_rect(0, 0, width + lost, HEIGHT)
        self.until(f"{width} wide", lambda: self.run("return window.innerWidth") == width)
        self.width = width

    def be_coloured(self, scheme):
        """Light or dark, as the whole machine would be."""
        if self.scheme == scheme:
            return
        if self.name == "chromium":
            self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": scheme}]})
        else:
            self.driver.command_executor.prefer("layout.css.prefers-color-scheme.content-override", {"dark": 0, "light": 1}[scheme])
        self.until(scheme, lambda: self.run("return matchMedia(`(prefers-color-scheme: ${arguments[0]})`).matches", scheme))
        self.scheme = scheme

    def run(self, script, *given):
        return self.driver.execute_script(script, *given)

    def until(self, what, true):
        """Waits for a state; an element that was drawn anew meanwhile is looked for again."""
        wait = WebDriverWait(self.driver, PATIENCE, 0.05, [StaleElementReferenceException, WebDriverException])
        return wait.until(lambda _: true(), f"never: {what}\n{self.text()[:1500]}")

    def text(self, selector="body"):
        return self.run("return [...document.querySelectorAll(arguments[0])].map(e => e.innerText).join('\\n')", selector)

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def one(self, selector):
        """Visible, and there."""
        return self.until(selector, lambda: next((e for e in self.all(selector) if e.is_displayed()), None))

    def gone(self, selector):
        self.until(f"no {selector}", lambda: not any(e.is_displayed() for e in self.all(selector)))

    def says(self, selector, words):
        self.until(f"{words!r} in {selector}", lambda: words in self.text(selector))

    def button(self, words, within="body"):
        return self.until(f"the button {words!r}", lambda: next(
            (e for e in self.all(f"{within} button") if e.is_displayed() and e.is_enabled() and
             words in (e.text.strip(), e.get_attribute("aria-label"))), None))

    def click(self, selector):
        def done():
            element = self.one(selector)
            if not element.is_enabled():
                return False
            self.run("arguments[0].scrollIntoView({block: 'center'})", element)
            element.click()
            return True
        self.until(f"{selector} can be clicked", done)

    def press(self, words, within="body"):
        def done():
            element = self.button(words, within)
            self.run("arguments[0].scrollIntoView({block: 'center'})", element)
            element.click()
            return True
        self.until(f"{words} can be pressed", done)

    def type(self, selector, words):
        element = self.one(selector)
        element.clear()
        element.send_keys(words.replace("\t", Keys.TAB))
        return element

    def choose(self, selector, value):
        self.run("const e = document.querySelector(arguments[0]); e.value = arguments[1];"
                 "e.dispatchEvent(new Event('input', {bubbles: true})); e.dispatchEvent(new Event('change', {bubbles: true}))",
                 selector, value)

    def keys(self, *keys, held=()):
        chain = ActionChains(self.driver)
        for key in held:
            chain.key_down(key)
        for key in keys:
            chain.send_keys(key)
        for key in held:
            chain.key_up(key)
        chain.perform()

    def drag(self, element, down):
        ActionChains(self.driver, duration=50).click_and_hold(element).move_by_offset(0, down // 2).move_by_offset(
            0, down - down // 2).release().perform()

    def open(self, view):
        self.run("location.hash = arguments[0]", view)
        self.one(f".view[data-view={view}]")

    def log_in(self, user="alice", password=appliance.PASSWORD):
        self.type("#user", user)
        self.type("#password", password)
        self.click(".door button")

    def begin(self, user="alice"):
        """A page like one that was opened for the first time, with somebody logged in."""
        self.driver.get(appliance.PAGE)
        self.until("the page", lambda: self.all("#nav:not([hidden]) a") or self.all("#user"))
        self.run("sessionStorage.clear()")
        if self.all("#nav:not([hidden]) a"):
            self.driver.delete_all_cookies()
        self.driver.get(appliance.PAGE)
        self.one("#user")
        self.get_in(user)

    def get_in(self, user):
        """Once more where nobody answered."""
        def inside():
            answered = self.until("an answer", lambda: self.all(".view") or (self.text("#door-problem") and self.one(".door button").is_enabled()))
            if not self.all(".view"):
                self.log_in(user)
            return answered and self.all(".view")

        self.log_in(user)
        self.until("somebody is in", inside)

    def collected(self, count):
        self.until(f"{count} collected", lambda: self.text("#tray").startswith(f"{count} change"))

    def review(self):
        self.click("#tray-review")
        self.one("dialog.review")
        self.until("it was tried out", lambda: "tries it on a copy" not in self.text("dialog.review"))

    def apply(self):
        self.click("#review-apply")
        self.gone("dialog")

    def fits(self):
        wide = self.run("return [document.documentElement.scrollWidth, window.innerWidth]")
        if wide[0] > wide[1]:
            out = self.run("return [...document.querySelectorAll('body *')].filter(e => e.getBoundingClientRect().right > innerWidth)"
                           ".map(e => `${e.localName}.${e.getAttribute('class')}`)")
            assert False, f"scrolls sideways: {wide} at {self.run('return location.hash')}: {out}"

    def complaints(self):
        """What the browser itself had to say: broken modules, what the policy forbids."""
        if self.name != "chromium":
            return []
        return [line["message"] for line in self.driver.get_log("browser")
                if line["level"] == "SEVERE" and "Failed to load resource" not in line["message"]]

    def picture(self, name):
        path = self.folder / str(self.width) / f"{name}.png"
        path.parent.mkdir(parents=True, exist_ok=True)
        self.driver.save_screenshot(str(path))

    def close(self):
        self.driver.quit()
