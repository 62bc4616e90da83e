"""A headless browser that keeps account of what a page says and asks for."""

import json
import os
import time

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys


class Browser:
    def __init__(self, profile, has_script=True):
        options = Options()
        options.add_argument("--headless=new")
        options.add_argument(f"--user-data-dir={profile}")
        if os.geteuid() == 0:
            options.add_argument("--no-sandbox")
        if not has_script:
            options.add_experimental_option("prefs", {"profile.managed_default_content_settings.javascript": 2})
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        self.driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        self.keys = Keys
        self.driver.get("about:blank")
        self.driver.get_log("performance")  # of the start
        self.address = None
        self.told = []

    def quit(self):
        self.driver.quit()

    def look(self, width=1280, height=900, scheme="light", media=""):
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "media": media, "features": [{"name": "prefers-color-scheme", "value": scheme}]})
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})
        self.script("return new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done)))")

    def open(self, address):
        self.driver.get("about:blank")
        self.complaints()
        self.address = address.split("#")[0]
        self.driver.get(address)

    def complaints(self):
        """All that pages have said to the console, and what they have asked for besides themselves."""
        self.told += [entry["message"] for entry in self.driver.get_log("browser")]
        for entry in self.driver.get_log("performance"):
            message = json.loads(entry["message"])["message"]
            if message["method"] == "Network.requestWillBeSent":
                url = message["params"]["request"]["url"].split("#")[0]
                if url not in (self.address, "about:blank"):
                    self.told.append(url)
        return self.told

    def script(self, text, *arguments):
        return self.driver.execute_script(text, *arguments)

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def one(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def texts(self, selector):
        return self.script("return [...document.querySelectorAll(arguments[0])].map((each) => each.textContent)",
                           selector)

    def focused(self):
        return self.driver.switch_to.active_element

    def press(self, *keys):
        for key in keys:
            webdriver.ActionChains(self.driver).send_keys(key).perform()

    def tab_to(self, selector):
        """Goes there as somebody without a mouse does."""
        for _ in range(200):
            self.press(Keys.TAB)
            if self.script("return document.activeElement.matches(arguments[0])", selector):
                return self.focused()
        raise AssertionError(f"Tab does not lead to {selector}")

    def wait(self, condition):
        for _ in range(500):
            if condition():
                return
            time.sleep(0.01)
        raise AssertionError("nothing came of it")
