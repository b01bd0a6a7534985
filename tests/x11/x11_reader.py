"""The reader on a virtual X display, driven by the X server's own pointer.

Xvfb gives a display of its own; xdotool moves and presses the X server's
pointer the way a person's mouse does (press, a short hold, release); widgets
are found by their accessible names through AT-SPI, as a screen reader finds
them, so nothing depends on pixel positions. AT-SPI talks over a D-Bus
session bus: a test starts one of its own before it imports this module.
"""

import os
import subprocess
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


