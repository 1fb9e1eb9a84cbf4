# SPDX-License-Identifier: Apache-2.0
"""Firefox without geckodriver: selenium's commands as those of Marionette, which Firefox itself speaks."""
import json, pathlib, shutil, socket, subprocess, tempfile, time

from selenium.common.exceptions import WebDriverException
from selenium.webdriver.remote.errorhandler import ErrorHandler

# selenium's name of a command, Marionette's, and what of its answer is the value where that is not the whole of it.
COMMANDS = {
    "newSession": "WebDriver:NewSession", "quit": "Marionette:Quit", "get": "WebDriver:Navigate",
    "getCurrentUrl": "WebDriver:GetCurrentURL", "getTitle": "WebDriver:GetTitle", "refresh": "WebDriver:Refresh",
    "findElement": "WebDriver:FindElement", "findElements": "WebDriver:FindElements",
    "findChildElement": "WebDriver:FindElement", "findChildElements": "WebDriver:FindElements",
    "clickElement": "WebDriver:ElementClick", "clearElement": "WebDriver:ElementClear",
    "sendKeysToElement": "WebDriver:ElementSendKeys", "getElementText": "WebDriver:GetElementText",
    "getElementTagName": "WebDriver:GetElementTagName", "isElementEnabled": "WebDriver:IsElementEnabled",
    "isElementSelected": "WebDriver:IsElementSelected", "getElementRect": "WebDriver:GetElementRect",
    "w3cExecuteScript": "WebDriver:ExecuteScript", "w3cExecuteScriptAsync": "WebDriver:ExecuteAsyncScript",
    "screenshot": "WebDriver:TakeScreenshot", "setWindowRect": "WebDriver:SetWindowRect",
    "actions": "WebDriver:PerformActions", "clearActionState": "WebDriver:ReleaseActions",
    "deleteAllCookies": "WebDriver:DeleteAllCookies", "w3cGetActiveElement": "WebDriver:GetActiveElement",
    "setTimeouts": "WebDriver:SetTimeouts",
    "getElementAriaRole": "WebDriver:GetComputedRole", "getElementAriaLabel": "WebDriver:GetComputedLabel"}
ELEMENT = "element-6066-11e4-a52e-4f735466cecf"


class Marionette:
    """What selenium calls a command executor."""
    w3c = True
    keep_alive = True
    browser_name = "firefox"

    def __init__(self, port, process):
        self.process = process
        self.numbers = 0
        self.socket = None
        end = time.monotonic() + 120
        while self.socket is None:
            assert time.monotonic() < end and process.poll() is None, "Firefox does not come up"
            try:
                self.socket = socket.create_connection(("127.0.0.1", port), 180)
            except OSError:
                time.sleep(0.05)
        self.read()  # the greeting

    def read(self):
        head = b""
        while not head.endswith(b":"):
            one = self.socket.recv(1)
            assert one, "Firefox is gone"
            head += one
        left, text = int(head[:-1]), b""
        while len(text) < left:
            text += self.socket.recv(left - len(text))
        return json.loads(text)

    def send(self, name, given):
        self.numbers += 1
        text = json.dumps([0, self.numbers, name, given]).encode()
        self.socket.sendall(b"%d:%s" % (len(text), text))
        _, _, error, value = self.read()
        return error, value

    def execute(self, command, given):
        given = {name: value for name, value in given.items() if name != "sessionId"}
        if command == "findChildElement" or command == "findChildElements":
            given["element"] = given.pop("id")
        if command == "screenshot":
            given["full"] = False
        if command == "quit":
            given = {"flags": ["eForceQuit"]}
        if command == "newSession":
            given = given["capabilities"]["alwaysMatch"]
        error, value = self.send(COMMANDS[command], given)
        if error:
            return {"status": 500, "value": json.dumps({"value": error})}
        if isinstance(value, dict) and set(value) == {"value"}:
            value = value["value"]
        return {"success": 0, "value": value, **({"sessionId": value["sessionId"]} if command == "newSession" else {})}

    def prefer(self, name, number):
        """A setting of the browser itself, from now on."""
        self.in_the_browser("Services.prefs.setIntPref(...arguments)", name, number)

    def be_wide(self, width):
        """What shows the page, within a window that may be wider."""
        self.in_the_browser("for (const name of ['width', 'min-width', 'max-width'])"
                            " gBrowser.selectedBrowser.style.setProperty(name, `${arguments[0]}px`)", width)

    def in_the_browser(self, script, *given):
        error, _ = self.send("Marionette:SetContext", {"value": "chrome"})
        assert not error, error
        error, _ = self.send("WebDriver:ExecuteScript", {"script": script, "args": list(given)})
        assert not error, error
        self.send("Marionette:SetContext", {"value": "content"})

    def close(self):
        self.socket.close()


def start(folder, port=2828):
    profile = pathlib.Path(folder) / "profile"
    profile.mkdir(parents=True)
    (profile / "user.js").write_text(
        f'user_pref("marionette.port", {port});\nuser_pref("ui.prefersReducedMotion", 1);\n'
        'user_pref("browser.shell.checkDefaultBrowser", false);\nuser_pref("datareporting.policy.dataSubmissionEnabled", false);\n'
        'user_pref("app.update.enabled", false);\nuser_pref("network.captive-portal-service.enabled", false);\n'
        'user_pref("network.connectivity-service.enabled", false);\nuser_pref("browser.safebrowsing.enabled", false);\n')
    process = subprocess.Popen(["/usr/bin/firefox-esr", "--headless", "--marionette", "--remote-allow-system-access", "--no-remote", "--profile", str(profile)],
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return Marionette(port, process)
