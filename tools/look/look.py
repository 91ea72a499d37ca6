"""Looks at pages in headless Chromium: screenshots, and what page_check.js finds, for all widths and
colour schemes. Or makes one picture of a page's top.

usage: look.py FOLDER PAGE...           (screenshots go to FOLDER; PAGE is a file)
       look.py --picture FILE PAGE

Speaks the browser's own protocol over a pair of pipes, descriptors 3 and 4 of the browser: JSON
messages, each ended by a NUL. No port is opened. Status 1 when something was found.
"""

import base64
import itertools
import json
import os
import pathlib
import subprocess
import sys
import tempfile

# Phones, then what is just wider than the style sheet's breakpoints, where it is tightest, and screens.
WIDTHS = (320, 360, 390, 701, 768, 921, 1280, 1920)
SCHEMES = ("light", "dark")
# Of each page one view is as on paper of A4.
VIEWS = (*itertools.product(WIDTHS, SCHEMES), (794, "print"))
PICTURE_WIDTH = 1200
WINDOW_HEIGHT = 900
CHECK = (pathlib.Path(__file__).parent / "page_check.js").read_text()
OPTIONS = (
    "--headless --disable-gpu --disable-quic --no-first-run --hide-scrollbars"
    " --disable-background-networking --disable-component-update --disable-sync"
    " --remote-debugging-pipe"
).split() + (["--no-sandbox"] if os.geteuid() == 0 else [])


class Browser:
    """One page of one browser."""

    def __init__(self, profile):
        command_end, self.commands = os.pipe()
        self.replies, reply_end = os.pipe()
        # Each takes a number beyond 4 first, as 3 and 4 may be among those just given out.
        command_end, reply_end = (os.dup2(fd, 10 + i) for i, fd in enumerate((command_end, reply_end)))
        self.process = subprocess.Popen(
            ["chromium", *OPTIONS, f"--user-data-dir={profile}"],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            pass_fds=(3, 4), preexec_fn=lambda: (os.dup2(10, 3), os.dup2(11, 4)))
        os.close(command_end)
        os.close(reply_end)
        self.unread = b""
        self.ids = itertools.count(1)
        self.session = None
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call(
            "Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        self.call("Page.enable")

    def message(self):
        while b"\0" not in self.unread:
            some = os.read(self.replies, 1 << 20)
            if not some:
                sys.exit("look: the browser went away")
            self.unread += some
        message, self.unread = self.unread.split(b"\0", 1)
        return json.loads(message)

    def call(self, method, **parameters):
        number = next(self.ids)
        request = {"id": number, "method": method, "params": parameters}
        if self.session:
            request["sessionId"] = self.session
        os.write(self.commands, json.dumps(request).encode() + b"\0")
        while (reply := self.message()).get("id") != number:
            pass
        if "error" in reply:
            sys.exit(f"look: {method}: {reply['error']['message']}")
        return reply["result"]

    def open(self, address):
        self.call("Page.navigate", url=address)
        while self.message().get("method") != "Page.loadEventFired":
            pass

    def set_view(self, width, scheme):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=WINDOW_HEIGHT,
                  deviceScaleFactor=1, mobile=False)
        is_print = scheme == "print"
        self.call("Emulation.setEmulatedMedia", media="print" if is_print else "",
                  features=[{"name": "prefers-color-scheme",
                             "value": "light" if is_print else scheme}])

    def evaluate(self, script):
        reply = self.call("Runtime.evaluate", expression=script, returnByValue=True)
        if "exceptionDetails" in reply:
            sys.exit(f"look: {reply['exceptionDetails']}")
        return reply["result"]["value"]

    def screenshot(self, path, whole):
        reply = self.call("Page.captureScreenshot", captureBeyondViewport=whole)
        path.write_bytes(base64.b64decode(reply["data"]))

    def close(self):
        self.call("Browser.close")
        self.process.wait()


def look_at(browser, page, folder):
    """Screenshots of the page in all views; returns what is wrong in each."""
    browser.open(page.resolve().as_uri())
    faults = []
    for width, scheme in VIEWS:
        browser.set_view(width, scheme)
        view = f"{page.stem}-{width}-{scheme}"
        faults += [f"{view}: {fault}" for fault in browser.evaluate(CHECK)]
        browser.screenshot(folder / f"{view}.png", whole=True)
    return faults


def make_picture(browser, page, file):
    browser.set_view(PICTURE_WIDTH, "light")
    browser.open(page.resolve().as_uri())
    browser.screenshot(file, whole=False)


def main():
    is_picture = sys.argv[1] == "--picture"
    target, *pages = [pathlib.Path(argument) for argument in sys.argv[2 if is_picture else 1:]]
    with tempfile.TemporaryDirectory() as profile:
        browser = Browser(profile)
        if is_picture:
            make_picture(browser, pages[0], target)
            faults = []
        else:
            target.mkdir(parents=True, exist_ok=True)
            faults = [fault for page in pages for fault in look_at(browser, page, target)]
        browser.close()
    for fault in faults:
        print(fault)
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
