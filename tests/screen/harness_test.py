"""Shows that the comparison passes a right recording of the screen and fails on every kind of wrong one."""

import copy
import os
import pathlib
import time
import types

import numpy as np
from PIL import Image

import desktop
import pattern
from compare import Recording
from gif import Gif


class Harness(desktop.ScreenTest):
    REGION = (160, 120, 480, 360)
    WINDOW = (150, 112, 360, 260)
    FPS, LAST = 3, 6

    def setUp(self):
        super().setUp()
        self.window = self.pattern(*self.WINDOW, self.FPS, self.LAST + 1)

    def failing(self):
        """A test that a comparison can fail without failing this one."""
        return types.SimpleNamespace(**{name: getattr(self, name) for name in dir(self) if name.startswith("assert")},
                                     fail=self.fail, id=lambda: "harness")

    def shoot(self):
        """Photographs every picture once, with a badge painted on; the pictures and when they were shown."""
        left, top, right, bottom = self.REGION
        frames = []
        limit = time.monotonic() + 20
        while len(frames) <= self.LAST:
            shot = desktop.screenshot()[top:bottom, left:right].copy()
            n = pattern.counter(shot, self.WINDOW[0] - left, self.WINDOW[1] - top)
            if n == len(frames):
                frames.append(shot)
            assert n in (len(frames) - 1, None), f"picture {n} instead of {len(frames)}"
            assert time.monotonic() < limit
            if not self.window.moving:
                self.window.go()
        l, t, r, b = pattern.badge_area(right - left, bottom - top)
        for frame in frames:
            frame[t:b, l:r] //= 2
            frame[t:t + 6, l:l + 6] = (220, 20, 20)
            frame[t + 8:t + 14, l:l + 60] = 255
        times = self.window.times()
        delays = [times[n + 1] - times[n] for n in range(self.LAST)] + [1 / 15]
        return frames, delays

    def write(self, frames, delays, loop=0):
        path = pathlib.Path(os.environ["HOME"]) / "harness.gif"
        images = [Image.fromarray(frame).quantize(256, dither=Image.Dither.NONE) for frame in frames]
        images[0].save(path, save_all=True, append_images=images[1:], loop=loop,
                       duration=[round(delay * 100) * 10 for delay in delays])
        return path

    def check(self, gif, pointer=None):
        recording = Recording(self.failing(), gif, self.window, self.REGION, pointer=pointer)
        recording.check_sequence(self.LAST)
        recording.check_times(self.FPS)
        recording.check_pixels()

    def test_the_comparison_can_fail(self):
        frames, delays = self.shoot()
        right = Gif(self.write(frames, delays))
        self.check(right)

        def wrong(change, **options):
            gif = copy.deepcopy(right)
            change(gif)
            with self.assertRaises(AssertionError):
                self.check(gif, **options)

        def without(gif, index):
            del gif.frames[index], gif.delays[index]
        wrong(lambda gif: without(gif, 4))
        wrong(lambda gif: without(gif, 0))
        wrong(lambda gif: without(gif, -1))
        wrong(lambda gif: (gif.frames.insert(3, gif.frames[3]), gif.delays.insert(3, 0.1)))
        wrong(lambda gif: gif.frames.reverse())
        wrong(lambda gif: gif.delays.__setitem__(4, 0.5))
        wrong(lambda gif: gif.delays.__setitem__(-1, 0.2))
        wrong(lambda gif: gif.frames[5].__setitem__((30, 200), (1, 2, 3)))
        wrong(lambda gif: gif.frames[0].__setitem__(np.s_[:], gif.frames[0] // 2))
        wrong(lambda gif: gif.frames[2].__setitem__(np.s_[-60:, -150:], 0))
        wrong(lambda gif: setattr(gif, "loop", None))
        wrong(lambda gif: None, pointer=(300, 200))
        wrong(lambda gif: setattr(gif, "width", 321))

    def test_a_cursor_is_told_from_none(self):
        frames, delays = self.shoot()
        for frame in frames:
            pattern.draw_cursor(frame, 300 - self.REGION[0], 200 - self.REGION[1])
        gif = Gif(self.write(frames, delays))
        self.check(gif, pointer=(300, 200))
        with self.assertRaises(AssertionError):
            self.check(gif, pointer=(301, 200))


if __name__ == "__main__":
    desktop.main()
