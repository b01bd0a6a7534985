#!/usr/bin/python3
"""The settings menu under real window-system clicks.

Starts the built reader on a virtual X display (Xvfb) from a fresh home and
clicks with the X server's own pointer (xdotool), the way a person's mouse
does: press, a short hold, release. The widgets are found by their accessible
names through AT-SPI, as a screen reader finds them, so nothing here depends
on pixel positions.

Right after start, while the dictionary is still being read, it opens the
dictionary menu and clicks "Ankiconnect 设置" 20 times; the Anki panel must
appear every time. A click on a switch row's title must flip the switch and
leave the menu open.

  settings_menu_clicks.py READER PLUGIN BOOK SAMPLE_DICT SCREENSHOT_DIR
"""

import os
import shutil
import subprocess
import sys
import tempfile
import time

# AT-SPI talks over a D-Bus session bus; give the test one of its own.
if "LEXICORN_X11_TEST_BUS" not in os.environ:
    os.environ["LEXICORN_X11_TEST_BUS"] = "1"
    os.execvp("dbus-run-session", ["dbus-run-session", "--", sys.executable, *sys.argv])

import pyatspi  # noqa: E402  (needs the session bus above)

from x11_reader import Failure, centre, click, find, reader_application, screenshot, start_display, wait_for  # noqa: E402

ROUNDS = 20
ANKI_ROW = "Ankiconnect 设置"
SWITCH_ROW = "选择复制"
PANEL_CLOSE = "关闭"


def run(reader, plugin, book, sample_dict, shots):
    server, display = start_display()
    home = tempfile.mkdtemp(prefix="lexicorn-x11-")
    process = None
    try:
        shutil.copytree(sample_dict, os.path.join(home, "Dict"))
        env = dict(os.environ, DISPLAY=display, HOME=home, LEXICORN_HOME=home, XDG_CONFIG_HOME=home,
                   LEXICORN_PLUGIN=plugin, QT_QPA_PLATFORM="xcb", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
        # The accessibility bus must be up before the reader looks for it.
        pyatspi.Registry.getDesktop(0)
        process = subprocess.Popen([reader, book], env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

        app = wait_for("the reader's window", reader_application, 30)
        menu_button = wait_for("the dictionary button", lambda: find(app, "dictionary", "push button"), 30)
        for round_number in range(1, ROUNDS + 1):
            click(display, centre(menu_button))
            row = wait_for(f"the menu (round {round_number})", lambda: find(app, ANKI_ROW))
            click(display, centre(row))
            close = wait_for(f"the Anki panel after a click on \"{ANKI_ROW}\" (round {round_number} of {ROUNDS})",
                             lambda: find(app, PANEL_CLOSE, "push button"), 5)
            if find(app, ANKI_ROW):
                raise Failure(f"the menu stayed open under the panel (round {round_number})")
            if round_number == 1:
                screenshot(display, os.path.join(shots, "x11-anki-panel.png"))
            click(display, centre(close))
            wait_for("the panel to close", lambda: not find(app, PANEL_CLOSE, "push button"), 5)

        # A click on a switch row's title flips its switch and keeps the menu open.
        click(display, centre(menu_button))
        row = wait_for("the menu", lambda: find(app, SWITCH_ROW))
        switch = row.getChildAtIndex(row.childCount - 1)
        was_on = switch.getState().contains(pyatspi.STATE_CHECKED)
        click(display, centre(row, x_inset=60))
        wait_for(f"the switch of \"{SWITCH_ROW}\" to flip",
                 lambda: switch.getState().contains(pyatspi.STATE_CHECKED) != was_on, 5)
        time.sleep(0.3)
        if not find(app, SWITCH_ROW):
            raise Failure(f"a click on the title of \"{SWITCH_ROW}\" closed the menu")
        screenshot(display, os.path.join(shots, "x11-settings-menu.png"))
        if process.poll() is not None:
            raise Failure(f"the reader exited with {process.returncode}")
    except Failure:
        screenshot(display, os.path.join(shots, "x11-failure.png"))
        raise
    finally:
        if process:
            process.kill()
            process.wait()
        server.terminate()
        server.wait()
        shutil.rmtree(home, ignore_errors=True)


def main():
    if len(sys.argv) != 6:
        print(__doc__, file=sys.stderr)
        return 2
    os.makedirs(sys.argv[5], exist_ok=True)
    started = time.monotonic()
    try:
        run(*sys.argv[1:])
    except Failure as failure:
        print(f"FAIL: {failure}", file=sys.stderr)
        return 1
    print(f"{ROUNDS} of {ROUNDS} clicks opened the Anki panel ({time.monotonic() - started:.1f} s)")
    return 0


if __name__ == "__main__":
    sys.exit(main())
