"""The status item in a real panel: PANEL_COMMAND tells which. Every click is a real click on what the panel shows.

With CLIPWREN_SHOTS naming a folder, screenshots of the panel in each state are left there.
"""

import os
import pathlib
import re
import shlex
import subprocess
import time

from PIL import ImageGrab
from Xlib import error

import desktop
from desktop import BUILD, ScreenTest, end, wait_for

PANEL = shlex.split(os.environ["PANEL_COMMAND"])
HAS_ITEM_HOST = PANEL[0] in ("xfce4-panel", "mate-panel")
RED, GREY = (0xFF, 0x3B, 0x30), (0x85, 0x85, 0x85)
MENU = ["Record Region  (⌘⇧G)", "Open GIF Folder", None, "Settings…", None, "Quit Clipwren"]


def shoot(name):
    picture = ImageGrab.grab(xdisplay="")
    folder = os.environ.get("CLIPWREN_SHOTS")
    if folder:
        desktops = "item" if os.environ["XDG_CURRENT_DESKTOP"].startswith("KDE") else "window"
        picture.crop((900, 0, 1280, 160)).save(pathlib.Path(folder) / f"{PANEL[0]}-{desktops}-{name}.png")
    return picture


def gdbus(name, path, method, *arguments):
    return subprocess.run(["gdbus", "call", "--session", "--dest", name, "--object-path", path, "--method", method,
                           *arguments], check=True, capture_output=True, text=True).stdout


def item_names():
    """The StatusNotifierItems on the bus."""
    names = gdbus("org.freedesktop.DBus", "/", "org.freedesktop.DBus.ListNames")
    return re.findall(r"'(org\.kde\.StatusNotifierItem-[^']*)'", names)


class Panel:
    """The panel of the desktop, which can be taken down and started again."""

    def __init__(self):
        self.process = None

    def stop(self):
        if self.process:
            end(self.process)
            self.process = None
        else:
            pid = int(os.environ["PANEL_PID"])
            os.kill(pid, 15)

    def start(self, **environment):
        self.process = subprocess.Popen(PANEL, env={**os.environ, **environment}, stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)


panel = Panel()


