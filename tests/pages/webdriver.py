"""A headless browser driven over the WebDriver protocol, with only the commands that tests of pages need."""

import base64
import json
import re
import subprocess
import tempfile
import time
import urllib.error
import urllib.request

CHROMIUM_OPTIONS = (
    "--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-sync",
    "--disable-background-networking", "--disable-component-update", "--disable-dev-shm-usage",
    "--force-device-scale-factor=1", "--window-size=1400,1000",
)
# No proxy for local connections.
OPENER = urllib.request.build_opener(urllib.request.ProxyHandler({}))


class Browser:
    def __init__(self, chromium, chromedriver):
        self.profile = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        self.driver = subprocess.Popen(
            [chromedriver, "--port=0"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True
        )
        self.session = None
        try:
            self.address = f"http://127.0.0.1:{self.read_port()}"
            options = {"binary": chromium, "args": [*CHROMIUM_OPTIONS, f"--user-data-dir={self.profile.name}"]}
            capabilities = {"alwaysMatch": {"browserName": "chrome", "goog:chromeOptions": options}}
            self.session = self.call("POST", "/session", {"capabilities": capabilities})["sessionId"]
        except BaseException:
            self.close()
            raise

    def read_port(self):
        for line in self.driver.stdout:
            match = re.search(r"started successfully on port (\d+)", line)
            if match:
                return match[1]
        raise RuntimeError("chromedriver did not start")

    def close(self):
        if self.session:
            self.call("DELETE", f"/session/{self.session}")
        self.driver.terminate()
        self.driver.wait()
        self.driver.stdout.close()
        self.profile.cleanup()

    def call(self, method, path, body=None):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.address + path, data, {"Content-Type": "application/json"}, method=method)
        with OPENER.open(request, timeout=120) as response:
            return json.load(response)["value"]

    def do(self, path, body):
        return self.call("POST", f"/session/{self.session}/{path}", body)

    def open(self, page):
        self.do("url", {"url": page.resolve().as_uri()})

    def run(self, script, *arguments):
        """Runs the script with `arguments` and returns its result."""
        return self.do("execute/sync", {"script": script, "args": list(arguments)})

    def press(self, key):
        actions = [{"type": "keyDown", "value": key}, {"type": "keyUp", "value": key}]
        self.do("actions", {"actions": [{"type": "key", "id": "keyboard", "actions": actions}]})

    def click(self, css):
        element = next(iter(self.do("element", {"using": "css selector", "value": css}).values()))
        # The browser lays out rows only when they come into view, which can move the element away from the click.
        last_try = time.monotonic() + 10
        while True:
            try:
                self.do(f"element/{element}/click", {})
                return
            except urllib.error.HTTPError:
                if time.monotonic() > last_try:
                    raise
                time.sleep(0.1)

    def emulate(self, scheme="light", media=""):
        """Sets the colour scheme and the CSS medium. An empty medium means "screen", and "print" for printed pages."""
        features = [{"name": "prefers-color-scheme", "value": scheme}]
        self.command("Emulation.setEmulatedMedia", media=media, features=features)

    def resize(self, width, height):
        self.command("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1,
                     mobile=False)

    def command(self, name, **parameters):
        """Runs a command of the browser's own protocol."""
        return self.do("goog/cdp/execute", {"cmd": name, "params": parameters})

    def cpu_time(self):
        """CPU time of the page's main thread in seconds. Enable Performance with timeDomain threadTicks first."""
        metrics = {metric["name"]: metric["value"] for metric in self.command("Performance.getMetrics")["metrics"]}
        return metrics["TaskDuration"]

    def save_screenshot(self, file, highest=4000):
        """Saves the whole page, not only its visible part, up to a height of `highest` pixels."""
        width, height = self.run("return [innerWidth, document.documentElement.scrollHeight]")
        # The window gets the height of the picture, because the browser lays out only visible rows.
        self.resize(width, min(height, highest))
        picture = self.command("Page.captureScreenshot")["data"]
        self.command("Emulation.clearDeviceMetricsOverride")
        file.write_bytes(base64.b64decode(picture))

    def save_print(self, file):
        file.write_bytes(base64.b64decode(self.do("print", {"orientation": "landscape"})))


TAB, ENTER, SPACE = "\ue004", "\ue007", " "
