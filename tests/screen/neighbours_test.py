"""What else happens on a desktop while it is recorded: the veil stays above, the region clear, and clicks go through.

Each test lets something happen, looks at the screen, stops the recording, and looks again: the second picture, without
the veil, tells how bright the first one should be.
"""

import subprocess
import time

import numpy as np
from Xlib import X, error, protocol

import desktop
import pattern
from gif import Gif

BLOCK = 8


class Neighbours(desktop.ScreenTest):
    REGION = (160, 120, 560, 420)
    WINDOW = (150, 112, 680, 396)
    AWAY = (1200, 980)  # of the pointer, so that it is in no picture

    def setUp(self):
        super().setUp()
        self.window = self.pattern(*self.WINDOW)
        self.clipwren = self.start()
        self.clipwren.select(*self.REGION)
        self.desktop.move(*self.AWAY)

    def tell_manager(self, window, kind, *data):
        """Asks the window manager for something, as a panel or a program does."""
        event = protocol.event.ClientMessage(window=window, client_type=self.desktop.display.intern_atom(kind),
                                             data=(32, (list(data) + [0] * 5)[:5]))
        self.desktop.root.send_event(event, event_mask=X.SubstructureRedirectMask | X.SubstructureNotifyMask)
        self.desktop.display.sync()

    def shown(self):
        """The identifiers of the windows that are shown, the topmost last."""
        found = {}
        for window in self.desktop.root.query_tree().children:
            try:
                attributes = window.get_attributes()
            except error.BadWindow:
                continue
            if attributes.map_state == X.IsViewable and attributes.win_class == X.InputOutput:
                found[window.id] = None
        return found.keys()

    def veil_is_on_top(self):
        veils = {window.id for window, _ in self.desktop.covering_windows()}
        return self.desktop.recording() and set(list(self.shown())[-len(veils):]) == veils

    def wait_for_veil(self):
        desktop.wait_for(self.veil_is_on_top, "the veil above everything")
        # A compositor shows it a moment later, and programs paint when they come to it.
        before = desktop.screenshot()

        def rests():
            nonlocal before
            time.sleep(0.15)
            last, before = before, desktop.screenshot()
            return np.array_equal(last, before)
        desktop.wait_for(rests, "a screen at rest")

    def check(self):
        """Looks with the veil, ends the recording, and looks without; returns the frames."""
        self.wait_for_veil()
        veiled = desktop.screenshot().astype(int)
        gif = Gif(self.clipwren.stop())
        desktop.wait_for(self.desktop.bare, "the veil to go")
        time.sleep(0.3)
        plain = desktop.screenshot().astype(int)
        left, top, right, bottom = self.REGION
        hole = np.s_[top:bottom, left:right]
        self.assertEqual(np.count_nonzero((veiled != plain)[hole].any(axis=2)), 0, "pixels in the region that changed")
        for l, t, w, h in self.desktop.monitors:
            def blocks(image, l=l, t=t, w=w, h=h):
                return image[t:t + h, l:l + w].reshape(h // BLOCK, BLOCK, w // BLOCK, -1).sum(axis=(1, 3))
            outside = np.ones(plain.shape[:2], int)
            outside[hole] = 0
            covered = (blocks(outside) == BLOCK * BLOCK) & (blocks(plain) > 3000)
            ratio = blocks(veiled)[covered] / blocks(plain)[covered]
            self.assertTrue((ratio > 0.4).all() and (ratio < 0.65).all(), f"brightness {ratio.min()} to {ratio.max()}")
        mask = pattern.outside(pattern.badge_area(gif.width, gif.height), gif.width, gif.height)
        difference = np.abs(gif.frames[-1].astype(int) - plain[hole]).max(axis=2)[mask]
        print(f"{len(gif.frames)} frames; the last differs from the screen in {np.count_nonzero(difference)} pixels")
        # The shadows of a window manager may have more colours than a GIF.
        self.assertLessEqual(difference.max(), 2)
        return gif.frames

    def clicks_reach(self, window, *places):
        arrived = window.presses("button")
        for place in places:
            self.desktop.click(*place)
            arrived = arrived + [1]
            desktop.wait_for(lambda: window.presses("button") == arrived, f"a click at {place}")
        self.desktop.move(*self.AWAY)

    def test_a_new_window(self):
        new = self.pattern(400, 300, 400, 300)
        self.wait_for_veil()
        self.clicks_reach(new, (450, 350), (750, 350))  # in the region and beside it
        self.check()

    def test_a_window_that_no_manager_knows(self):
        new = self.pattern(400, 300, 400, 300, unmanaged=True)
        self.wait_for_veil()
        self.clicks_reach(new, (450, 350), (750, 350))
        self.check()

    def test_a_full_screen_window(self):
        left, top, width, height = self.desktop.monitors[0]
        new = self.pattern(left, top, width, height)
        atom = self.desktop.display.intern_atom
        self.tell_manager(new.id, "_NET_WM_STATE", 1, atom("_NET_WM_STATE_FULLSCREEN"))
        window = self.desktop.display.create_resource_object("window", new.id)

        def full():
            state = window.get_full_property(atom("_NET_WM_STATE"), X.AnyPropertyType)
            return state and atom("_NET_WM_STATE_FULLSCREEN") in state.value
        desktop.wait_for(full, "a full screen")
        self.wait_for_veil()
        self.clicks_reach(new, (300, 300), (900, 700))
        self.check()

    def menu(self):
        """The window manager's own menu, opened through the veil."""
        before = self.shown()
        if self.desktop.window_manager() == "Xfwm4":
            self.desktop.click(700, 480)  # gives the window the focus
            time.sleep(0.3)
            self.desktop.keysym("Alt_L", True)
            self.desktop.keysym("space")
            self.desktop.keysym("Alt_L", False)
        else:
            self.desktop.click(560, 900, 3)
        desktop.wait_for(lambda: self.shown() - before, "a menu")

    def test_a_menu(self):
        self.menu()
        self.desktop.move(*self.AWAY)
        self.wait_for_veil()
        # Without a compositor every second row is dark and the one between is as it was.
        shot = desktop.screenshot().astype(int)
        outside = self.desktop.on_monitors()
        left, top, right, bottom = self.REGION
        outside[top:bottom, left:right] = False
        pairs = (shot[::2] + shot[1::2]) // 2
        self.assertLess(pairs[outside[::2]].max(), 160, "something bright on the veil")
        # The hot key does not get past a menu that has the keyboard.
        self.desktop.keysym("Escape")
        time.sleep(0.3)
        self.check()

    def test_a_screen_locker(self):
        # A locker insists on being above everything, and the veil gives in. Afterwards it is above again.
        locker = subprocess.Popen(["i3lock", "--nofork", "--color", "00c080"])
        self.addCleanup(locker.kill)

        def locked():
            shot = desktop.screenshot()
            left, top, right, bottom = self.REGION
            return (shot[top:bottom, left:right] == (0, 0xc0, 0x80)).all()
        desktop.wait_for(locked, "the locker's picture in the region")
        time.sleep(1.5)
        self.assertTrue(self.clipwren.running())
        desktop.end(locker)
        time.sleep(0.5)
        frames = self.check()
        green = [(frame[:100] == (0, 0xc0, 0x80)).all() for frame in frames]
        self.assertIn(True, green, "the locker is recorded")

    def test_another_desktop(self):
        self.tell_manager(self.desktop.root.id, "_NET_CURRENT_DESKTOP", 1)
        left, top, right, bottom = self.REGION
        desktop.wait_for(lambda: (desktop.screenshot()[top:bottom, left:right] == (0x3a, 0x6e, 0xa5)).all(),
                         "an empty desktop in the region")
        self.wait_for_veil()
        time.sleep(0.3)
        there = self.pattern(400, 300, 400, 300)
        self.wait_for_veil()
        self.clicks_reach(there, (450, 350), (750, 350))
        self.tell_manager(self.desktop.root.id, "_NET_CURRENT_DESKTOP", 0)
        desktop.wait_for(lambda: (desktop.screenshot()[380:410, 450:500] == (0x3a, 0x6e, 0xa5)).sum() == 0, "the first desktop")
        time.sleep(1.5)  # for a second, Openbox shows the desktop's name
        frames = self.check()
        self.assertTrue(any((frame[:200, :200] == (0x3a, 0x6e, 0xa5)).all() for frame in frames))


if __name__ == "__main__":
    desktop.main()
