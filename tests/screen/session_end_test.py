"""The session ends while somebody selects, records or saves: what was recorded is saved, and nothing is left behind."""

import os
import signal
import subprocess
import time

from Xlib import X

import desktop
from gif import Gif


class Ending(desktop.ScreenTest):
    def record(self, clipwren, width, height, frames):
        """Returns while a region of that size is being recorded, after that many pictures in it."""
        window = self.pattern(10, 30, width + 30, height + 30, 30, frames + 1)
        clipwren.select(20, 40, 20 + width, 40 + height)
        window.go()
        window.wait_for_frame(frames)

    def begin_encoding(self):
        """Returns when a recording has just ended that takes a while to encode; with the program."""
        clipwren = self.start({"fps": 30, "resolution": 1600, "maxDuration": 0})
        self.record(clipwren, 1200, 900, 30)
        self.desktop.hot_key()
        desktop.wait_for(self.desktop.bare, "the end of the recording")
        self.assertEqual([file for file in clipwren.gifs() if not file.name.startswith(".")], [], "already saved")
        return clipwren

    def check_gif(self, clipwren, least):
        """One whole GIF under its name, and nothing else."""
        files = clipwren.gifs()
        self.assertEqual(len(files), 1, files)
        self.assertRegex(files[0].name, r"^Recording_.*\.gif$")
        gif = Gif(files[0])
        print(f"{len(gif.frames)} frames, {gif.duration:.2f} s")
        self.assertGreaterEqual(len(gif.frames), least)


class SessionEnd(Ending):
    def check_desktop(self):
        desktop.wait_for(self.desktop.bare, "no covering window", 3)
        grab = self.desktop.root.grab_keyboard(True, X.GrabModeAsync, X.GrabModeAsync, X.CurrentTime)
        self.desktop.display.ungrab_keyboard(X.CurrentTime)
        self.assertEqual(grab, X.GrabSuccess)

    def test_sigterm_while_selecting(self):
        clipwren = self.start()
        clipwren.begin()
        self.assertEqual(clipwren.close(), 0)
        self.check_desktop()
        self.assertEqual(clipwren.gifs(), [])

    def test_sigterm_during_a_drag(self):
        clipwren = self.start()
        clipwren.begin()
        self.desktop.move(200, 200)
        self.desktop.button(True)
        self.desktop.move(400, 400)
        self.assertEqual(clipwren.close(), 0)
        self.desktop.button(False)
        self.check_desktop()
        self.assertEqual(clipwren.gifs(), [])

    def test_each_signal_while_recording(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(number):
                clipwren = self.start({"fps": 30, "resolution": 480, "maxDuration": 0})
                self.record(clipwren, 400, 300, 20)
                clipwren.process.send_signal(number)
                self.assertEqual(clipwren.process.wait(20), 0)
                self.check_desktop()
                self.check_gif(clipwren, 15)
                self.assertTrue(clipwren.log.matching("GIF saved before the program ended"))
                time.sleep(1.05)  # names carry the second

    def test_sigterm_while_encoding(self):
        clipwren = self.begin_encoding()
        self.assertEqual(clipwren.close(), 0)
        self.check_gif(clipwren, 25)


class DisplayEnd(Ending):
    """The display server of the session goes, as it does at every logout."""

    expected_status = 1

    def setUp(self):
        reader, writer = os.pipe()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(writer), "-screen", "0", "1280x1024x24", "-noreset",
                                        "-nolisten", "tcp"], pass_fds=[writer], stderr=subprocess.DEVNULL)
        os.close(writer)
        self.addCleanup(desktop.end, self.server)
        before = os.environ["DISPLAY"]
        self.addCleanup(os.environ.__setitem__, "DISPLAY", before)
        with os.fdopen(reader) as number:
            os.environ["DISPLAY"] = ":" + number.readline().strip()
        super().setUp()

    def ends_with_the_server(self, clipwren):
        self.server.kill()
        self.assertEqual(clipwren.process.wait(20), 1)

    def test_while_selecting(self):
        clipwren = self.start()
        clipwren.begin()
        self.ends_with_the_server(clipwren)
        self.assertEqual(clipwren.gifs(), [])

    def test_while_encoding(self):
        clipwren = self.begin_encoding()
        self.ends_with_the_server(clipwren)
        self.check_gif(clipwren, 25)


if __name__ == "__main__":
    desktop.main()
