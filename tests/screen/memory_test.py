"""A recording without a limit on a computer that runs out of memory."""

import pathlib
import re
import resource
import threading
import time
import unittest

import hearing
import numpy as np
from PIL import Image

import desktop
from desktop import wait_for
from gif import Gif

MEGABYTE = 1 << 20
SHORT = ("The recording was stopped because memory is running short. What was recorded until then is saved and on the "
         "clipboard.")


def setUpModule():
    unittest.addModuleCleanup(hearing.Bus().close)


class Noise:
    """A window in which every pixel changes all the time, and that nothing can make small."""

    def __init__(self, left, top, width, height, fps):
        self.desktop = desktop.Desktop()
        screen = self.desktop.screen
        self.size = width, height
        self.window = screen.root.create_window(left, top, width, height, 0, screen.root_depth,
                                                override_redirect=True)
        # Shown shifted by a few pixels each time.
        self.picture = self.window.create_pixmap(width + 64, height + 64, screen.root_depth)
        self.graphics = self.window.create_gc(graphics_exposures=False)
        pixels = np.random.default_rng(5).integers(0, 256, (height + 64, width + 64, 3), np.uint8)
        self.picture.put_pil_image(self.graphics, 0, 0, Image.fromarray(pixels))
        self.window.map()
        self.interval = 1 / fps
        self.ended = threading.Event()
        self.thread = threading.Thread(target=self.draw)
        self.thread.start()

    def draw(self):
        number = 0
        while not self.ended.wait(self.interval):
            self.window.copy_area(self.graphics, self.picture, number * 7 % 64, number * 13 % 64, *self.size, 0, 0)
            self.desktop.display.sync()
            number += 1

    def close(self):
        self.ended.set()
        self.thread.join()
        self.desktop.close()


class ShortMemory(desktop.ScreenTest):
    REGION = (100, 100, 900, 600)

    def record_until_it_stops(self, limit, room):
        """Records noise with so many bytes of room; the GIF."""
        left, top, right, bottom = self.REGION
        noise = Noise(left, top, right - left, bottom - top, 30)
        self.addCleanup(noise.close)
        # A limit from the start, as a user sets it; how much room it leaves is told once the size is known.
        clipwren = self.start({"fps": 30, "resolution": 1600, "maxDuration": 0}, environment=hearing.environment,
                              command=["prlimit", f"--{limit}={64 << 30}:{64 << 30}"])
        used = self.size(clipwren, {"as": "VmSize", "data": "VmData"}[limit])
        kind = {"as": resource.RLIMIT_AS, "data": resource.RLIMIT_DATA}[limit]
        resource.prlimit(clipwren.process.pid, kind, (used + room, used + room))
        clipwren.select(*self.REGION)
        begin = time.monotonic()
        saved = wait_for(lambda: clipwren.log.matching(r"GIF copied to clipboard — (Recording_.*\.gif)$"),
                         "the recording to stop and to be saved", 90)
        print(f"  {limit}: saved after {time.monotonic() - begin:.1f} s, at most "
              f"{self.size(clipwren, 'VmHWM') / MEGABYTE:.0f} MB resident", flush=True)
        alert = wait_for(lambda: hearing.window("Clipwren"), "the alert")
        wait_for(lambda: hearing.found(alert, "label", SHORT), "what it says")
        hearing.act(wait_for(lambda: hearing.found(alert, "push button", "OK"), "its button"))
        wait_for(lambda: not self.desktop.windows_named("Clipwren"), "the alert to go")
        self.assertTrue(clipwren.running())
        self.assertEqual(self.desktop.covering_windows(), [])
        return clipwren, clipwren.folder / saved[0][1]

    def size(self, clipwren, name):
        status = pathlib.Path(f"/proc/{clipwren.process.pid}/status").read_text()
        return int(re.search(rf"{name}:\s+(\d+) kB", status)[1]) * 1024

    def expect_whole(self, path, least_frames):
        gif = Gif(path)
        self.assertEqual((gif.width, gif.height), (800, 500))
        self.assertGreaterEqual(len(gif.frames), least_frames)
        self.assertTrue(path.read_bytes().endswith(b";"))

    def test_limit_of_addresses(self):
        _, path = self.record_until_it_stops("as", 500 * MEGABYTE)
        self.expect_whole(path, 10)

    def test_limit_of_data(self):
        clipwren, path = self.record_until_it_stops("data", 400 * MEGABYTE)
        self.expect_whole(path, 10)
        # And the memory is there again for another one.
        clipwren.saved += 1
        clipwren.select(110, 110, 210, 160)
        time.sleep(2.5)  # it looks at the memory every two seconds
        self.assertGreater(Gif(clipwren.stop()).duration, 2)


if __name__ == "__main__":
    desktop.main()
