"""Monitors that come, go and change while somebody selects and records: on a server whose monitors can be unplugged.

The desktop begins with three that do not touch: 1280x1024+0+0 (primary), 640x800+1400+100 and 800x600+2200+300.
"""

import time

import numpy as np
from Xlib import X

import desktop
import pattern
from compare import BACKGROUND, Recording
from gif import Gif

FIRST, SECOND, THIRD = (0, 0, 1280, 1024), (1400, 100, 640, 800), (2200, 300, 800, 600)
FIRST_UNPLUGGED = ("--output", "DUMMY0", "--off", "--output", "DUMMY1", "--primary", "--pos", "0x0",
                   "--output", "DUMMY2", "--pos", "640x0")
REGION = (60, 80, 380, 320)  # of a monitor
WINDOW = (50, 70, 340, 260)  # around it


def on(monitor, box):
    """A box of a monitor as one of the whole screen: (left, top, right, bottom)."""
    left, top = monitor[:2]
    return box[0] + left, box[1] + top, box[2] + left, box[3] + top


class Screens(desktop.ScreenTest):
    def setUp(self):
        super().setUp()
        self.addCleanup(self.plug_all_in)
        self.assertEqual(self.desktop.monitors, [FIRST, SECOND, THIRD])

    def plug_all_in(self):
        arguments = []
        for number, (left, top, width, height) in enumerate((FIRST, SECOND, THIRD)):
            arguments += ["--output", f"DUMMY{number}", "--mode", f"{width}x{height}", "--pos", f"{left}x{top}"]
        self.desktop.arrange(*arguments, "--output", "DUMMY0", "--primary")

    def pattern_on(self, monitor, *motion):
        return self.pattern(monitor[0] + WINDOW[0], monitor[1] + WINDOW[1], *WINDOW[2:], *motion, unmanaged=True)

    def record(self, clipwren, monitor):
        """With the selector up: records the region inside a pattern on the monitor and compares every pixel."""
        region = on(monitor, REGION)
        window = self.pattern_on(monitor)
        self.desktop.drag(*region)
        desktop.wait_for(self.desktop.recording, "the veil")
        self.check_veil(region)
        time.sleep(0.3)
        Recording(self, Gif(clipwren.stop()), window, region, pointer=region[2:]).check_pixels()
        window.close()

    def check_veil(self, region):
        """The region is as it was and the rest of every monitor is dark."""
        before = np.zeros((*self.desktop.on_monitors().shape, 3), np.uint8)
        before[:] = BACKGROUND
        monitors = self.desktop.on_monitors()
        left, top, right, bottom = region
        monitors[top - 10:bottom + 10, left - 10:right + 10] = False

        def dark():
            shot = desktop.screenshot()
            return 0.45 < shot[monitors].sum() / before[monitors].sum() < 0.6
        desktop.wait_for(dark, "a veil over all monitors", 5)

    def check_selector(self):
        """The selector covers every monitor, and the empty desktop shines through it everywhere."""
        desktop.wait_for(self.desktop.selecting, "a selector on every monitor")
        monitors = self.desktop.on_monitors()

        def dimmed():
            shown = desktop.screenshot()[monitors].astype(int)
            return np.abs(shown - np.array(BACKGROUND) * 0.65).max() <= 2
        desktop.wait_for(dimmed, "a dimmed desktop", 5)

    def works_again(self, clipwren):
        """Nothing is left over: neither a window nor a grab nor a state."""
        desktop.wait_for(self.desktop.bare, "no covering window")
        window = self.pattern_on(self.desktop.monitors[0])
        self.desktop.click(self.desktop.monitors[0][0] + 100, self.desktop.monitors[0][1] + 100)
        desktop.wait_for(lambda: window.presses("button") == [1], "a click")
        self.assertEqual(self.desktop.root.grab_keyboard(True, X.GrabModeAsync, X.GrabModeAsync, X.CurrentTime),
                         X.GrabSuccess)
        self.desktop.display.ungrab_keyboard(X.CurrentTime)
        clipwren.begin()
        self.desktop.keysym("Escape")
        desktop.wait_for(self.desktop.bare, "the selector to go")

    def test_each_of_three_monitors_is_recorded_to_the_pixel(self):
        clipwren = self.start()
        for monitor in self.desktop.monitors:
            clipwren.begin()
            self.record(clipwren, monitor)

    def test_across_the_gap_between_two_monitors(self):
        clipwren = self.start()
        window = self.pattern(1050, 190, 500, 240, unmanaged=True)
        region = (1060, 200, 1520, 420)
        clipwren.select(*region)
        self.check_veil(region)
        time.sleep(0.3)
        gap = (220, 0, 340, 220)  # no monitor shows it
        Recording(self, Gif(clipwren.stop()), window, region, pointer=region[2:], beyond=gap).check_pixels()

    def test_unplugged_while_selecting(self):
        clipwren = self.start()
        clipwren.begin()
        self.desktop.arrange(*FIRST_UNPLUGGED)
        self.check_selector()
        self.assertEqual(len(self.desktop.covering_windows()), 2)
        self.record(clipwren, self.desktop.monitors[1])
        self.works_again(clipwren)

    def test_unplugged_during_a_drag_on_it(self):
        clipwren = self.start()
        clipwren.begin()
        left, top, right, bottom = on(THIRD, REGION)
        self.desktop.move(left, top)
        self.desktop.button(True)
        self.desktop.move(right - 50, bottom - 50)
        self.desktop.move(right, bottom)
        self.desktop.arrange("--output", "DUMMY2", "--off")
        time.sleep(0.1)  # no hand is quicker
        self.check_selector()
        self.desktop.button(False)
        desktop.holds_for(self.desktop.selecting, "the selector")
        self.desktop.keysym("Escape")
        self.works_again(clipwren)

    def test_plugged_in_while_selecting(self):
        self.desktop.arrange("--output", "DUMMY2", "--off")
        clipwren = self.start()
        clipwren.begin()
        self.plug_all_in()
        self.check_selector()
        self.desktop.keysym("Escape")
        self.works_again(clipwren)

    def test_another_mode_while_selecting(self):
        clipwren = self.start()
        clipwren.begin()
        self.desktop.arrange("--output", "DUMMY0", "--mode", "1024x768")
        self.check_selector()
        self.record(clipwren, self.desktop.monitors[0])
        self.works_again(clipwren)

    def frames_by_window(self, gif, *windows):
        """For each frame the number of the window that it shows to the pixel; none may show anything else."""
        mask = pattern.outside(pattern.badge_area(gif.width, gif.height), gif.width, gif.height)
        mask[-8:, -8:] = False  # the pointer
        inside = np.s_[REGION[1] - WINDOW[1]:REGION[3] - WINDOW[1], REGION[0] - WINDOW[0]:REGION[2] - WINDOW[0]]
        pictures = [pattern.picture(number, *WINDOW[2:])[inside] for number in windows]
        return [[i for i, picture in enumerate(pictures) if np.array_equal(frame[mask], picture[mask])]
                for frame in gif.frames]

    def test_another_monitor_unplugged_while_recording(self):
        # The second monitor moves to where the first was; the same part of it is recorded.
        clipwren = self.start()
        self.pattern_on(SECOND)
        later = self.pattern_on((0, 0), 15, 8)
        later.go()
        later.wait_for_frame(7)
        clipwren.select(*on(SECOND, REGION))
        time.sleep(0.4)
        self.desktop.arrange(*FIRST_UNPLUGGED)
        desktop.wait_for(self.desktop.recording, "a veil on what is left")
        self.check_veil(REGION)
        time.sleep(0.6)
        gif = Gif(clipwren.stop())
        shown = self.frames_by_window(gif, 0, 7)
        print("frames show", shown)
        self.assertEqual((shown[0], shown[-1]), ([0], [1]))
        self.assertNotIn([], shown, "a frame that shows neither")
        self.works_again(clipwren)

    def test_the_recorded_monitor_unplugged(self):
        clipwren = self.start()
        self.pattern_on(THIRD, 15, 0).go()
        clipwren.select(*on(THIRD, REGION))
        time.sleep(1)
        self.desktop.arrange("--output", "DUMMY2", "--off")
        desktop.wait_for(self.desktop.recording, "a veil on what is left")
        desktop.wait_for(lambda: clipwren.log.matching("stream stopped with error"), "the log line")
        self.assertTrue(clipwren.running())
        gif = Gif(clipwren.stop())
        self.assertGreater(len(gif.frames), 8)
        self.works_again(clipwren)

    def test_the_recorded_monitor_off_for_a_moment(self):
        clipwren = self.start()
        region = on(THIRD, REGION)
        window = self.pattern_on(THIRD, 15, 8)
        clipwren.select(*region)
        time.sleep(0.4)
        self.desktop.arrange("--output", "DUMMY2", "--off")
        time.sleep(0.5)
        self.plug_all_in()
        desktop.wait_for(self.desktop.recording, "a veil on all three")
        self.check_veil(region)
        time.sleep(0.3)
        window.go()
        window.wait_for_frame(7)
        time.sleep(0.3)
        shown = self.frames_by_window(Gif(clipwren.stop()), *range(8))
        self.assertEqual((shown[0], shown[-1]), ([0], [7]))
        self.assertNotIn([], shown, "a frame that shows something else")
        self.works_again(clipwren)

    def test_another_mode_while_recording(self):
        clipwren = self.start()
        region = on(FIRST, REGION)
        window = self.pattern_on(FIRST, 15, 11)
        clipwren.select(*region)
        self.desktop.arrange("--output", "DUMMY0", "--mode", "1024x768")
        desktop.wait_for(self.desktop.recording, "a veil on all three")
        self.check_veil(region)
        window.go()
        window.wait_for_frame(10)
        time.sleep(0.3)
        # The server puts the pointer elsewhere when it changes the mode: a frame of its own.
        recording = Recording(self, Gif(clipwren.stop()), window, region, ignored=(312, 232, 320, 240))
        self.assertEqual(sorted(set(recording.counters())), list(range(11)))
        recording.check_pixels()
        self.works_again(clipwren)


if __name__ == "__main__":
    desktop.main()
