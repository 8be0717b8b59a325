"""The file of a recording when something goes wrong while it is written, and the clock that names it."""

import errno
import os
import pathlib
import re
import signal
import subprocess
import time
import unittest

import hearing
import numpy as np
from PIL import Image
from Xlib import X

import desktop
from desktop import BUILD, holds_for, wait_for
from gif import Gif
from hard_times import HardTimes

HALF = re.compile(r"\.clipwren-recording-[0-9a-f]{16}\.part")


def setUpModule():
    unittest.addModuleCleanup(hearing.Bus().close)


class Saving(desktop.ScreenTest):
    REGION = (100, 100, 900, 700)

    def setUp(self):
        super().setUp()
        self.folder = pathlib.Path(os.environ["HOME"]) / "Pictures" / "Clipwren"
        self.folder.mkdir(parents=True, exist_ok=True)
        for file in self.folder.iterdir():
            file.unlink()
        self.hard = HardTimes("wishes", hearing.environment)

    def noise(self, seed=1):
        """A window full of what no GIF makes small, so that a file takes several writes."""
        left, top, right, bottom = self.REGION
        screen = self.desktop.screen
        window = screen.root.create_window(left, top, right - left, bottom - top, 0, screen.root_depth,
                                           override_redirect=True)
        picture = window.create_pixmap(right - left, bottom - top, screen.root_depth)
        pixels = np.random.default_rng(seed).integers(0, 256, (bottom - top, right - left, 3), np.uint8)
        picture.put_pil_image(window.create_gc(), 0, 0, Image.fromarray(pixels))
        window.change_attributes(background_pixmap=picture)
        window.map()
        self.desktop.display.sync()
        self.addCleanup(window.destroy)

    def begin_saving(self, clipwren, seconds=0.3):
        clipwren.select(*self.REGION)
        time.sleep(seconds)
        self.desktop.hot_key()

    def record(self, clipwren, seconds=0.3):
        self.begin_saving(clipwren, seconds)
        return clipwren.wait_for_gif()

    def files(self):
        """(names of recordings, names of hidden files)"""
        names = sorted(file.name for file in self.folder.iterdir())
        return [name for name in names if not name.startswith(".")], [name for name in names if name.startswith(".")]

    def expect_whole(self, path):
        gif = Gif(path)
        self.assertEqual((gif.width, gif.height), (800, 600))
        self.assertTrue(path.read_bytes().endswith(b";"))

    def positions(self, clipwren):
        """Everything that is done with a large file until it is a recording."""
        self.noise()
        self.hard.trace()
        path = self.record(clipwren)
        self.expect_whole(path)
        path.unlink()
        operations = self.hard.trace()
        writes = sum(line.startswith("write") for line in operations)
        self.assertEqual(operations, ["open 1", *(f"write {n}" for n in range(1, writes + 1)), "sync 1", "rename 1"])
        self.assertGreater(writes, 2)
        return operations

    # A disk that fails

    def test_each_operation_that_fails(self):
        clipwren = self.start(environment=self.hard.environment)
        for operation in self.positions(clipwren):
            error = errno.EIO if operation.startswith("rename") else errno.ENOSPC
            with self.subTest(operation):
                self.hard.wish(f"fail {operation} {error}")
                self.begin_saving(clipwren)
                alert = wait_for(lambda: hearing.window("Clipwren"), "the alert", 30)
                what = "create GIF destination" if operation.startswith("open") else "finalize GIF"
                wait_for(lambda: hearing.found(alert, "label", f"Could not save GIF: Could not {what}."), "what it says")
                hearing.act(wait_for(lambda: hearing.found(alert, "push button", "OK"), "its button"))
                wait_for(lambda: not self.desktop.windows_named("Clipwren"), "the alert to go")
                recordings, hidden = self.files()
                self.assertEqual(hidden, [])
                # A part of the file is where the file would be; without the name there is nothing.
                self.assertEqual(len(recordings), 0 if re.match("open|rename", operation) else 1)
                for name in recordings:
                    self.assertRegex(name, r"^Recording_[\d_-]+\.gif$")
                    (self.folder / name).unlink()
        self.hard.wish()
        self.expect_whole(self.record(clipwren))

    def test_killed_at_each_operation(self):
        own = self.folder / ".clipwren-recording-notes.part"
        own.write_text("the user's own")
        clipwren = self.start(environment=self.hard.environment)
        for operation in self.positions(clipwren)[1:]:
            with self.subTest(operation):
                self.hard.wish(f"hold {operation}")
                self.begin_saving(clipwren)
                self.hard.wait_until_held()
                clipwren.process.kill()
                clipwren.process.wait()
                self.hard.beside("held").unlink()
                recordings, hidden = self.files()
                self.assertEqual(recordings, [])
                hidden.remove(own.name)
                self.assertEqual(len(hidden), 1)
                self.assertRegex(hidden[0], HALF)
                self.hard.wish()
                clipwren = desktop.Clipwren(self.desktop, environment=self.hard.environment)
                self.addCleanup(clipwren.close)
                wait_for(lambda: self.files() == ([], [own.name]), "the half file to go")
        self.expect_whole(self.record(clipwren))
        self.assertEqual(own.read_text(), "the user's own")
        self.expected_status = -signal.SIGKILL  # of the first one, which was killed

    def test_a_file_that_a_living_one_writes_stays(self):
        first = self.start(environment=self.hard.environment)
        writes = [line for line in self.positions(first) if line.startswith("write")]
        self.hard.wish(f"hold {writes[-1]}")
        self.begin_saving(first)
        self.hard.wait_until_held()
        held = self.files()[1]
        left = self.folder / ".clipwren-recording-0123456789abcdef.part"
        left.write_text("of one that is gone")

        # Two of the same user, in two sessions.
        second = subprocess.Popen([BUILD / "clipwren"], stderr=subprocess.DEVNULL,
                                  env={**os.environ, "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"})
        self.addCleanup(desktop.end, second)
        wait_for(lambda: not left.exists(), "the second one to clean up")
        holds_for(lambda: self.files() == ([], held), "the first one's file")
        self.hard.wish()
        self.expect_whole(first.wait_for_gif())
        self.assertEqual(self.files()[1], [])

    # A drive that takes its time

    def test_a_slow_drive(self):
        clipwren = self.start(environment=self.hard.environment)
        self.hard.wish("hold write 1")
        self.begin_saving(clipwren)
        self.hard.wait_until_held()
        # All of this happens while the drive does nothing.
        subprocess.run([BUILD / "clipwren"], timeout=20, check=True)
        settings = wait_for(lambda: hearing.window("Settings"), "the settings")
        self.assertIsNotNone(hearing.found(settings, "push button", "Reset All Settings"))
        self.desktop.hot_key()
        holds_for(self.desktop.bare, "no selector while the GIF is saved")
        self.desktop.keysym("Escape")
        self.assertEqual(clipwren.log.matching("GIF copied"), [])
        self.assertTrue(self.hard.beside("held").exists())
        self.hard.wish()
        self.expect_whole(clipwren.wait_for_gif())

    def test_the_sessions_end_waits_for_a_slow_drive(self):
        clipwren = self.start(environment=self.hard.environment)
        self.hard.wish("hold sync 1")
        self.begin_saving(clipwren)
        self.hard.wait_until_held()
        clipwren.process.terminate()
        holds_for(clipwren.running, "the program", 1)
        self.hard.wish()
        self.assertEqual(clipwren.process.wait(20), 0)
        recordings, hidden = self.files()
        self.assertEqual((len(recordings), hidden), (1, []))
        self.expect_whole(self.folder / recordings[0])

    # The clock of the day

    def test_the_clock_is_set_back_while_recording(self):
        clipwren = self.start(environment=self.hard.environment)
        window = self.pattern(150, 112, 680, 396, 15, 0)
        clipwren.select(160, 120, 800, 480)
        began = time.monotonic()
        window.go()
        time.sleep(1)
        self.hard.wish("clock -86400")
        day = time.strftime("%Y-%m-%d", time.localtime(time.time() - 86400))
        time.sleep(1)
        self.hard.wish("clock -172800")
        time.sleep(1)
        self.hard.wish("clock -86400")
        path = clipwren.stop()
        shown = time.monotonic() - began
        self.assertTrue(path.name.startswith(f"Recording_{day}"), path.name)
        gif = Gif(path)
        print(f"{len(gif.frames)} frames, {gif.duration:.2f} s")
        self.assertGreater(gif.duration, 2.9)
        self.assertLess(gif.duration, shown + 0.5)
        self.assertLess(max(gif.delays), 1)
        self.assertGreater(len(gif.frames), 20)

    def test_two_recordings_of_one_second(self):
        # The same time is the same name: the second takes the first one's place, and is never mixed with it.
        clipwren = self.start(environment=self.hard.environment)
        self.hard.wish("stand 1710000000")
        self.noise(1)
        first = self.record(clipwren)
        self.expect_whole(first)
        bytes_before = first.read_bytes()
        self.noise(2)
        self.hard.wish("stand 1710000000", "hold rename 1")
        self.begin_saving(clipwren)
        self.hard.wait_until_held()
        self.assertTrue(first.read_bytes() == bytes_before)
        self.hard.wish()
        second = clipwren.wait_for_gif()
        self.assertEqual(second, first)
        self.assertEqual(len(self.files()[0]), 1)
        self.expect_whole(second)
        self.assertFalse(second.read_bytes() == bytes_before)

    # A bare system

    def test_no_fonts_at_all(self):
        empty = pathlib.Path(os.environ["DESKTOP_FOLDER"]) / "fonts.conf"
        empty.write_text('<?xml version="1.0"?><fontconfig></fontconfig>')
        clipwren = self.start(environment={"FONTCONFIG_FILE": str(empty)})
        self.expect_whole(self.record(clipwren))
        # A message without letters can be answered all the same.
        self.folder.rename(self.folder.with_name("elsewhere"))
        self.addCleanup(self.folder.with_name("elsewhere").rename, self.folder)
        self.folder.write_text("in the way")
        self.addCleanup(self.folder.unlink)
        self.begin_saving(clipwren)
        wait_for(lambda: self.desktop.windows_named("Clipwren"), "the alert")
        time.sleep(0.3)
        self.desktop.keysym("Return")
        wait_for(lambda: not self.desktop.windows_named("Clipwren"), "the alert to go")
        self.assertTrue(clipwren.running())


if __name__ == "__main__":
    desktop.main()
