"""What a person at the desktop does and sees: mouse, keys, screenshots, windows, and Clipwren itself.

Runs inside tests/support/desktop.sh. CLIPWREN_BUILD names the build folder; build/release otherwise.
"""

import os
import pathlib
import re
import signal
import subprocess
import sys
import threading
import time
import unittest

import numpy as np
from PIL import ImageGrab
from Xlib import X, XK, display, error
from Xlib.ext import randr, shape, xtest

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("CLIPWREN_BUILD", REPOSITORY / "build" / "release"))
KEY_G = 42  # XKB's AC05, whatever the layout prints on it
# Everything takes longer under a sanitizer and on a busy machine; a wait that succeeds costs nothing.
PATIENCE = 15


def tool(name):
    return str(BUILD / "bin" / name)


def wait_for(predicate, what, seconds=PATIENCE):
    """The first true result of the predicate; AssertionError after the time."""
    limit = time.monotonic() + seconds
    while True:
        result = predicate()
        if result:
            return result
        assert time.monotonic() < limit, f"waited {seconds} s for {what}"
        time.sleep(0.02)


def holds_for(predicate, what, seconds=0.5):
    """Checks that something stays as it is."""
    limit = time.monotonic() + seconds
    while time.monotonic() < limit:
        assert predicate(), f"no longer so: {what}"
        time.sleep(0.02)


def screenshot():
    return np.asarray(ImageGrab.grab(xdisplay=""))[:, :, :3]


class Lines:
    """The lines of a pipe, gathered while they come, each with the monotonic time of its arrival."""

    def __init__(self, pipe, echo=False):
        self.lines = []
        self.times = []
        self.echo = echo
        self.thread = threading.Thread(target=self.read, args=(pipe,), daemon=True)
        self.thread.start()

    def read(self, pipe):
        for line in pipe:
            self.times.append(time.monotonic())
            self.lines.append(line.rstrip("\n"))
            if self.echo:
                print(f"  clipwren: {line}", end="", file=sys.stderr, flush=True)

    def matching(self, pattern):
        return [match for match in (re.search(pattern, line) for line in list(self.lines)) if match]


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


class PatternWindow:
    """A running pattern_window. An unmanaged one stands where no window manager would let it."""

    def __init__(self, left, top, width, height, fps=0, frames=1, unmanaged=False):
        self.size = (width, height)
        self.process = subprocess.Popen([tool("pattern_window"), *map(str, (left, top, width, height, fps, frames)),
                                         *(["unmanaged"] if unmanaged else [])],
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.output = Lines(self.process.stdout)
        ready = wait_for(lambda: self.output.matching(r"^ready (-?\d+) (-?\d+) (\d+)"), "the pattern window")[0]
        assert (int(ready[1]), int(ready[2])) == (left, top), f"the window manager put it elsewhere: {ready[0]}"
        self.left, self.top, self.id = left, top, int(ready[3])
        self.moving = False

    def go(self):
        """Sets the pictures in motion."""
        self.moving = True
        self.process.stdin.write("\n")
        self.process.stdin.flush()

    def times(self):
        """When each picture appeared, by number."""
        return {int(match[1]): float(match[2]) for match in self.output.matching(r"^frame (\d+) ([\d.]+)")}

    def wait_for_frame(self, n, seconds=PATIENCE):
        wait_for(lambda: n in self.times(), f"picture {n}", seconds)

    def presses(self, kind):
        """The presses of buttons ("button") or keys ("key") so far, as the numbers that the window logged."""
        return [int(match[1]) for match in self.output.matching(rf"^{kind} (\d+) ")]

    def close(self):
        end(self.process)


class Clipwren:
    """A running Clipwren, ready for its hot key.

    settings: what stands in the ini file's section [recording], or its whole text.
    command: a prefix for the command line.
    """

    def __init__(self, desktop, settings=None, command=(), environment=None):
        self.desktop = desktop
        home = pathlib.Path(os.environ["HOME"])
        self.folder = home / "Pictures" / "Clipwren"
        self.settings = pathlib.Path(os.environ["XDG_CONFIG_HOME"]) / "clipwren" / "clipwren.ini"
        if settings is not None:
            self.settings.parent.mkdir(parents=True, exist_ok=True)
            text = settings
            if not isinstance(settings, (str, bytes)):
                text = "[recording]\n" + "".join(f"{key}={value}\n" for key, value in settings.items())
            self.settings.write_bytes(text if isinstance(text, bytes) else text.encode())
        self.before = set(self.folder.glob("*"))
        self.process = subprocess.Popen([*command, str(BUILD / "clipwren")], stderr=subprocess.PIPE, text=True,
                                        errors="replace", env={**os.environ, **(environment or {})})
        self.log = Lines(self.process.stderr, echo=True)
        self.saved = 0
        wait_for(lambda: self.process.poll() is not None or desktop.hot_key_is_taken(), "the hot key")
        assert self.process.poll() is None, f"Clipwren ended with {self.process.returncode}"

    def running(self):
        return self.process.poll() is None

    def begin(self):
        """Hot key; returns when the selector is up and a person could have noticed."""
        self.desktop.hot_key()
        wait_for(self.desktop.selecting, "the selector")
        time.sleep(0.15)

    def select(self, left, top, right, bottom):
        """Hot key and drag; returns when the veil is up."""
        self.begin()
        self.desktop.drag(left, top, right, bottom)
        wait_for(self.desktop.recording, "the veil")

    def stop(self):
        self.desktop.hot_key()
        return self.wait_for_gif()

    def wait_for_gif(self, seconds=60):
        """The path of the next GIF that the log speaks of."""
        def line():
            assert self.running() or self.log.thread.is_alive(), "Clipwren ended"
            assert not self.desktop.windows_named("Clipwren"), "Clipwren shows an alert instead"
            found = self.log.matching(r"\[Clipwren\] GIF copied to clipboard — (Recording_.*\.gif)$")
            return found[self.saved:self.saved + 1]
        name = wait_for(line, "the log line of a saved GIF", seconds)[0][1]
        self.saved += 1
        return self.folder / name

    def gifs(self):
        """The files that have come into the folder since the start."""
        return sorted(set(self.folder.glob("*")) - self.before)

    def close(self):
        """Ends it as a session manager does; its status."""
        return end(self.process)


def end(process, seconds=10):
    """Asks a process to end; its status, or AssertionError when it has to be killed."""
    if process.poll() is None:
        process.send_signal(signal.SIGTERM)
    try:
        return process.wait(seconds)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()
        raise AssertionError(f"{process.args[0]} did not end within {seconds} s")


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

    def pattern(self, *arguments, **options):
        window = PatternWindow(*arguments, **options)
        self.addCleanup(window.close)
        return window


def main():
    """Runs the tests of the calling module; status 77 when one of them was skipped."""
    result = unittest.main(module="__main__", verbosity=2, exit=False, warnings="ignore").result
    sys.exit(77 if result.skipped and result.wasSuccessful() else not result.wasSuccessful())
