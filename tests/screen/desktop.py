"""What a person at the desktop does and sees: mouse, keys, screenshots and windows; and the test that uses them.

Runs inside tests/support/desktop.sh. CLIPWREN_BUILD names the build folder; build/release otherwise.
"""

import subprocess
import sys
import time
import unittest

import numpy as np
from PIL import ImageGrab
from Xlib import X, XK, display, error
from Xlib.ext import randr, shape, xtest

from processes import BUILD, PATIENCE, Lines, end, holds_for, tool, wait_for
from programs import Clipwren, PatternWindow

__all__ = ["BUILD", "PATIENCE", "Clipwren", "Desktop", "Lines", "PatternWindow", "ScreenTest", "end", "holds_for", "main",
           "screenshot", "tool", "wait_for"]

KEY_G = 42  # XKB's AC05, whatever the layout prints on it


def screenshot():
    return np.asarray(ImageGrab.grab(xdisplay=""))[:, :, :3]


class Desktop:
    """The X server as a person sees it."""

    def __init__(self):
        self.display = display.Display()
        self.screen = self.display.screen()
        self.root = self.screen.root
        self.read_monitors()

    def close(self):
        try:
            self.display.close()
        except error.ConnectionClosedError:
            pass  # the server was ended on purpose

    def read_monitors(self):
        """Where the monitors are now: (left, top, width, height) of each, the primary one first."""
        self.monitors = [(m.x, m.y, m.width_in_pixels, m.height_in_pixels)
                         for m in randr.get_monitors(self.root).monitors]

    def arrange(self, *arguments):
        """What a person does in the display settings or with a plug; arguments as xrandr takes them."""
        for command in (["xrandr", *map(str, arguments)], ["xrandr"]):  # looking makes the server look, too
            subprocess.run(command, check=True, timeout=30, stdout=subprocess.DEVNULL)
        self.read_monitors()

    # Mouse and keys

    def move(self, x, y):
        xtest.fake_input(self.display, X.MotionNotify, x=x, y=y)
        self.display.sync()

    def button(self, down, number=1):
        xtest.fake_input(self.display, X.ButtonPress if down else X.ButtonRelease, number)
        self.display.sync()

    def click(self, x, y, number=1):
        self.move(x, y)
        self.button(True, number)
        self.button(False, number)

    def drag(self, left, top, right, bottom, steps=8):
        """From the first point to the second with the first button; the area is right - left by bottom - top."""
        self.move(left, top)
        self.button(True)
        for step in range(1, steps + 1):
            self.move(left + (right - left) * step // steps, top + (bottom - top) * step // steps)
            time.sleep(0.01)
        self.button(False)

    def key(self, code, down=None):
        for event in ((X.KeyPress, X.KeyRelease) if down is None else (X.KeyPress if down else X.KeyRelease,)):
            xtest.fake_input(self.display, event, code)
        self.display.sync()

    def keysym(self, name, down=None):
        self.key(self.display.keysym_to_keycode(XK.string_to_keysym(name)), down)

    def hot_key(self):
        self.keysym("Super_L", True)
        self.keysym("Shift_L", True)
        self.key(KEY_G)
        self.keysym("Shift_L", False)
        self.keysym("Super_L", False)

    def pointer(self):
        at = self.root.query_pointer()
        return at.root_x, at.root_y

    # Windows

    def hot_key_is_taken(self):
        """Whether a program holds Super+Shift+G. The server is held meanwhile, so that nobody else is refused."""
        refused = error.CatchError(error.BadAccess)
        self.display.grab_server()
        self.root.grab_key(KEY_G, X.Mod4Mask | X.ShiftMask, True, X.GrabModeAsync, X.GrabModeAsync, onerror=refused)
        self.display.sync()
        if not refused.get_error():
            self.root.ungrab_key(KEY_G, X.Mod4Mask | X.ShiftMask)
        self.display.ungrab_server()
        self.display.sync()
        return bool(refused.get_error())

    def covering_windows(self):
        """The visible override-redirect windows that cover one monitor each: [(window, (left, top, width, height))]."""
        found = []
        for window in self.root.query_tree().children:
            try:
                attributes = window.get_attributes()
                if attributes.map_state != X.IsViewable or not attributes.override_redirect:
                    continue
                if attributes.win_class != X.InputOutput:
                    continue
                at = window.get_geometry()
            except (error.BadWindow, error.BadDrawable):
                continue
            if (at.x, at.y, at.width, at.height) in self.monitors:
                found.append((window, (at.x, at.y, at.width, at.height)))
        return found

    def takes_clicks(self, window):
        try:
            return bool(window.shape_get_rectangles(shape.SK.Input).rectangles)
        except (error.BadWindow, error.BadDrawable):
            return False

    def selecting(self):
        """Whether the selector covers every monitor."""
        return sum(self.takes_clicks(window) for window, _ in self.covering_windows()) == len(self.monitors)

    def recording(self):
        """Whether the veil covers every monitor."""
        return sum(not self.takes_clicks(window) for window, _ in self.covering_windows()) == len(self.monitors)

    def bare(self):
        """Whether neither is there."""
        return not self.covering_windows()

    def windows_named(self, name):
        """Ordinary windows, not covering ones, with exactly this title, wherever a window manager has put them."""
        return self.all_windows_named(name, overriding=False)

    def tray_windows_named(self, name):
        """Windows of this title that no window manager looks after, but the tray that they are in."""
        return [window for window in self.all_windows_named(name, overriding=True)
                if window.query_tree().parent != self.root]

    def all_windows_named(self, name, overriding):
        found, pending = [], list(self.root.query_tree().children)
        while pending:
            window = pending.pop()
            try:
                title = window.get_full_text_property(self.display.intern_atom("_NET_WM_NAME")) or window.get_wm_name()
                attributes = window.get_attributes()
                if (title == name and attributes.map_state == X.IsViewable
                        and bool(attributes.override_redirect) == overriding):
                    found.append(window)
                pending += window.query_tree().children
            except (error.BadWindow, error.BadDrawable):
                continue
        return found

    def window_manager(self):
        """Its name, as it tells it itself."""
        check = self.root.get_full_property(self.display.intern_atom("_NET_SUPPORTING_WM_CHECK"), X.AnyPropertyType)
        window = self.display.create_resource_object("window", check.value[0])
        return window.get_full_text_property(self.display.intern_atom("_NET_WM_NAME"))

    def on_monitors(self):
        """A mask of the screen that is true where a monitor shows it."""
        size = self.root.get_geometry()
        mask = np.zeros((size.height, size.width), bool)
        for left, top, width, height in self.monitors:
            mask[top:top + height, left:left + width] = True
        return mask

    def focus(self):
        focus = self.display.get_input_focus().focus
        return focus if isinstance(focus, int) else focus.id


class ScreenTest(unittest.TestCase):
    """A test that cleans up what it started, in the reverse order."""

    expected_status = 0  # of Clipwren at its end

    def setUp(self):
        self.desktop = Desktop()
        self.addCleanup(self.desktop.close)
        self.assertEqual(self.desktop.covering_windows(), [])

    def start(self, settings=None, **options):
        clipwren = Clipwren(self.desktop, {"fps": 15, "resolution": 800, "maxDuration": 0} if settings is None else settings,
                            **options)
        # Also tells of a sanitizer's findings, which end the program with another status.
        self.addCleanup(lambda: self.assertEqual(clipwren.close(), self.expected_status))
        return clipwren

    def selection_ends(self, clipwren):
        """The selector goes, nothing is recorded, and the next selection comes up."""
        wait_for(self.desktop.bare, "the selector to go")
        holds_for(self.desktop.bare, "no veil")
        self.assertEqual(clipwren.gifs(), [])
        self.assertTrue(clipwren.running())
        clipwren.begin()

    def pattern(self, *arguments, **options):
        window = PatternWindow(*arguments, **options)
        self.addCleanup(window.close)
        return window


def main():
    """Runs the tests of the calling module; status 77 when one of them was skipped."""
    result = unittest.main(module="__main__", verbosity=2, exit=False, warnings="ignore").result
    sys.exit(77 if result.skipped and result.wasSuccessful() else not result.wasSuccessful())
