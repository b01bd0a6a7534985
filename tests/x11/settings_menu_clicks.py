#!/usr/bin/python3
"""The settings menu under real window-system clicks.

Starts the built reader on a virtual X display from a fresh home. Right after
start, while the dictionary is still being read, it opens the dictionary menu
and clicks "Ankiconnect 设置" 20 times; the Anki panel must appear every time.
A click on a switch row's title must flip the switch and leave the menu open.

  settings_menu_clicks.py READER PLUGIN BOOK SAMPLE_DICT SCREENSHOT_DIR
"""

import os
import sys
import time

# AT-SPI talks over a D-Bus session bus; give the test one of its own.
if "LEXICORN_X11_TEST_BUS" not in os.environ:
    os.environ["LEXICORN_X11_TEST_BUS"] = "1"
    os.execvp("dbus-run-session", ["dbus-run-session", "--", sys.executable, *sys.argv])

import pyatspi  # noqa: E402  (needs the session bus above)

from x11_reader import Failure, ReaderSession, centre, click, find, main, screenshot, wait_for  # noqa: E402

ROUNDS = 20
ANKI_ROW = "Ankiconnect 设置"
SWITCH_ROW = "选择复制"
PANEL_CLOSE = "关闭"


def run(reader, plugin, book, sample_dict, shots):
    started = time.monotonic()
    with ReaderSession(reader, plugin, book, shots, sample_dict) as session:
        app = session.start_reader()
        menu_button = wait_for("the dictionary button", lambda: find(app, "dictionary", "push button"), 30)
        for round_number in range(1, ROUNDS + 1):
            click(session.display, centre(menu_button))
            row = wait_for(f"the menu (round {round_number})", lambda: find(app, ANKI_ROW))
            click(session.display, centre(row))
            close = wait_for(f"the Anki panel after a click on \"{ANKI_ROW}\" (round {round_number} of {ROUNDS})",
                             lambda: find(app, PANEL_CLOSE, "push button"), 5)
            if find(app, ANKI_ROW):
                raise Failure(f"the menu stayed open under the panel (round {round_number})")
            if round_number == 1:
                screenshot(session.display, os.path.join(shots, "x11-anki-panel.png"))
            click(session.display, centre(close))
            wait_for("the panel to close", lambda: not find(app, PANEL_CLOSE, "push button"), 5)

        # A click on a switch row's title flips its switch and keeps the menu open.
        click(session.display, centre(menu_button))
        row = wait_for("the menu", lambda: find(app, SWITCH_ROW))
        switch = row.getChildAtIndex(row.childCount - 1)
        was_on = switch.getState().contains(pyatspi.STATE_CHECKED)
        click(session.display, centre(row, x_inset=60))
        wait_for(f"the switch of \"{SWITCH_ROW}\" to flip",
                 lambda: switch.getState().contains(pyatspi.STATE_CHECKED) != was_on, 5)
        time.sleep(0.3)
        if not find(app, SWITCH_ROW):
            raise Failure(f"a click on the title of \"{SWITCH_ROW}\" closed the menu")
        screenshot(session.display, os.path.join(shots, "x11-settings-menu.png"))
        if session.process.poll() is not None:
            raise Failure(f"the reader exited with {session.process.returncode}")
    return f"{ROUNDS} of {ROUNDS} clicks opened the Anki panel ({time.monotonic() - started:.1f} s)"


if __name__ == "__main__":
    sys.exit(main(run, __doc__, 5))
