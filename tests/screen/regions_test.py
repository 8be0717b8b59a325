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

    def test_up_to_the_corner_of_the_screen(self):
        region = (1500, 600, 1919, 899)
        gif, window = self.record((1490, 590, 430, 310), region)
        recording = Recording(self, gif, window, region, pointer=region[2:])
        recording.check_sequence(15)
        recording.check_pixels()

    def test_past_a_monitors_edge_it_is_black(self):
        # The second monitor ends at 900; the server has pixels below, but nobody sees them. There the pointer
        # ends, and no monitor shows it.
        region = (1400, 660, 1720, 960)
        gif, window = self.record((1390, 650, 340, 240), region)
        recording = Recording(self, gif, window, region, beyond=(0, 240, 320, 300), ignored=(300, 280, 320, 300))
        recording.check_sequence(15)
        recording.check_pixels()

    def test_across_two_monitors_both_are_recorded(self):
        # The window lies on the first monitor; beside it is the second's background and the pointer.
        region = (1080, 300, 1400, 540)
        gif, window = self.record((1070, 290, 190, 240), region)
        recording = Recording(self, gif, window, region, ignored=(300, 220, 320, 240))
        recording.check_sequence(15)
        recording.check_pixels()

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
