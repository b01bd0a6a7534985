"""The reader on a virtual X display, driven by the X server's own pointer.

Xvfb gives a display of its own; xdotool moves and presses the X server's
pointer the way a person's mouse does (press, a short hold, release); widgets
are found by their accessible names through AT-SPI, as a screen reader finds
them, so nothing depends on pixel positions. AT-SPI talks over a D-Bus
session bus: a test starts one of its own before it imports this module.
"""

import os
import shutil
import subprocess
import sys
import tempfile
import time

import pyatspi

HOLD_SECONDS = 0.08  # how long a person's click keeps the button down


class Failure(Exception):
    pass


def start_display():
    read_end, write_end = os.pipe()
    server = subprocess.Popen(
        ["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1600x1000x24", "-nolisten", "tcp"],
        pass_fds=(write_end,), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    os.close(write_end)
    with os.fdopen(read_end) as answer:
        number = answer.readline().strip()
    if not number:
        raise Failure("Xvfb did not start")
    return server, ":" + number


def wait_for(what, probe, seconds=10.0):
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        found = probe()
        if found:
            return found
        time.sleep(0.03)
    raise Failure(f"gave up waiting for {what}")


def showing(accessible):
    try:
        return accessible.getState().contains(pyatspi.STATE_SHOWING)
    except Exception:  # the widget went away while we looked
        return False


def find(root, name, role=None):
    """The first showing accessible with that name (and role) under root."""
    stack = [root]
    while stack:
        node = stack.pop()
        try:
            if node.name == name and (role is None or node.getRoleName() == role) and showing(node):
                return node
            stack.extend(node.getChildAtIndex(i) for i in reversed(range(node.childCount)))
        except Exception:
            continue
    return None


def reader_application():
    for app in pyatspi.Registry.getDesktop(0):
        if app is not None and app.name == "Lexicorn Reader":
            return app
    return None


def centre(accessible, x_inset=None):
    box = accessible.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
    x = box.x + (x_inset if x_inset is not None else box.width // 2)
    return x, box.y + box.height // 2


def click(display, point):
    env = dict(os.environ, DISPLAY=display)
    x, y = point
    subprocess.run(["xdotool", "mousemove", "--sync", str(x), str(y), "mousedown", "1"], env=env, check=True)
    time.sleep(HOLD_SECONDS)
    subprocess.run(["xdotool", "mouseup", "1"], env=env, check=True)


def screenshot(display, path):
    subprocess.run(["import", "-window", "root", path], env=dict(os.environ, DISPLAY=display), check=False)


def main(run, usage, arguments):
    """Runs a test on the command line's arguments, the last the screenshot folder; its exit status."""
    if len(sys.argv) != arguments + 1:
        print(usage, file=sys.stderr)
        return 2
    os.makedirs(sys.argv[-1], exist_ok=True)
    try:
        print(run(*sys.argv[1:]))
    except Failure as failure:
        print(f"FAIL: {failure}", file=sys.stderr)
        return 1
    return 0


class ReaderSession:
    """A virtual display and a fresh home folder to start the reader in.

    All is taken down on leaving the with-block; a Failure inside it first
    saves a screenshot of the display as x11-failure.png in shots.
    """

    def __init__(self, reader, plugin, book, shots, sample_dict=None):
        self.reader, self.book, self.shots = reader, book, shots
        self.server, self.display = start_display()
        self.home = tempfile.mkdtemp(prefix="lexicorn-x11-")
        self.process = None
        if sample_dict:
            shutil.copytree(sample_dict, os.path.join(self.home, "Dict"))
        self.env = dict(os.environ, DISPLAY=self.display, HOME=self.home, LEXICORN_HOME=self.home,
                        XDG_CONFIG_HOME=self.home, LEXICORN_PLUGIN=plugin, QT_QPA_PLATFORM="xcb",
                        QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
        # The accessibility bus must be up before the reader looks for it.
        pyatspi.Registry.getDesktop(0)

    def __enter__(self):
        return self

    def start_reader(self):
        """Starts the reader on the book; its accessible application once it shows."""
        self.process = subprocess.Popen([self.reader, self.book], env=self.env,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        return wait_for("the reader", reader_application, 30)

    def stop_reader(self):
        if self.process:
            self.process.kill()
            self.process.wait()
            self.process = None

    def __exit__(self, kind, error, trace):
        if kind is not None and issubclass(kind, Failure):
            screenshot(self.display, os.path.join(self.shots, "x11-failure.png"))
        self.stop_reader()
        self.server.terminate()
        self.server.wait()
        shutil.rmtree(self.home, ignore_errors=True)
        return False
