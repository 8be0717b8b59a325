"""Messages on the session bus that no panel would send: Clipwren answers or refuses each, and goes on.

MESSAGES: how many; the same ones at every run.
"""

import os
import random
import time

from gi.repository import Gio, GLib

import desktop
from desktop import wait_for

ITEM, MENU, INSTANCE = "/StatusNotifierItem", "/MenuBar", "/app/clipwren/Clipwren"
INTERFACES = {ITEM: "org.kde.StatusNotifierItem", MENU: "com.canonical.dbusmenu",
              INSTANCE: "org.freedesktop.Application"}
PROPERTIES = "org.freedesktop.DBus.Properties"
# The arguments that each method is for.
METHODS = {
    ITEM: {"Activate": "ii", "SecondaryActivate": "ii", "ContextMenu": "ii", "Scroll": "is"},
    MENU: {"GetLayout": "iias", "GetGroupProperties": "aias", "GetProperty": "is", "Event": "isvu",
           "EventGroup": "a(isvu)", "AboutToShow": "i", "AboutToShowGroup": "ai"},
    INSTANCE: {"Open": "asa{sv}", "ActivateAction": "sava{sv}"},
}
NUMBERS = {"y": (0, 255), "n": (-2**15, 2**15 - 1), "q": (0, 2**16 - 1), "i": (-2**31, 2**31 - 1),
           "u": (0, 2**32 - 1), "x": (-2**63, 2**63 - 1), "t": (0, 2**64 - 1)}
# Nothing here chooses a line of the menu or ends the program: that would be a message like any other.
TEXTS = ("", "label", "opened", "hovered", "closed", "vertical", "children-display", "Menu", "IconPixmap", "ä_&<b>",
         "x" * 5000, *INTERFACES.values())


class Nonsense:
    """Arguments of any type and value, the same ones for the same seed."""

    def __init__(self, seed):
        self.random = random.Random(seed)

    def type(self, depth=0):
        kind = self.random.randrange(12 if depth < 4 else 8)
        if kind < 8:
            return self.random.choice("ybnqiuxtdsogvisu")
        if kind == 8:
            return "a" + self.type(depth + 1)
        if kind == 9:
            return "a{" + self.random.choice("sui") + self.type(depth + 1) + "}"
        return "(" + "".join(self.type(depth + 1) for _ in range(self.random.randint(1, 4))) + ")"

    def value(self, kind, depth=0):
        pick = self.random
        if kind in NUMBERS:
            low, high = NUMBERS[kind]
            return GLib.Variant(kind, min(max(pick.choice((low, high, 0, 1, -1, 6, 7)), low), high))
        if kind == "b":
            return GLib.Variant(kind, pick.random() < 0.5)
        if kind == "d":
            return GLib.Variant(kind, pick.choice((0.0, -1.0, 1e308, float("inf"), float("nan"))))
        if kind == "s":
            return GLib.Variant(kind, pick.choice(TEXTS))
        if kind == "o":
            return GLib.Variant(kind, pick.choice(("/", MENU, "/a/b")))
        if kind == "g":
            return GLib.Variant(kind, pick.choice(("i", "a{sv}", "(ii)")))
        if kind == "v":
            return GLib.Variant.new_variant(self.value(self.type(depth + 1), depth + 1))
        if kind.startswith("a{"):
            entry = GLib.VariantType(kind[1:])
            count = pick.choice((0, 1, 3))
            entries = [GLib.Variant.new_dict_entry(self.value(kind[2], depth + 1), self.value(kind[3:-1], depth + 1))
                       for _ in range(count)]
            return GLib.Variant.new_array(entry, entries)
        if kind.startswith("a"):
            count = pick.choice((0, 1, 2, 50 if depth == 0 else 2))
            return GLib.Variant.new_array(GLib.VariantType(kind[1:]),
                                          [self.value(kind[1:], depth + 1) for _ in range(count)])
        return GLib.Variant.new_tuple(*(self.value(part, depth + 1) for part in parts(kind[1:-1])))

    def message(self):
        """(path, interface, member, arguments)"""
        pick = self.random
        path = pick.choice((ITEM, MENU, MENU, INSTANCE))
        interface, members = INTERFACES[path], METHODS[path]
        if pick.random() < 0.15:
            interface, members = PROPERTIES, {"Get": "ss", "GetAll": "s", "Set": "ssv"}
        member = pick.choice(list(members))
        kinds = parts(members[member])
        how = pick.randrange(5)
        if how == 0:
            kinds = kinds[:pick.randrange(len(kinds) + 1)]
        elif how == 1:
            kinds = [self.type() for _ in range(pick.randrange(5))]
        elif how == 2 and kinds:
            kinds[pick.randrange(len(kinds))] = self.type()
        elif how == 3:
            kinds.append(self.type())
        if pick.random() < 0.05:
            member = pick.choice(("Nonsense", "Quit", "get_layout", "Event2"))
        if pick.random() < 0.1:
            interface = pick.choice((None, "org.example.Nothing", PROPERTIES))
        return path, interface, member, GLib.Variant.new_tuple(*(self.value(kind) for kind in kinds))


