"""browser.py: headless Chromium for the tests of pages: a browser with a profile
of its own, windows of a width that may be a phone's, and what the console says.
"""

import json
import shutil
import tempfile

from selenium import webdriver
from selenium.webdriver.chrome.service import Service

OPTIONS = [
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync",
    "--disable-dev-shm-usage",
]


class Browser:
    """Chromium with a fresh profile, which goes with it."""

    def __init__(self, switches=()):
        self._profile = tempfile.mkdtemp(prefix="rtif-chromium-")
        options = webdriver.ChromeOptions()
        options.binary_location = shutil.which("chromium")
        for option in [*OPTIONS, *switches, f"--user-data-dir={self._profile}"]:
            options.add_argument(option)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        self.driver = webdriver.Chrome(service=Service(shutil.which("chromedriver")),
                                       options=options)

    def close(self):
        self.driver.quit()
        shutil.rmtree(self._profile, ignore_errors=True)

    def window(self, width, height=900):
        """The size of the page in CSS pixels; a real window is never as narrow as a phone."""
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})

    def prefer(self, theme):
        """What the system likes better, "light" or "dark"."""
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "features": [{"name": "prefers-color-scheme", "value": theme}]})

    def open(self, path, fragment=""):
        """Opens a file as a new page, also when it is the one that is open."""
        self.driver.get("about:blank")
        self.driver.get(f"file://{path}{fragment}")

    def js(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def complaints(self):
        """What the console has said since the last time."""
        return [entry["message"] for entry in self.driver.get_log("browser")]

    def requests(self):
        """The addresses that were asked for since the last time, but the files themselves."""
        addresses = []
        for entry in self.driver.get_log("performance"):
            message = json.loads(entry["message"])["message"]
            if message["method"] == "Network.requestWillBeSent":
                addresses.append(message["params"]["request"]["url"])
        return [one for one in addresses if not one.startswith(("file://", "data:", "about:", "chrome:"))]
