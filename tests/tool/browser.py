"""A browser without a screen, for tests that look at pages as a user does."""
import base64
import json
import re
import subprocess
import urllib.request

ELEMENT = "element-6066-11e4-a52e-4f735466cecf"
BROWSER_FLAGS = [
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
    "--disable-component-update", "--disable-sync", "--disable-dev-shm-usage", "--window-size=1280,860"]


class Failure(Exception):
    pass


def equal(what, expected, found):
    if expected != found:
        raise Failure(f"{what}: expected {expected!r}, found {found!r}")


class Browser:
    """A session of the driver; the browser has a profile of its own that goes away with it."""

    def __init__(self, profile):
        self.driver = subprocess.Popen(["chromedriver", "--port=0"], stdout=subprocess.PIPE, text=True)
        self.open = urllib.request.build_opener(urllib.request.ProxyHandler({})).open
        self.base = None
        for line in self.driver.stdout:
            started = re.search(r"started successfully on port (\d+)", line)
            if started:
                self.base = f"http://127.0.0.1:{started[1]}/session"
                break
        if not self.base:
            raise Failure("chromedriver does not start")
        options = {"args": BROWSER_FLAGS + [f"--user-data-dir={profile}"]}
        logs = {"browser": "ALL", "performance": "ALL"}
        capabilities = {"browserName": "chrome", "goog:chromeOptions": options, "goog:loggingPrefs": logs}
        self.base += "/" + self.call("POST", "", {"capabilities": {"alwaysMatch": capabilities}})["sessionId"]

    def call(self, method, path, body=None):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.base + path, data, {"Content-Type": "application/json"}, method=method)
        try:
            with self.open(request, timeout=60) as reply:
                return json.load(reply)["value"]
        except urllib.error.HTTPError as error:
            raise Failure(f"{path}: {json.load(error)['value']['message']}") from error

    def end(self):
        try:
            self.call("DELETE", "")
        finally:
            self.driver.terminate()
            self.driver.wait()

    def script(self, text, *arguments):
        return self.call("POST", "/execute/sync", {"script": text, "args": list(arguments)})

    def find(self, selector):
        return self.call("POST", "/element", {"using": "css selector", "value": selector})[ELEMENT]

    def click(self, selector):
        self.call("POST", f"/element/{self.find(selector)}/click", {})

    def type(self, selector, text):
        self.call("POST", f"/element/{self.find(selector)}/value", {"text": text})

    def text(self, selector):
        return self.script("return document.querySelector(arguments[0]).textContent", selector)

    def wheel(self, selector, delta):
        origin = {ELEMENT: self.find(selector)}
        action = {"type": "scroll", "x": 0, "y": 0, "deltaX": 0, "deltaY": delta, "origin": origin}
        self.call("POST", "/actions", {"actions": [{"type": "wheel", "id": "wheel", "actions": [action]}]})

    def log(self, kind):
        return self.call("POST", "/se/log", {"type": kind})

    def dark(self, dark):
        media = {"features": [{"name": "prefers-color-scheme", "value": "dark" if dark else "light"}]}
        self.call("POST", "/goog/cdp/execute", {"cmd": "Emulation.setEmulatedMedia", "params": media})

    def picture(self, path):
        path.write_bytes(base64.b64decode(self.call("GET", "/screenshot")))

    def go_to(self, address):
        self.call("POST", "/url", {"url": address})

    def begin(self):
        """Whatever the browser shows at its start is over before the first page comes."""
        self.go_to("about:blank")
        self.log("performance")

    def check_silence(self, addresses):
        """Nothing but the pages was asked for, and none of them said anything on the console."""
        equal("console", [], [entry["message"] for entry in self.log("browser")])
        events = [json.loads(entry["message"])["message"] for entry in self.log("performance")]
        asked = [e["params"]["request"]["url"] for e in events if e["method"] == "Network.requestWillBeSent"]
        equal("requests", addresses, asked)
