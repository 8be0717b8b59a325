"""Regions that are not simply inside the first monitor, and regions that are scaled."""

import time

import numpy as np
from PIL import Image

import desktop
import pattern
from compare import Recording
from gif import Gif


class Regions(desktop.ScreenTest):
    def record(self, window, region, seconds=1, **options):
        """Records the region while the window moves; returns the GIF and the window."""
        clipwren = self.start()
        pictures = self.pattern(*window, 15, 15 * seconds + 1)
        clipwren.select(*region)
        time.sleep(0.3)
        pictures.go()
        pictures.wait_for_frame(15 * seconds)
        time.sleep(0.3)
        return Gif(clipwren.stop()), pictures

    def test_the_second_monitor(self):
        region = (1400, 220, 1720, 460)
        gif, window = self.record((1392, 212, 340, 260), region)
        recording = Recording(self, gif, window, region, pointer=region[2:])
        recording.check_sequence(15)
        recording.check_pixels()

    def test_past_the_left_edge(self):
        # A drag cannot leave the screen's left edge; from a point inside to the right edge of monitor and screen.
        region = (1500, 600, 1919, 899)
        gif, window = self.record((1490, 590, 430, 310), region)
        recording = Recording(self, gif, window, region, pointer=region[2:])
        recording.check_sequence(15)
        recording.check_pixels()

    def test_past_the_lower_edge_of_the_second_monitor(self):
        # 900 is the second monitor's lower edge; below it nothing is shown on any monitor.
        region = (1400, 700, 1720, 1000)
        gif, window = self.record((1392, 640, 340, 250), region)
        beyond = np.zeros((300, 320), bool)
        beyond[200:] = True
        recording = Recording(self, gif, window, region, beyond=beyond)
        counters = [n for n in (pattern.counter(f, -8, -60) for f in gif.frames)]
        self.assertEqual(set(counters), {None}, "the counter lies above the region")
        for frame in gif.frames:
            mask = pattern.outside(recording.badge, 320, 300) & beyond
            self.assertTrue((frame[mask] == 0).all(), "black where no monitor is")
        first = recording.expected(0)
        mask = pattern.outside(recording.badge, 320, 300)
        self.assertTrue(np.array_equal(gif.frames[0][mask], first[mask]))

    def test_across_two_monitors_belongs_to_the_first(self):
        # Recorded is the first monitor's part; beyond its right edge the picture is black.
        region = (1100, 300, 1420, 540)
        gif, window = self.record((1090, 290, 180, 240), region)
        beyond = np.zeros((240, 320), bool)
        beyond[:, 180:] = True
        recording = Recording(self, gif, window, region, beyond=beyond)
        recording.check_sequence(15)
        mask = pattern.outside(recording.badge, 320, 240)
        for n, frame in zip(recording.counters(), gif.frames):
            expected = recording.expected(n)
            self.assertTrue(np.array_equal(frame[mask], expected[mask]), f"picture {n}")

    def test_a_wide_region_is_scaled(self):
        region = (20, 100, 1220, 700)
        clipwren = self.start({"fps": 15, "resolution": 480, "maxDuration": 0})
        window = self.pattern(10, 90, 1230, 620)
        clipwren.select(*region)
        time.sleep(0.5)
        gif = Gif(clipwren.stop())
        self.assertEqual((gif.width, gif.height), (480, 240))
        shown = pattern.picture(0, 1230, 620)[10:610, 10:1210]
        expected = np.asarray(Image.fromarray(shown).resize((480, 240), Image.Resampling.BOX)).astype(int)
        mask = pattern.outside(pattern.badge_area(480, 240), 480, 240)
        mask[-20:, -20:] = False  # the pointer's corner
        error = np.abs(gif.frames[0].astype(int) - expected).mean(axis=2)[mask]
        print(f"mean error {error.mean():.2f} of 255")
        self.assertLess(error.mean(), 8)


if __name__ == "__main__":
    desktop.main()
