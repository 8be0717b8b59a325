"""The computer is switched off while somebody records or saves: it waits until the recording is whole.

logind is the test's; what it waits for is a descriptor that the program has to close.
"""

import os
import socket
import subprocess
import time

import desktop
from gif import Gif
from hard_times import HardTimes
from logind import Logind

NO_SYSTEM_BUS = {"DBUS_SYSTEM_BUS_ADDRESS": "unix:path=/nonexistent"}


class Shutdown(desktop.ScreenTest):
    REGION = (100, 100, 500, 400)

    def setUp(self):
        super().setUp()
        self.logind = Logind()
        self.addCleanup(self.logind.close)
        self.hard = HardTimes("wishes")

    def begin(self):
        """Returns while a region is being recorded."""
        clipwren = self.start(environment=self.hard.environment)
        self.pattern(80, 80, 440, 340, 15, 100).go()
        self.assertEqual(self.logind.inhibitors, [])
        clipwren.select(*self.REGION)
        desktop.wait_for(lambda: self.logind.inhibitors, "the inhibitor lock")
        time.sleep(0.5)
        return clipwren

    def inhibitor(self):
        self.assertEqual(len(self.logind.inhibitors), 1)
        return self.logind.inhibitors[0]

    def expect_whole(self, clipwren):
        """One whole recording, and nothing half."""
        files = clipwren.gifs()
        self.assertEqual(len(files), 1, files)
        self.assertGreater(len(Gif(files[0]).frames), 1)

    def test_nobody_is_asked_to_wait_without_a_recording(self):
        clipwren = self.start()
        clipwren.begin()
        desktop.holds_for(lambda: not self.logind.inhibitors, "no inhibitor lock")
        self.desktop.keysym("Escape")

    def test_an_ordinary_recording_holds_it_until_the_file_is_whole(self):
        clipwren = self.begin()
        inhibitor = self.inhibitor()
        self.assertEqual((inhibitor.what, inhibitor.who, inhibitor.why, inhibitor.mode),
                         ("shutdown", "Clipwren", "A recording is not saved yet", "delay"))
        self.assertTrue(inhibitor.held())
        self.hard.wish("hold rename 1")
        self.desktop.hot_key()
        self.hard.wait_until_held()
        desktop.holds_for(inhibitor.held, "the inhibitor lock", 1)
        self.hard.wish()
        # The clipboard's keeper lives on, and has not inherited it.
        desktop.wait_for(lambda: not inhibitor.held(), "its end")
        clipwren.wait_for_gif()
        self.expect_whole(clipwren)
        self.assertTrue(clipwren.running())
        clipwren.select(*self.REGION)
        desktop.wait_for(lambda: len(self.logind.inhibitors) == 2, "the next lock")
        self.assertTrue(self.logind.inhibitors[1].held())

    def test_a_shutdown_while_recording(self):
        clipwren = self.begin()
        self.hard.wish("hold sync 1")
        self.logind.prepare_for_shutdown()
        desktop.wait_for(self.desktop.bare, "no veil")
        self.hard.wait_until_held()
        desktop.holds_for(self.inhibitor().held, "the inhibitor lock", 1)
        self.assertEqual([file for file in clipwren.gifs() if not file.name.startswith(".")], [])
        self.hard.wish()
        desktop.wait_for(lambda: not self.inhibitor().held(), "its end")
        self.expect_whole(clipwren)
        self.assertEqual(clipwren.process.wait(20), 0)
        self.assertTrue(clipwren.log.matching("GIF saved before the program ended"))

    def test_a_shutdown_while_encoding(self):
        clipwren = self.begin()
        self.hard.wish("hold write 1")
        self.desktop.hot_key()
        self.hard.wait_until_held()
        self.logind.prepare_for_shutdown()
        desktop.holds_for(lambda: self.inhibitor().held() and clipwren.running(), "the inhibitor lock", 1)
        self.hard.wish()
        clipwren.wait_for_gif()
        desktop.wait_for(lambda: not self.inhibitor().held(), "its end")
        self.expect_whole(clipwren)
        self.assertTrue(clipwren.running())

    def test_a_kill_lets_the_shutdown_go_on(self):
        clipwren = self.begin()
        clipwren.process.kill()
        clipwren.process.wait()
        self.expected_status = -9
        desktop.wait_for(lambda: not self.inhibitor().held(), "the end of the lock")

    def test_without_a_system_bus_nothing_is_said(self):
        clipwren = self.start(environment=NO_SYSTEM_BUS)
        clipwren.select(*self.REGION)
        time.sleep(0.5)
        clipwren.stop()
        said = [line for line in clipwren.log.lines if "GIF copied" not in line and "No panel" not in line]
        self.assertEqual(said, [])

    def test_a_system_bus_that_never_answers_holds_up_nothing(self):
        path = os.environ["DESKTOP_FOLDER"] + "/mute-bus"
        with socket.socket(socket.AF_UNIX) as bus:
            bus.bind(path)
            bus.listen(5)
            clipwren = self.start(environment={"DBUS_SYSTEM_BUS_ADDRESS": "unix:path=" + path})
            clipwren.begin()
            self.desktop.keysym("Escape")
            desktop.wait_for(self.desktop.bare, "the selector to go")
            clipwren.select(*self.REGION)
            time.sleep(0.5)
            clipwren.stop()
            self.assertEqual(subprocess.run([desktop.BUILD / "clipwren", "--trigger"], timeout=10).returncode, 0)
            desktop.wait_for(self.desktop.selecting, "the selector")
            self.assertEqual(clipwren.close(), 0)


if __name__ == "__main__":
    desktop.main()
