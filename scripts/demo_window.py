"""The wizard's window as its user meets it: read through the accessibility interface, its buttons pressed by their
captions, its screen photographed. PROGRAM is the wizard of the sample laid out in FOLDER."""
import subprocess
import sys
import time
from pathlib import Path

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

FOLDER = Path(sys.argv[1])
PROGRAM = FOLDER / "drive_c" / "KORLAN" / "KlnUpdt.EXE"
sys.stderr = sys.stdout  # the demo keeps what its desktop complains about in a file; what fails here is to be seen
PATIENCE = 60  # seconds until something counts as never coming


def start():
    return subprocess.Popen([PROGRAM])


def walk(node):
    try:
        yield node
        for index in range(node.get_child_count()):
            child = node.get_child_at_index(index)
            if child is not None:
                yield from walk(child)
    except GLib.Error:  # the window changed meanwhile
        return


def shown():
    """Role, name and node of everything the wizard shows and lets the user reach."""
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        application = desktop.get_child_at_index(index)
        if application is None or "klnupdt" not in (application.get_name() or "").lower():
            continue
        for node in walk(application):
            try:
                states = node.get_state_set()
                if states.contains(Atspi.StateType.SHOWING) and states.contains(Atspi.StateType.ENABLED):
                    yield node.get_role(), (node.get_name() or "").replace("&", ""), node
            except GLib.Error:
                continue


def button(caption):
    for role, name, node in shown():
        if role == Atspi.Role.PUSH_BUTTON and name == caption:
            return node
    return None


def texts():
    return [name for _, name, _ in shown()]


def wait_until(condition, what):
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        found = condition()
        if found:
            return found
        time.sleep(0.1)
    print(f"never came: {what}")
    picture("stuck")
    sys.exit(1)


def wait_for(caption):
    return wait_until(lambda: button(caption), f"the button {caption}")


def press(node):
    node.do_action(0)


def picture(name):
    time.sleep(0.4)  # let the window paint
    subprocess.run(["import", "-window", "root", FOLDER / f"{name}.png"], check=True)
