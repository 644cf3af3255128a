"""What assistive tools see on a session's display. Needs the system's own Python, which has the bindings; they
connect to one accessibility bus in a process's life."""

import os
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "tools"))
from session import descendants  # noqa: E402

import gi  # noqa: E402

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402


def start(session):
    """Gives the session a window manager and an accessibility bus, and this process the way to it."""
    session.environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
    for command in [["openbox"], ["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"]]:
        session.processes.append(subprocess.Popen(command, env=session.environment, stderr=subprocess.DEVNULL))
    for name in ["DBUS_SESSION_BUS_ADDRESS", "DISPLAY", "XDG_RUNTIME_DIR"]:
        os.environ[name] = session.environment[name]
    session.wait_for(lambda: Atspi.init() in (0, 1), "the accessibility bus is there")


def look(role, name, *states):
    """What has such a role, begins with this name, is on the screen now and has these states, if there is any."""
    for node in descendants(Atspi.get_desktop(0)):
        if role in node.get_role_name() and node.get_name().startswith(name):
            if all(map(node.get_state_set().contains, (Atspi.StateType.SHOWING, *states))):
                return node
    return None


def wait_for(session, question, what):
    """As the session does; what vanishes while it is looked at is no answer."""
    def careful():
        try:
            return question()
        except GLib.Error:
            return None
    return session.wait_for(careful, what)


def find(session, role, name, *states):
    return wait_for(session, lambda: look(role, name, *states), f"there is a {role} “{name}”")
