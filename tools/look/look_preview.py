"""Looks at `toplistctl preview` in headless Chromium: edits, breaks and fixes the source of a sample site,
and checks what the browser shows, and how soon. Screenshots go to FOLDER.

usage: look_preview.py TOPLISTCTL FOLDER

Prints what is wrong. Status 1 when something is.
"""

import pathlib
import signal
import subprocess
import sys
import tempfile
import time

from look import CHECK, Browser

SOON_SECONDS = 0.5
PATIENCE_SECONDS = 10
VIEWS = ((1280, "light"), (1280, "dark"), (390, "light"), (1920, "light"))

HEADING = "document.getElementById('page').contentDocument?.querySelector('h1')?.textContent"
ERROR = ("(() => { const errors = document.getElementById('errors');"
         " return errors.hidden ? '' : errors.querySelector('li').innerText; })()")
PAPER = ("(() => { const view = document.getElementById('page').contentWindow;"
         " return view.getComputedStyle(view.document.body).backgroundColor; })()")
SPACING = ("(() => { const view = document.getElementById('page').contentWindow;"
           " return view.getComputedStyle(view.document.querySelector('h1')).letterSpacing; })()")

faults = []


def wait_for(browser, what, script, is_right, limit=PATIENCE_SECONDS):
    """Waits until the script's value is right; reports when that takes longer than the limit."""
    script = f"(() => {{ try {{ return ({script}) ?? '' }} catch {{ return '' }} }})()"  # while a page loads
    started = time.monotonic()
    while not is_right(value := browser.evaluate(script)):
        if time.monotonic() - started > PATIENCE_SECONDS:
            sys.exit(f"{what}: still {value!r}")
        time.sleep(0.02)
    took = time.monotonic() - started
    print(f"{what}: {took:.2f} s")
    if took > limit:
        faults.append(f"{what}: took {took:.2f} s")


def click(browser, selector):
    browser.evaluate(f"document.querySelector({selector!r}).click(), 0")


def edit_break_and_fix(browser, source, folder):
    text = source.read_text()
    lines = text.split("\n")
    number = next(i for i, line in enumerate(lines, 1) if "<h1>" in line)
    source.write_text(text.replace("Top 50 of the day</h1>", "Fifty at a glance</h1>"))
    wait_for(browser, "an edited source reloads the page", HEADING, lambda value: value == "Fifty at a glance", SOON_SECONDS)
    lines[number - 1] += " %%"
    source.write_text("\n".join(lines))
    column = len(lines[number - 1]) - 1
    place = f"d/tl/index.tpl.src:{number}:{column}"
    wait_for(browser, "a broken source shows its error", ERROR, lambda value: place in value, SOON_SECONDS)
    browser.screenshot(folder / "preview-error.png", whole=False)
    source.write_text(text)
    wait_for(browser, "a fixed source hides the error", ERROR, lambda value: value == "", SOON_SECONDS)
    wait_for(browser, "the page is there again", HEADING, lambda value: value == "Top 50 of the day")


def switch_views(browser):
    for scheme, paper in (("dark", "rgb(22, 27, 28)"), ("light", "rgb(247, 244, 237)")):
        click(browser, f"[value={scheme}]")
        wait_for(browser, f"the {scheme} page", PAPER, lambda value, paper=paper: value == paper)
    click(browser, "[value=phone]")
    wait_for(browser, "the phone's width", "document.getElementById('page').clientWidth", lambda value: value == 390)
    click(browser, "[name=width]")


def look(browser, site, server, folder):
    browser.set_view(1280, "light")
    browser.open(server.stdout.readline().strip())
    wait_for(browser, "the first page", HEADING, lambda value: value == "Top 50 of the day")
    for width, scheme in VIEWS:
        browser.set_view(width, scheme)
        view = f"preview-{width}-{scheme}"
        faults.extend(f"{view}: {fault}" for fault in browser.evaluate(CHECK))
        browser.screenshot(folder / f"{view}.png", whole=False)
    browser.set_view(1280, "light")
    edit_break_and_fix(browser, site / "d/tl/index.tpl.src", folder)
    switch_views(browser)
    with (site / "style.css").open("a") as style:
        style.write("h1 { letter-spacing: 7px }\n")
    wait_for(browser, "an edited style sheet reloads the page", SPACING, lambda value: value == "7px", SOON_SECONDS)
    server.send_signal(signal.SIGINT)
    if server.wait() != 0:
        faults.append(f"Ctrl-C: status {server.returncode}")
    wait_for(browser, "the end is shown", "document.getElementById('lost').hidden", lambda value: value is False)


def main():
    program, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as scratch:
        site = pathlib.Path(scratch, "site")
        subprocess.run([program, "sample", site], check=True, stdout=subprocess.DEVNULL)
        server = subprocess.Popen([program, "preview", "--site", site, "--port", "0"],
                                  stdout=subprocess.PIPE, text=True)
        browser = Browser(pathlib.Path(scratch, "profile"))
        try:
            look(browser, site, server, folder)
        finally:
            server.terminate()
            server.wait()
            browser.close()
    for fault in faults:
        print(f"WRONG: {fault}")
    sys.exit(1 if faults else 0)


main()
