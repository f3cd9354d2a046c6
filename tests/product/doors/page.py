#!/usr/bin/env python3
"""Looks at the live page in Chromium as somebody would who leaves it open, and prints what it came to.

    page.py URL WIDTH HEIGHT PROCESS

PROCESS is that of the service: it gets SIGUSR1, and the page's title is to be another one. Then the process that faces the
network is killed, and the server asked again before the page is connected. One line of JSON.
"""

import json
import os
import signal
import subprocess
import sys
import tempfile
import threading
import time

LONGEST = 60  # seconds for any one thing; a look that takes longer has failed

# Left in each document before anything else of it runs. What is refused by its policy is kept.
WITNESS = """
window.refused = [];
document.addEventListener("securitypolicyviolation", (each) => refused.push(each.violatedDirective + " " + each.blockedURI));
"""


class Refusal(Exception):
    """What the browser would not do."""


class Browser:
    """Chromium with a profile of its own, spoken to through a pipe."""

    def __init__(self, home):
        to_browser, self._to = os.pipe()
        self._from, from_browser = os.pipe()
        for number in (to_browser, from_browser):
            os.set_inheritable(number, True)
        # It wants them as 3 and 4.
        line = f'exec 3<&{to_browser} 4>&{from_browser}; exec "$@"'
        words = ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--no-first-run",
                 "--remote-debugging-pipe", f"--user-data-dir={home}/profile", "about:blank"]
        self._process = subprocess.Popen(["bash", "-c", line, "bash", *words], close_fds=False,
                                         env={**os.environ, "HOME": home}, stdout=subprocess.DEVNULL,
                                         stderr=subprocess.DEVNULL, start_new_session=True)
        os.close(to_browser)
        os.close(from_browser)
        self._buffer = b""
        self._last = 0
        self._session = None
        self.console = []
        self.asked = []
        self._alarm = threading.Timer(5 * LONGEST, lambda: os.killpg(self._process.pid, signal.SIGKILL))
        self._alarm.daemon = True
        self._alarm.start()

    def end(self):
        self._alarm.cancel()
        try:
            self._session = None
            self.call("Browser.close")
            self._process.wait(LONGEST)
        except (Refusal, RuntimeError, OSError, subprocess.TimeoutExpired):
            pass
        try:
            os.killpg(self._process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        self._process.wait()

    def _read(self):
        while b"\0" not in self._buffer:
            more = os.read(self._from, 1 << 16)
            if not more:
                raise RuntimeError("the browser has gone")
            self._buffer += more
        text, self._buffer = self._buffer.split(b"\0", 1)
        return json.loads(text)

    def call(self, method, **parameters):
        self._last += 1
        message = {"id": self._last, "method": method, "params": parameters}
        if self._session:
            message["sessionId"] = self._session
        os.write(self._to, json.dumps(message).encode() + b"\0")
        while True:
            answer = self._read()
            if answer.get("id") == self._last:
                if "error" in answer:
                    raise Refusal(f"{method}: {answer['error']}")
                return answer["result"]
            self._keep(answer)

    def _keep(self, event):
        if event["method"] == "Log.entryAdded":
            self.console.append(event["params"]["entry"]["text"])
        elif event["method"] == "Runtime.exceptionThrown":
            self.console.append(json.dumps(event["params"]["exceptionDetails"]))
        elif event["method"] == "Network.requestWillBeSent":
            self.asked.append(event["params"]["request"]["url"])

    def open(self, url, width, height, scripts=True):
        self._session = None
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self._session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Log", "Network", "Runtime", "DOM"):
            self.call(f"{domain}.enable")
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=width < 600)
        self.call("Emulation.setScriptExecutionDisabled", value=not scripts)
        self.call("Page.addScriptToEvaluateOnNewDocument", source=WITNESS)
        self.call("Page.navigate", url=url)

    def value(self, expression):
        return self.call("Runtime.evaluate", expression=expression, returnByValue=True)["result"].get("value")

    def source(self):
        root = self.call("DOM.getDocument")["root"]["nodeId"]
        return self.call("DOM.getOuterHTML", nodeId=root)["outerHTML"]


def is_now(is_so):
    try:
        return is_so()
    except Refusal:
        return False  # The page that was asked about gave way to the next one.


def wait_for(what, is_so):
    end = time.monotonic() + LONGEST
    while not is_now(is_so):
        if time.monotonic() > end:
            raise RuntimeError(f"in vain: {what}")
        time.sleep(0.1)


def doors_of(process):
    for task in os.listdir(f"/proc/{process}/task"):
        with open(f"/proc/{process}/task/{task}/children", encoding="ascii") as children:
            for child in children.read().split():
                with open(f"/proc/{child}/cmdline", "rb") as words:
                    if b"mngsrvraid-doors" in words.read():
                        return int(child)
    raise RuntimeError("no process faces the network")


def look(browser, url, width, height, process):
    browser.open(url, width, height, scripts=False)
    wait_for("a page without scripts", lambda: "</main>" in browser.source())
    plain = browser.source()

    browser.open(url, width, height)
    live = '(document.querySelector(".live") || {}).textContent || ""'
    wait_for("a live page", lambda: browser.value(live).startswith("Live"))
    browser.value("window.isTheSame = true")
    before = browser.value("document.title")
    os.kill(process, signal.SIGUSR1)
    wait_for("another title", lambda: browser.value("document.title") != before)
    after = browser.value("document.title")

    console = list(browser.console)  # That a connection is lost is told there.
    os.kill(doors_of(process), signal.SIGKILL)
    wait_for("a page that knows that it is old", lambda: browser.value(live).startswith("Not connected"))
    os.kill(process, signal.SIGUSR1)
    wait_for("what has happened meanwhile", lambda: browser.value("document.title") not in (before, after))
    wait_for("a page that is live again", lambda: browser.value(live).startswith("Live"))
    return {
        "plain": plain,
        "before": before,
        "after": after,
        "again": browser.value("document.title"),
        "isTheSame": browser.value("window.isTheSame === true"),
        "refused": browser.value("window.refused"),
        "isStyled": browser.value("document.styleSheets.length > 0 && document.styleSheets[0].cssRules.length > 0"),
        "width": browser.value("window.innerWidth"),
        "contentWidth": browser.value("document.documentElement.scrollWidth"),
        "console": console,
        "asked": sorted(set(browser.asked)),
    }


def main():
    url, width, height, process = sys.argv[1], int(sys.argv[2]), int(sys.argv[3]), int(sys.argv[4])
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as home:
        browser = Browser(home)
        try:
            found = look(browser, url, width, height, process)
        finally:
            browser.end()
    print(json.dumps(found))


if __name__ == "__main__":
    main()
