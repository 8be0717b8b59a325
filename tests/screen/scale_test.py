"""Scaled screens: what is recorded is what was framed, to the pixel of the screen, and the label tells points."""

import subprocess
import time

import numpy as np
from PIL import Image

import desktop
import pattern
from gif import Gif

WINDOW = (1300, 150, 460, 380)  # on the second monitor
LABEL_GAP = 2  # points between the rectangle and its label


def resources(text):
    subprocess.run(["xrdb", "-load"], input=text, text=True, check=True, timeout=30)


class Scale(desktop.ScreenTest):
    def setUp(self):
        super().setUp()
        self.addCleanup(resources, "")
        self.window = self.pattern(*WINDOW, unmanaged=True)

    def framed(self, region, size):
        """The region of the window, averaged down to the size."""
        left, top, right, bottom = (edge - WINDOW[i % 2] for i, edge in enumerate(region))
        shown = pattern.picture(0, *WINDOW[2:])[top:bottom, left:right]
        return np.asarray(Image.fromarray(shown).resize(size, Image.Resampling.BOX)).astype(int)

    def check(self, region, size, **options):
        """Records the region; the GIF has that size and shows that region and none beside it."""
        clipwren = self.start(**options)
        self.desktop.move(1200, 900)
        time.sleep(0.2)
        before = desktop.screenshot()
        clipwren.select(*region)
        self.check_hole(region, before)
        self.desktop.move(1200, 900)
        time.sleep(0.3)
        gif = Gif(clipwren.stop())
        self.assertEqual((gif.width, gif.height), size)
        mask = pattern.outside(pattern.badge_area(*size), *size)
        errors = {}
        for dx in (-2, -1, 0, 1, 2):
            for dy in (-2, -1, 0, 1, 2):
                left, top, right, bottom = region
                expected = self.framed((left + dx, top + dy, right + dx, bottom + dy), size)
                errors[dx, dy] = np.abs(gif.frames[-1].astype(int) - expected)[mask].mean()
        nearest = sorted(errors, key=errors.get)
        print(f"{size}: error {errors[0, 0]:.3f} of 255, one pixel beside it {errors[nearest[1]]:.3f}")
        self.assertEqual(nearest[0], (0, 0), "the region is another one")
        self.assertLess(errors[0, 0], 1)

    def check_hole(self, region, before):
        left, top, right, bottom = region
        inside, around = np.s_[top:bottom, left:right], np.s_[top - 4:bottom + 4, left - 4:right + 4]

        def exact():
            shot = desktop.screenshot()
            changed = (shot != before).any(axis=2)
            # Without a compositor every second row is dark.
            beside = changed[around][:, :4] | np.roll(changed[around][:, :4], 1, axis=0)
            return not changed[inside].any() and beside[4:-4].all()
        desktop.wait_for(exact, "a hole of exactly the region", 5)

    def label_width(self, region, scale=1):
        """Of the box under a rectangle that is being dragged, in pixels."""
        clipwren = self.start()
        clipwren.begin()
        left, top, right, bottom = region
        self.desktop.move(left, top)
        self.desktop.button(True)
        self.addCleanup(self.desktop.button, False)
        self.desktop.move(right - 9, bottom - 9)
        self.desktop.move(right, bottom)
        # Between the box's upper edge and the text; the desktop is much brighter, also when it is dimmed.
        row = bottom + (LABEL_GAP + 1) * scale

        def box():
            return int((desktop.screenshot()[row, left:right + 200].max(axis=1) < 40).sum())
        width = desktop.wait_for(box, "a label", 5)
        self.desktop.keysym("Escape")
        self.desktop.button(False)
        desktop.wait_for(self.desktop.bare, "the selector to go")
        clipwren.close()
        return width

    def test_200_per_cent(self):
        resources("Xft.dpi: 192")
        self.check((1360, 220, 1760, 520), (200, 150))

    def test_200_per_cent_and_odd_pixels(self):
        resources("Xft.dpi: 192")
        self.check((1361, 221, 1758, 522), (199, 151))

    def test_150_per_cent(self):
        resources("Xft.dpi: 144")
        self.check((1361, 221, 1661, 521), (200, 200))

    def test_125_per_cent(self):
        resources("Xft.dpi: 120")
        self.check((1363, 219, 1703, 519), (272, 240))

    def test_what_the_toolkit_is_told_about_monitors_changes_nothing(self):
        # One monitor twice as fine as the other: the toolkit's own coordinates would have gaps and overlap.
        self.check((1361, 221, 1661, 521), (300, 300),
                   environment={"QT_SCREEN_SCALE_FACTORS": "1;2", "QT_ENABLE_HIGHDPI_SCALING": "1"})

    def test_the_label_tells_points(self):
        short = self.label_width((200, 200, 280, 260))   # 80 × 60
        long = self.label_width((200, 200, 360, 320))    # 160 × 120
        resources("Xft.dpi: 192")
        scaled = self.label_width((200, 200, 360, 320), scale=2)  # 80 × 60
        print(f"the label is {short} and {long} pixels wide, scaled {scaled}")
        self.assertGreater(long, short + 8)
        self.assertAlmostEqual(scaled, 2 * short, delta=3)


if __name__ == "__main__":
    desktop.main()
