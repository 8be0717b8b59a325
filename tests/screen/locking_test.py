"""A screen that is to be locked while somebody selects: the selection ends, and the locker gets keyboard and mouse.

The lockers are real; logind is the test's.
"""

import subprocess
import time

from Xlib import X

import desktop
from logind import Logind

COLOR = (0, 0xc0, 0x80)


class Locking(desktop.ScreenTest):
    # Of a recording: there the veil leaves the locker's picture as it is. Its ring of keys is elsewhere.
    REGION = (160, 120, 460, 360)

    def setUp(self):
        super().setUp()
        self.logind = Logind()
        self.addCleanup(self.logind.close)
        self.addCleanup(lambda: subprocess.run(["xset", "s", "reset"], check=True, timeout=10))
        self.clipwren = self.start()

    def screen_saver_says(self, active):
        subprocess.run(["gdbus", "emit", "--session", "--object-path", "/org/mate/ScreenSaver",
                        "--signal", "org.mate.ScreenSaver.ActiveChanged", active], check=True, timeout=10)

    # Each way in which a locker hears that it is to lock.
    def signs(self):
        return {
            "logind's Lock": self.logind.lock_session,
            "logind's PrepareForSleep": self.logind.prepare_for_sleep,
            "the X server's screen saver": lambda: subprocess.run(["xset", "s", "activate"], check=True, timeout=10),
        }

    def keyboard_is_taken(self):
        grab = self.desktop.root.grab_keyboard(True, X.GrabModeAsync, X.GrabModeAsync, X.CurrentTime)
        self.desktop.display.ungrab_keyboard(X.CurrentTime)
        self.desktop.display.sync()
        return grab == X.AlreadyGrabbed

    def pointer_is_taken(self):
        grab = self.desktop.root.grab_pointer(True, 0, X.GrabModeAsync, X.GrabModeAsync, X.NONE, X.NONE, X.CurrentTime)
        self.desktop.display.ungrab_pointer(X.CurrentTime)
        self.desktop.display.sync()
        return grab == X.AlreadyGrabbed

    def is_locked(self):
        """Whether a locker shows itself, and has keyboard and mouse."""
        left, top, right, bottom = self.REGION
        return (desktop.screenshot()[top:bottom, left:right] == COLOR).all() and self.keyboard_is_taken() and self.pointer_is_taken()

    def start_locker(self):
        """The program that starts a locker at each sign."""
        daemon = subprocess.Popen(["xss-lock", "--session=1", "--", "i3lock", "--nofork", "--color",
                                   "".join(f"{part:02x}" for part in COLOR)])
        self.addCleanup(desktop.end, daemon)
        # The server's screen saver has one user at a time.
        desktop.wait_for(self.saver_is_taken, "xss-lock")

    def saver_is_taken(self):
        self.desktop.display.sync()
        atom = self.desktop.display.intern_atom("_MIT_SCREEN_SAVER_ID")
        return self.desktop.root.get_full_property(atom, X.AnyPropertyType) is not None

    def unlock(self):
        """As `loginctl unlock-session` does it: xss-lock ends its locker."""
        self.logind.unlock_session()
        desktop.wait_for(lambda: not self.keyboard_is_taken(), "the locker's end")

    def ends_idle(self):
        self.selection_ends(self.clipwren)
        self.desktop.keysym("Escape")
        desktop.wait_for(self.desktop.bare, "the selector to go")

    def test_every_sign_ends_a_selection(self):
        signs = {**self.signs(), "a screen saver on the session bus": lambda: self.screen_saver_says("true")}
        for name, give in signs.items():
            with self.subTest(name):
                self.clipwren.begin()
                self.assertTrue(self.keyboard_is_taken())
                began = time.monotonic()
                give()
                desktop.wait_for(self.desktop.bare, "the selector to go")
                print(f"{name}: gone after {(time.monotonic() - began) * 1000:.0f} ms at most")
                self.assertFalse(self.keyboard_is_taken())
                self.ends_idle()
                subprocess.run(["xset", "s", "reset"], check=True, timeout=10)

    def test_a_sign_that_is_none_leaves_the_selection_alone(self):
        self.clipwren.begin()
        self.screen_saver_says("false")
        subprocess.run(["xset", "s", "reset"], check=True, timeout=10)
        self.logind.unlock_session()
        desktop.holds_for(self.desktop.selecting, "the selector", 1)

    def test_a_locker_locks_while_somebody_selects(self):
        window = self.pattern(100, 100, 300, 200)
        self.desktop.click(200, 200)
        self.start_locker()
        for name, give in self.signs().items():
            for drags in (False, True):
                with self.subTest(name, drags=drags):
                    self.clipwren.begin()
                    if drags:
                        self.desktop.move(200, 200)
                        self.desktop.button(True)
                        self.desktop.move(500, 500)
                    keys = window.presses("key")
                    give()
                    desktop.wait_for(self.is_locked, "a locked screen")
                    if drags:
                        self.desktop.button(False)
                    self.desktop.keysym("a")
                    desktop.holds_for(self.is_locked, "a locked screen")
                    self.assertEqual(window.presses("key"), keys)
                    self.desktop.keysym("BackSpace")
                    self.unlock()
                    subprocess.run(["xset", "s", "reset"], check=True, timeout=10)
                    self.ends_idle()

    def test_a_recording_goes_on_while_the_screen_is_locked(self):
        self.start_locker()
        self.clipwren.select(*self.REGION)
        for give in self.signs().values():
            give()
            desktop.wait_for(self.is_locked, "a locked screen")
            self.unlock()
            subprocess.run(["xset", "s", "reset"], check=True, timeout=10)
        desktop.wait_for(self.desktop.recording, "the veil")
        self.assertTrue(self.clipwren.stop().is_file())


if __name__ == "__main__":
    desktop.main()
