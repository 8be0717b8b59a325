"""The cursor is in the recording, where it was and as it looked."""

import time

import desktop
from compare import Recording
from gif import Gif


class Cursor(desktop.ScreenTest):
    REGION = (160, 120, 560, 420)
    WINDOW = (150, 112, 440, 340)
    PLACES = [(200, 200), (300, 250), (160, 300), (559, 130)]

    def test_the_cursor_is_where_it_was(self):
        clipwren = self.start()
        window = self.pattern(*self.WINDOW)
        clipwren.select(*self.REGION)
        time.sleep(0.5)
        moved = []
        for place in self.PLACES:
            self.desktop.move(*place)
            moved.append(time.monotonic())
            time.sleep(0.5)
        gif = Gif(clipwren.stop())
        # The window stands still: exactly one frame for the start and one for each place.
        self.assertEqual(len(gif.frames), 1 + len(self.PLACES))
        recording = Recording(self, gif, window, self.REGION)
        recording.check_pixels([[place] for place in [self.REGION[2:], *self.PLACES]])
        for delay, earlier, later in zip(gif.delays[1:], moved, moved[1:]):
            self.assertAlmostEqual(delay, later - earlier, delta=0.1)

    def test_the_cursor_leaves_no_trace_where_it_left(self):
        clipwren = self.start()
        window = self.pattern(*self.WINDOW)
        clipwren.select(*self.REGION)
        time.sleep(0.3)
        self.desktop.move(300, 200)
        time.sleep(0.3)
        self.desktop.move(900, 700)
        time.sleep(0.3)
        gif = Gif(clipwren.stop())
        recording = Recording(self, gif, window, self.REGION)
        recording.check_pixels([[self.REGION[2:]], [(300, 200)], [(900, 700)]])

    def test_a_moving_cursor_over_moving_pictures(self):
        clipwren = self.start()
        window = self.pattern(*self.WINDOW, 15, 46)
        clipwren.select(*self.REGION)
        time.sleep(0.3)
        path = [self.REGION[2:]]
        window.go()
        while 45 not in window.times():
            # Below the counter, which must stay readable.
            path.append((170 + 7 * len(path) % 380, 155 + 5 * len(path) % 255))
            self.desktop.move(*path[-1])
            time.sleep(0.03)
        time.sleep(0.3)
        gif = Gif(clipwren.stop())
        recording = Recording(self, gif, window, self.REGION)
        recording.check_pixels([path] * len(gif.frames))
        self.assertEqual(sorted(set(recording.counters())), list(range(46)))


if __name__ == "__main__":
    desktop.main()
