"""Debian's Chromium, headless."""

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service


def browser():
    options = Options()
    options.binary_location = "/usr/bin/chromium"
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage"):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


def look(driver, url, width, height, scheme, media="screen"):
    """Shows a page in a window of so many pixels, in the scheme "light" or "dark"."""
    driver.execute_cdp_cmd(
        "Emulation.setDeviceMetricsOverride",
        {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})
    driver.execute_cdp_cmd(
        "Emulation.setEmulatedMedia",
        {"media": media, "features": [{"name": "prefers-color-scheme", "value": scheme}]})
    driver.get(url)
