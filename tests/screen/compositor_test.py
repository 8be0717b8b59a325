"""A compositor starts, ends or is killed while the selector or the veil is up: the picture stays right."""

import signal
import subprocess
import threading
import time

import numpy as np
from Xlib import X, display

import desktop
import pattern
from compare import BACKGROUND, Recording
from gif import Gif

SELECTOR, VEIL = (0.65, 0.65), (0.50, 0.55)  # how bright what lies under them is
BLOCK = 8


class Eye:
    """Looks at one place of the screen all the time; `black` is for how long it saw only black there, in seconds."""

    def __init__(self, x, y):
        self.black = 0
        self.looking = True
        self.thread = threading.Thread(target=self.look, args=(display.Display(), x, y), daemon=True)
        self.thread.start()

    def look(self, connection, x, y):
        root = connection.screen().root
        last, was_black = time.monotonic(), False
        while self.looking:
            # Two rows: without a compositor every second one is dark.
            is_black = not any(root.get_image(x, y, 1, 2, X.ZPixmap, 0xffffff).data)
            now = time.monotonic()
            if is_black and was_black:
                self.black += now - last
            last, was_black = now, is_black
            time.sleep(0.002)
        connection.close()

    def close(self):
        self.looking = False
        self.thread.join(5)
        return self.black


class Compositor(desktop.ScreenTest):
    REGION = (160, 120, 560, 420)

    def setUp(self):
        super().setUp()
        self.process = None
        self.is_xfwm4 = self.desktop.window_manager() == "Xfwm4"
        self.addCleanup(self.end, signal.SIGTERM)
        self.window = self.pattern(150, 112, 700, 500)
        self.desktop.move(1200, 980)
        time.sleep(0.3)
        self.before = desktop.screenshot().astype(int)
        self.clipwren = self.start()

    def runs(self):
        return self.desktop.display.get_selection_owner(self.desktop.display.intern_atom("_NET_WM_CM_S0")) != 0

    def begin(self):
        if self.is_xfwm4:
            self.switch_xfwm4(True)
        else:
            self.process = subprocess.Popen(["picom", "--config", "/dev/null", "--backend", "xrender", "--no-vsync"],
                                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        desktop.wait_for(self.runs, "a compositor")

    def end(self, how):
        if self.is_xfwm4:
            self.switch_xfwm4(False)
        elif self.process:
            self.process.send_signal(how)
            self.process.wait(10)
            self.process = None
        desktop.wait_for(lambda: not self.runs(), "no compositor")

    def switch_xfwm4(self, on):
        """As its settings window does."""
        subprocess.run(["xfconf-query", "-c", "xfwm4", "-p", "/general/use_compositing", "-s", str(on).lower()],
                       check=True, timeout=30)

    def right(self, brightness, clear):
        """Whether every block of every monitor is as bright as it should be, and the clear part as it was."""
        shot = desktop.screenshot().astype(int)
        outside = np.ones(shot.shape[:2], bool)
        if clear:
            if (shot != self.before)[clear].any():
                return False
            outside[clear] = False
        for left, top, width, height in self.desktop.monitors:
            def blocks(image, left=left, top=top, width=width, height=height):
                area = image[top:top + height, left:left + width].reshape(height // BLOCK, BLOCK, width // BLOCK, -1)
                return area.sum(axis=(1, 3))
            bright = blocks(self.before)
            covered = (blocks(outside) == BLOCK * BLOCK) & (bright > 3000)
            ratio = blocks(shot)[covered] / bright[covered]
            if ratio.min() < brightness[0] - 0.05 or ratio.max() > brightness[1] + 0.05:
                return False
        return True

    def ups_and_downs(self, brightness, clear=None):
        """Compositors come and go; afterwards the picture is right each time."""
        self.assertTrue(self.right(brightness, clear), "the picture at the beginning")
        black = []
        for how in (signal.SIGTERM, signal.SIGKILL):
            for name, change in (("start", self.begin), ("end", lambda how=how: self.end(how))):
                eye = Eye(1000, 900)
                change()
                time.sleep(0.5)
                desktop.wait_for(lambda: self.right(brightness, clear), f"the picture after a {name}")
                black.append(eye.close())
                desktop.holds_for(lambda: self.right(brightness, clear), f"the picture after a {name}", 0.2)
        print("black after start, end, start, kill:", *(f"{seconds * 1000:.0f} ms" for seconds in black))
        # A busy machine may hear of it late, but not every time.
        self.assertLess(min(black[0], black[2]), 0.1)
        self.assertLess(min(black[1], black[3]), 0.1)

    def test_under_the_selector(self):
        self.clipwren.begin()
        self.ups_and_downs(SELECTOR)
        # And it still selects.
        self.desktop.drag(*self.REGION)
        desktop.wait_for(self.desktop.recording, "the veil")
        time.sleep(0.3)
        Recording(self, Gif(self.clipwren.stop()), self.window, self.REGION, pointer=self.REGION[2:]).check_pixels()

    def test_under_the_veil(self):
        left, top, right, bottom = self.REGION
        self.clipwren.select(*self.REGION)
        self.desktop.move(1200, 980)
        time.sleep(0.3)
        self.ups_and_downs(VEIL, np.s_[top:bottom, left:right])
        gif = Gif(self.clipwren.stop())
        # For a moment the window may not be painted, and that is what the screen shows; dimmed it is never.
        mask = pattern.outside(pattern.badge_area(gif.width, gif.height), gif.width, gif.height)
        mask[-8:, -8:] = False  # the pointer as it leaves
        window = self.before[top:bottom, left:right]
        painted = [(frame == window).all(axis=2) | ~mask for frame in gif.frames]
        bare = [(frame == BACKGROUND).all(axis=2) | ~mask for frame in gif.frames]
        print(f"{len(gif.frames)} frames, {sum(there.all() for there in painted)} of them show the window")
        self.assertTrue(painted[0].all() and painted[-1].all())
        for there, empty in zip(painted, bare):
            self.assertTrue((there | empty).all(), "neither the window nor the bare desktop")

    def test_during_a_drag(self):
        self.begin()
        time.sleep(0.6)
        self.clipwren.begin()
        self.desktop.move(200, 200)
        self.desktop.button(True)
        self.desktop.move(300, 300)
        self.end(signal.SIGKILL)
        time.sleep(0.5)
        self.desktop.move(400, 400)
        self.desktop.button(False)
        # That drag is lost; the next one is like any other.
        desktop.wait_for(self.desktop.selecting, "the selector")
        self.desktop.drag(*self.REGION)
        desktop.wait_for(self.desktop.recording, "the veil")
        time.sleep(0.3)
        Recording(self, Gif(self.clipwren.stop()), self.window, self.REGION, pointer=self.REGION[2:]).check_pixels()


if __name__ == "__main__":
    desktop.main()
