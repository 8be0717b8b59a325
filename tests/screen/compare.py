"""Compares a recording of pattern_window with what the window drew."""

import numpy as np
from PIL import Image

import desktop
import pattern

BACKGROUND = (0x3a, 0x6e, 0xa5)  # of the desktop beside the window
LAST_DELAY = 1 / 15  # how long the last frame of a recording stays


class Recording:
    """What a GIF of `region` must show while `window` stood there.

    region: (left, top, right, bottom) in pixels of the screen, not scaled.
    pointer: where the pointer stood all the time; None when it was out of reach.
    beyond: a box of the region (left, top, right, bottom) that no monitor shows; it must be black.
    ignored: a box of the region that is not compared, for example where a theme's cursor stood.
    """

    def __init__(self, test, gif, window, region, pointer=None, beyond=None, ignored=None):
        self.test, self.gif, self.window, self.region = test, gif, window, region
        self.pointer, self.beyond, self.ignored = pointer, beyond, ignored
        self.width, self.height = region[2] - region[0], region[3] - region[1]
        test.assertEqual((gif.width, gif.height), (self.width, self.height))
        test.assertEqual(gif.loop, 0, "the animation must loop for ever")
        self.badge = pattern.badge_area(self.width, self.height)

    def expected(self, n, pointer=None):
        """The region of the screen with picture n in the window, and the pointer over it."""
        left, top, right, bottom = self.region
        screen = np.empty((self.height, self.width, 3), np.uint8)
        screen[:] = BACKGROUND
        x, y = self.window.left, self.window.top
        width, height = self.window.size
        l, t, r, b = max(left, x), max(top, y), min(right, x + width), min(bottom, y + height)
        if l < r and t < b:
            screen[t - top:b - top, l - left:r - left] = \
                pattern.picture(n, width, height)[t - y:b - y, l - x:r - x]
        if self.beyond:
            l, t, r, b = self.beyond
            screen[t:b, l:r] = 0
        pointer = pointer or self.pointer
        if pointer:
            pattern.draw_cursor(screen, pointer[0] - left, pointer[1] - top)
        return screen

    def counters(self):
        """The number that each frame carries."""
        found = [pattern.counter(frame, self.window.left - self.region[0], self.window.top - self.region[1])
                 for frame in self.gif.frames]
        self.test.assertNotIn(None, found, f"frames whose counter cannot be read: {found}")
        return found

    def check_pixels(self, pointers=None):
        """Outside the badge every frame equals what was on the screen; under it lies the badge.

        pointers: per frame the places where the pointer may have been.
        """
        mask = pattern.outside(self.badge, self.width, self.height)
        if self.ignored:
            mask &= pattern.outside(self.ignored, self.width, self.height)
        for index, (n, frame) in enumerate(zip(self.counters(), self.gif.frames)):
            places = self.places(frame, pointers[index]) if pointers else [None]
            candidates = [self.expected(n, at) for at in places]
            wrong = min(((frame != one).any(axis=2) & mask for one in candidates), key=np.count_nonzero)
            if wrong.any():
                name = self.save(index, candidates[0], frame, wrong)
                y, x = np.argwhere(wrong)[0]
                self.test.fail(f"frame {index} (picture {n}): {np.count_nonzero(wrong)} pixels differ, the first at "
                               f"({x}, {y}): {frame[y, x]}; see {name}")
            self.check_badge(index, frame)

    def places(self, frame, pointers):
        """Those of the places where the frame can have the pointer: its middle is white, or not to be seen."""
        def possible(x, y):
            inside = 0 <= x < self.width and 0 <= y < self.height
            left, top, right, bottom = self.badge
            return not inside or (frame[y, x] == 255).all() or (left <= x < right and top <= y < bottom)
        return [p for p in pointers if possible(p[0] - self.region[0], p[1] - self.region[1])] or pointers[:1]

    def check_badge(self, index, frame):
        left, top, right, bottom = self.badge
        area = frame[top:bottom, left:right].astype(int)
        red, green, blue = area[..., 0], area[..., 1], area[..., 2]
        self.test.assertTrue(((red > 130) & (red > 2 * green) & (red > 2 * blue)).sum() >= 20,
                             f"no red dot in frame {index}")
        self.test.assertTrue((area.min(axis=2) > 200).sum() >= 20, f"no white text in frame {index}")

    def save(self, index, expected, actual, wrong):
        """Writes expected, actual and difference side by side; returns the file's name."""
        folder = desktop.BUILD / "screen-failures"
        folder.mkdir(exist_ok=True)
        difference = np.zeros_like(actual)
        difference[wrong] = 255
        path = folder / f"{self.test.id()}-{index}.png"
        Image.fromarray(np.concatenate([expected, actual, difference], axis=1)).save(path)
        return path

    def check_sequence(self, last):
        """Every picture from 0 to `last` once and in order."""
        counters = self.counters()
        self.test.assertEqual(counters, list(range(last + 1)), "no duplicate, no gap")

    def check_times(self, fps, tolerance=0.03):
        """Each frame stays as long as its picture stood on the screen, and the errors do not add up."""
        times = self.window.times()
        counters = self.counters()
        at, worst = 0.0, 0.0
        for index in range(1, len(counters)):
            # Measured from the second frame: when the first was taken only the program knows.
            if index > 1:
                at += self.gif.delays[index - 1]
                real = times[counters[index]] - times[counters[1]]
                worst = max(worst, abs(at - real))
        total = at + self.gif.delays[-1]
        real = times[counters[-1]] - times[counters[1]] + LAST_DELAY
        print(f"{len(counters)} frames at {fps}/s: lasts {total:.2f} s, on the screen {real:.3f} s, "
              f"worst time error {worst * 1000:.1f} ms")
        self.test.assertLess(abs(total - real), tolerance)
        self.test.assertLess(worst, tolerance + 0.5 / fps)
        self.test.assertIn(round(self.gif.delays[-1] * 100), (6, 7))