def parts(signature):
    """The complete types of a signature."""
    found = []
    while signature:
        end = 0
        while signature[end] == "a":
            end += 1
        if signature[end] in "({":
            depth = 0
            while True:
                depth += {"(": 1, "{": 1, ")": -1, "}": -1}.get(signature[end], 0)
                if depth == 0:
                    break
                end += 1
        found.append(signature[:end + 1])
        signature = signature[end + 1:]
    return found


class Messages(desktop.ScreenTest):
    def setUp(self):
        super().setUp()
        # There the item is an object on the bus, whatever windows the tray takes.
        self.clipwren = self.start(environment={"XDG_CURRENT_DESKTOP": "KDE"})
        self.bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        self.name = wait_for(self.item_name, "the item on the bus")

    def item_name(self):
        names = self.bus.call_sync("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "ListNames", None, None, 0,
                                   5000, None).unpack()[0]
        return next((name for name in names
                     if name.startswith(f"org.kde.StatusNotifierItem-{self.clipwren.process.pid}-")), None)

    def ask(self, path, interface, member, arguments, seconds=10):
        """The answer, or the name of the error."""
        message = Gio.DBusMessage.new_method_call(self.name, path, interface, member)
        message.set_body(arguments)
        answer, _ = self.bus.send_message_with_reply_sync(message, Gio.DBusSendMessageFlags.NONE, seconds * 1000, None)
        return answer.get_error_name() or answer.get_body()

    def labels(self):
        answer = self.ask(MENU, INTERFACES[MENU], "GetLayout", GLib.Variant("(iias)", (0, -1, [])))
        return [child[1].get("label") for child in answer.unpack()[1][2]]

    def works(self):
        self.assertTrue(self.clipwren.running())
        self.assertEqual([label for label in self.labels() if label],
                         ["Record Region  (⌘⇧G)", "Open GIF Folder", "Settings…", "Quit Clipwren"])

    def test_arguments_of_other_types(self):
        # Each of these once sent the program around in circles, or ended it.
        for member, arguments in (("EventGroup", GLib.Variant("(s)", ("x",))),
                                  ("EventGroup", GLib.Variant("()", ())),
                                  ("EventGroup", GLib.Variant("(a(si))", ([("a", 1)],))),
                                  ("EventGroup", GLib.Variant("(ai)", ([1, 2],))),
                                  ("GetGroupProperties", GLib.Variant("(a(is)as)", ([(1, "a")], []))),
                                  ("GetGroupProperties", GLib.Variant("(a{sv}as)", ({}, []))),
                                  ("AboutToShowGroup", GLib.Variant("(av)", ([GLib.Variant("s", "1")],))),
                                  ("AboutToShowGroup", GLib.Variant("(i)", (1,)))):
            with self.subTest(member, arguments=arguments.get_type_string()):
                self.assertEqual(self.ask(MENU, INTERFACES[MENU], member, arguments),
                                 "org.freedesktop.DBus.Error.InvalidArgs")
                self.works()

    def test_nonsense(self):
        count = int(os.environ.get("MESSAGES", 1500))
        nonsense = Nonsense(5)
        answered = refused = 0
        for number in range(count):
            message = nonsense.message()
            try:
                answer = self.ask(*message)
            except GLib.Error as error:
                self.fail(f"message {number}, {message[:3]} {message[3].get_type_string()}: {error.message}")
            refused += isinstance(answer, str)
            answered += not isinstance(answer, str)
        print(f"{answered} answered, {refused} refused")
        self.assertGreater(min(answered, refused), count // 10)
        self.works()
        # Some of it was a click, which has opened the menu or the settings.
        for _ in range(4):
            self.desktop.keysym("Escape")
            time.sleep(0.2)
        self.clipwren.select(200, 200, 500, 400)
        time.sleep(0.5)
        self.assertTrue(self.clipwren.stop().is_file())


if __name__ == "__main__":
    desktop.main()