class StatusItemTest(ScreenTest):
    def start_in_panel(self, **options):
        clipwren = self.start(**options)
        wait_for(self.item, "the item")
        return clipwren

    def item(self):
        """Where our window in the tray is: (left, top, width, height). None while there is none."""
        for window in self.desktop.tray_windows_named("Clipwren"):
            try:
                at, origin = window.get_geometry(), window.translate_coords(self.desktop.root, 0, 0)
            except (error.BadWindow, error.BadDrawable):
                continue  # gone meanwhile
            return -origin.x, -origin.y, at.width, at.height
        return None

    def picture(self):
        left, top, width, height = wait_for(self.item, "the item")
        return ImageGrab.grab(bbox=(left, top, left + width, top + height), xdisplay="").convert("RGB")

    def count(self, picture, color):
        return sum(pixel == color for pixel in picture.getdata())

    def click_item(self, number=1):
        left, top, width, height = wait_for(self.item, "the item")
        self.desktop.click(left + width - height // 2, top + height // 2, number)

    def menu(self):
        """The box of our own menu while it is open."""
        for window in self.desktop.root.query_tree().children:
            try:
                attributes, at = window.get_attributes(), window.get_geometry()
            except (error.BadWindow, error.BadDrawable):
                continue
            if attributes.map_state == 2 and attributes.override_redirect and 60 < at.height < 200 and at.width > 100:
                return at.x, at.y, at.width, at.height
        return None

    def choose(self, line):
        """Opens the menu by a click on the item and clicks on one of its six lines, two of them separators."""
        self.click_item()
        left, top, width, height = wait_for(self.menu, "the menu")
        time.sleep(0.3)  # a menu that just opened takes the click that opened it for a double one
        share = {0: 0.11, 1: 0.33, 3: 0.6, 5: 0.88}[line]
        self.desktop.click(left + width // 3, top + int(height * share))

    def record(self):
        self.choose(0)
        wait_for(self.desktop.selecting, "the selector")
        self.desktop.drag(200, 300, 600, 600)
        wait_for(self.desktop.recording, "the veil")

    def test_clicks_start_stop_and_quit(self):
        pattern = self.pattern(200, 300, 400, 300, 15, 400)
        clipwren = self.start_in_panel()
        idle = self.item()
        self.assertLessEqual(abs(idle[2] - idle[3]), 2, "a square")
        shoot("idle")
        self.click_item()
        wait_for(self.menu, "the menu")
        shoot("menu")
        self.click_item()
        wait_for(lambda: not self.menu(), "the menu's end")

        for round_number in range(2):
            pattern.go() if round_number == 0 else None
            self.record()
            wait_for(lambda: (self.item() or (0, 0, 0, 0))[2] > idle[2] + 30, "room for the text")
            wait_for(lambda: self.count(self.picture(), RED) > 50, "the red picture")
            first = self.picture()
            shoot("recording")
            # The text is all that changes.
            wait_for(lambda: self.picture().tobytes() != first.tobytes(), "another size text")
            self.assertIsNone(self.menu())
            self.click_item(1 + round_number)
            self.assertIsNone(self.menu(), "a click while recording opens no menu")
            clipwren.wait_for_gif()
            wait_for(lambda: (self.item() or (0, 0, 0, 0))[2] == idle[2], "the item without text")
            self.assertEqual(self.count(self.picture(), RED), 0)
        self.assertTrue(self.desktop.bare())

        self.choose(5)
        self.assertEqual(clipwren.process.wait(10), 0)
        wait_for(lambda: not self.item(), "the item's end")
        self.assertEqual(item_names(), [])

    def test_command_q_only_in_the_menu(self):
        clipwren = self.start_in_panel()

        def command_q():
            self.desktop.keysym("Control_L", True)
            self.desktop.keysym("q")
            self.desktop.keysym("Control_L", False)
        command_q()
        desktop.holds_for(clipwren.running, "Clipwren without a menu")
        self.click_item()
        wait_for(self.menu, "the menu")
        command_q()
        self.assertEqual(clipwren.process.wait(10), 0)

    def test_settings_from_the_menu(self):
        self.start_in_panel()
        self.choose(3)
        wait_for(lambda: self.desktop.windows_named("Settings"), "the settings")

    def test_the_panel_may_go_and_come(self):
        clipwren = self.start_in_panel()
        light = self.darkest()
        panel.stop()
        wait_for(lambda: not self.item(), "the item's end")
        self.assertEqual(self.desktop.all_windows_named("Clipwren", overriding=True), [], "no window is left behind")
        panel.start(GTK_THEME="Adwaita:dark")
        wait_for(self.item, "the item in the new panel")
        if HAS_ITEM_HOST:
            self.assertLess(light, 100, "dark on a light panel")
            wait_for(lambda: self.lightest() > 200, "a light picture on a dark panel")
        self.assertEqual(item_names(), [], "one icon, not two")
        shoot("dark")

        # While recording: what it showed it shows again, and a click still stops.
        self.record()
        wait_for(lambda: self.count(self.picture(), RED) > 50, "the red picture")
        panel.stop()
        wait_for(lambda: not self.item(), "the item's end")
        panel.start()
        wait_for(self.item, "the item in the third panel")
        wait_for(lambda: (self.item() or (0, 0, 0, 0))[2] > 50, "room for the text")
        wait_for(lambda: self.count(self.picture(), RED) > 50, "the red picture")
        self.click_item()
        clipwren.wait_for_gif()

    def darkest(self):
        return min(sum(pixel) // 3 for pixel in self.picture().getdata())

    def lightest(self):
        return max(sum(pixel) // 3 for pixel in self.picture().getdata())

    def test_quitting_in_any_state(self):
        for state in ("idle", "selecting", "recording", "encoding"):
            with self.subTest(state):
                pattern = self.pattern(200, 300, 400, 300, 30, 200)
                pattern.go()
                clipwren = self.start_in_panel()
                if state == "selecting":
                    self.desktop.hot_key()
                    wait_for(self.desktop.selecting, "the selector")
                elif state != "idle":
                    clipwren.select(200, 300, 600, 600)
                    time.sleep(1)
                    if state == "encoding":
                        self.desktop.hot_key()
                        wait_for(self.desktop.bare, "the veil's end")
                began = time.monotonic()
                asked = subprocess.run([BUILD / "clipwren", "--quit"], timeout=20)
                self.assertEqual(asked.returncode, 0)
                self.assertEqual(clipwren.process.wait(10), 0)
                took = time.monotonic() - began
                print(f"  quit while {state}: {took * 1000:.0f} ms", flush=True)
                self.assertLess(took, 3)
                self.assertTrue(self.desktop.bare())
                wait_for(lambda: not self.item(), "the item's end")
                self.assertFalse(self.desktop.hot_key_is_taken())
                pattern.close()
                text = "free"
                subprocess.run(["xclip", "-selection", "clipboard"], input=text, text=True, timeout=10)
                # It goes on in the background, which may take the clipboard a moment later.
                wait_for(lambda: subprocess.run(["xclip", "-o", "-selection", "clipboard"], capture_output=True,
                                                text=True, timeout=10).stdout == text, "the clipboard of another program")


class ItemTest(StatusItemTest):
    """The same panel asked for a StatusNotifierItem instead, as on desktops that make pictures of tray windows."""

    ENVIRONMENT = {"XDG_CURRENT_DESKTOP": "KDE:MATE" if PANEL[0] == "mate-panel" else "KDE"}

    # What does not look at our window in the tray.
    test_clicks_start_stop_and_quit = test_command_q_only_in_the_menu = test_settings_from_the_menu = None
    test_the_panel_may_go_and_come = test_quitting_in_any_state = None

    def setUp(self):
        super().setUp()
        previous = os.environ["XDG_CURRENT_DESKTOP"]
        os.environ.update(self.ENVIRONMENT)
        self.addCleanup(os.environ.__setitem__, "XDG_CURRENT_DESKTOP", previous)

    def item(self):
        """Where the panel shows the picture, found by its colours."""
        screen = ImageGrab.grab(bbox=(0, 0, 1920, 40), xdisplay="").convert("RGB")
        found = [(index % 1920, index // 1920) for index, pixel in enumerate(screen.getdata()) if pixel in (RED, GREY)]
        if len(found) < 40:
            return None
        xs, ys = [x for x, _ in found], [y for _, y in found]
        return min(xs), min(ys), max(xs) - min(xs) + 1, max(ys) - min(ys) + 1

    def test_menu_over_the_bus(self):
        self.start_in_panel()
        name, = item_names()
        layout = gdbus(name, "/MenuBar", "com.canonical.dbusmenu.GetLayout", "0", "--", "-1", "[]")
        lines = re.findall(r"<\((\d+), (\{.*?\}), @av \[\]\)>", layout)
        self.assertEqual([int(number) for number, _ in lines], [1, 2, 3, 4, 5, 6])
        for (_, properties), title in zip(lines, MENU):
            label = re.search(r"'label': <'(.*?)'>", properties)
            self.assertEqual(label and label[1], title)
            self.assertEqual("'type': <'separator'>" in properties, title is None)
            self.assertNotIn("icon", properties)
            self.assertEqual("'shortcut': <[['Control', 'q']]>" in properties, title == "Quit Clipwren")

    def test_clicks_start_and_stop_and_the_panel_may_go_and_come(self):
        clipwren = self.start_in_panel()
        shoot("idle")
        panel.stop()
        wait_for(lambda: not self.item(), "the panel's end")
        panel.start()
        wait_for(self.item, "the item in the new panel")
        self.assertEqual(self.desktop.tray_windows_named("Clipwren"), [], "one icon, not two")
        time.sleep(1)  # the panel still moves its items
        for number in (1, 2, 1):
            self.record()
            wait_for(lambda: self.count(self.picture(), RED) > 50, "the red picture")
            name, = item_names()
            shoot("recording")
            menu = gdbus(name, "/MenuBar", "com.canonical.dbusmenu.GetLayout", "0", "--", "-1", "[]")
            self.assertNotIn("label", menu)
            self.click_item(number)
            clipwren.wait_for_gif()
            wait_for(lambda: self.item() and not self.count(self.picture(), RED), "the idle picture")
        self.choose(5)
        self.assertEqual(clipwren.process.wait(10), 0)
        self.assertEqual(item_names(), [])


if not HAS_ITEM_HOST:
    del ItemTest

if __name__ == "__main__":
    try:
        desktop.main()
    finally:
        if panel.process:
            end(panel.process)
