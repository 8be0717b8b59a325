"""Windows as a screen reader knows them: over the accessibility bus, inside a virtual desktop.

Import it before anything of the toolkit's is started; programs started with `environment` answer it.
"""

import os
import subprocess
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

import desktop  # noqa: E402

environment = {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}


class Bus:
    """The desktop's accessibility bus; without it nobody hears anything. One for the whole process."""

    def __init__(self):
        self.process = subprocess.Popen(["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"],
                                        stderr=subprocess.DEVNULL)
        desktop.wait_for(self.answers, "the accessibility bus")

    @staticmethod
    def answers():
        return subprocess.run(["dbus-send", "--session", "--print-reply", "--dest=org.a11y.Bus", "/org/a11y/bus",
                               "org.a11y.Bus.GetAddress"], capture_output=True).returncode == 0

    def close(self):
        desktop.end(self.process)


def children(element):
    # Another process takes things away while they are looked at.
    try:
        count = element.get_child_count()
        return [child for child in (element.get_child_at_index(i) for i in range(count)) if child]
    except GLib.Error:
        return []


def below(element):
    """Everything in the element, in the order in which it is read."""
    for child in children(element):
        yield child
        yield from below(child)


def window(title):
    """The shown window with that title; None without one."""
    programs = Atspi.get_desktop(0)
    programs.clear_cache()
    for program in children(programs):
        for top in children(program):
            try:
                if top.get_name() == title and is_shown(top):
                    return top
            except GLib.Error:
                continue
    return None


def is_shown(element):
    # Atspi keeps what it has heard; the question is what is so now.
    element.clear_cache()
    return element.get_state_set().contains(Atspi.StateType.SHOWING)


def is_on(element):
    element.clear_cache()
    return element.get_state_set().contains(Atspi.StateType.CHECKED)


def has_focus(element):
    element.clear_cache()
    return element.get_state_set().contains(Atspi.StateType.FOCUSED)


def name(element):
    element.clear_cache()
    return element.get_name()


def labelled(root, label):
    """The element that the label with this text names."""
    for element in below(root):
        for relation in element.get_relation_set():
            if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY and \
                    relation.get_target(0).get_name() == label:
                return element
    return None


def found(root, role, text):
    """The shown element of that role name with that name."""
    for element in below(root):
        if element.get_role_name() == role and element.get_name() == text and is_shown(element):
            return element
    return None


def area(element):
    """(left, top, width, height) on the screen."""
    at = element.get_extents(Atspi.CoordType.SCREEN)
    return at.x, at.y, at.width, at.height


def act(element):
    """What a screen reader's user does with a button or a box."""
    element.do_action(0)
    time.sleep(0.05)
