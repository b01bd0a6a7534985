#!/usr/bin/python3
"""The first start without dictionaries, under real window-system clicks.

Starts the built reader on a virtual X display from a fresh home that has no
Dict folder. The reader asks whether to copy the sample dictionaries or to
import the user's own; a click on "Copy the samples" copies them, and the
reader's window comes up. A second start asks nothing.

  first_start_clicks.py READER PLUGIN BOOK SCREENSHOT_DIR
"""

import os
import shutil
import sys

# AT-SPI talks over a D-Bus session bus; give the test one of its own.
if "LEXICORN_X11_TEST_BUS" not in os.environ:
    os.environ["LEXICORN_X11_TEST_BUS"] = "1"
    os.execvp("dbus-run-session", ["dbus-run-session", "--", sys.executable, *sys.argv])

from x11_reader import Failure, ReaderSession, centre, click, find, main, screenshot, wait_for  # noqa: E402  (needs the session bus above)

COPY = "Copy the samples"


def run(reader, plugin, book, shots):
    with ReaderSession(reader, plugin, book, shots) as session:
        dict_folder = os.path.join(session.home, "Dict")
        app = session.start_reader()
        copy = wait_for("the question about dictionaries", lambda: find(app, COPY, "push button"), 30)
        screenshot(session.display, os.path.join(shots, "x11-first-start.png"))
        click(session.display, centre(copy))
        wait_for("the dictionary button of the reader's window", lambda: find(app, "dictionary", "push button"), 30)
        copied = sorted(os.listdir(dict_folder)) if os.path.isdir(dict_folder) else []
        if not {"LDOCE5_html.json", "collins.json", "wordforms.json"} <= set(copied):
            raise Failure(f"the sample dictionaries were not copied: Dict holds {copied}")
        session.stop_reader()

        # Asked once: the next start goes straight to the window, even without Dict.
        shutil.rmtree(dict_folder)
        app = session.start_reader()
        wait_for("the dictionary button of the reader's window", lambda: find(app, "dictionary", "push button"), 30)
        if find(app, COPY, "push button"):
            raise Failure("the second start asked again")
    return "the first start copied the samples; the second asked nothing"


if __name__ == "__main__":
    sys.exit(main(run, __doc__, 4))
