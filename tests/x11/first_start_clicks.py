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
import subprocess
import sys
import tempfile

# AT-SPI talks over a D-Bus session bus; give the test one of its own.
if "LEXICORN_X11_TEST_BUS" not in os.environ:
    os.environ["LEXICORN_X11_TEST_BUS"] = "1"
    os.execvp("dbus-run-session", ["dbus-run-session", "--", sys.executable, *sys.argv])

import pyatspi  # noqa: E402  (needs the session bus above)

from x11_reader import Failure, centre, click, find, reader_application, screenshot, start_display, wait_for  # noqa: E402

COPY = "Copy the samples"


def start_reader(reader, book, env):
    return subprocess.Popen([reader, book], env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def stop(process):
    process.kill()
    process.wait()


def run(reader, plugin, book, shots):
    server, display = start_display()
    home = tempfile.mkdtemp(prefix="lexicorn-x11-")
    dict_folder = os.path.join(home, "Dict")
    process = None
    try:
        env = dict(os.environ, DISPLAY=display, HOME=home, LEXICORN_HOME=home, XDG_CONFIG_HOME=home,
                   LEXICORN_PLUGIN=plugin, QT_QPA_PLATFORM="xcb", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
        pyatspi.Registry.getDesktop(0)  # the accessibility bus is up before the reader looks for it
        process = start_reader(reader, book, env)
        app = wait_for("the reader", reader_application, 30)
        copy = wait_for("the question about dictionaries", lambda: find(app, COPY, "push button"), 30)
        screenshot(display, os.path.join(shots, "x11-first-start.png"))
        click(display, centre(copy))
        wait_for("the dictionary button of the reader's window", lambda: find(app, "dictionary", "push button"), 30)
        copied = sorted(os.listdir(dict_folder)) if os.path.isdir(dict_folder) else []
        if not {"LDOCE5_html.json", "collins.json", "wordforms.json"} <= set(copied):
            raise Failure(f"the sample dictionaries were not copied: Dict holds {copied}")
        stop(process)

        # Asked once: the next start goes straight to the window, even without Dict.
        shutil.rmtree(dict_folder)
        process = start_reader(reader, book, env)
        app = wait_for("the reader", reader_application, 30)
        wait_for("the dictionary button of the reader's window", lambda: find(app, "dictionary", "push button"), 30)
        if find(app, COPY, "push button"):
            raise Failure("the second start asked again")
    except Failure:
        screenshot(display, os.path.join(shots, "x11-failure.png"))
        raise
    finally:
        if process:
            stop(process)
        server.terminate()
        server.wait()
        shutil.rmtree(home, ignore_errors=True)


def main():
    if len(sys.argv) != 5:
        print(__doc__, file=sys.stderr)
        return 2
    os.makedirs(sys.argv[4], exist_ok=True)
    try:
        run(*sys.argv[1:])
    except Failure as failure:
        print(f"FAIL: {failure}", file=sys.stderr)
        return 1
    print("the first start copied the samples; the second asked nothing")
    return 0


if __name__ == "__main__":
    sys.exit(main())
