"""One Clipwren a session: options for the running one, a second start, and a desktop without any panel."""

import os
import subprocess
import time

import desktop
from desktop import BUILD, ScreenTest, end, holds_for, wait_for


def run(*options, **environment):
    variables = {**os.environ, **environment}
    return subprocess.run([BUILD / "clipwren", *options], capture_output=True, text=True, timeout=20,
                          env={name: value for name, value in variables.items() if value is not None})


class InstanceTest(ScreenTest):
    def test_options_without_a_running_one(self):
        for option in ("--trigger", "--quit"):
            result = run(option)
            self.assertEqual((result.returncode, result.stderr), (1, "clipwren: Clipwren is not running\n"))
        version = run("--version", DISPLAY=None, DBUS_SESSION_BUS_ADDRESS=None)
        self.assertEqual((version.returncode, version.stderr), (0, ""))
        self.assertRegex(version.stdout, r"^clipwren \d+\.\d+\.\d+\n$")
        self.assertEqual(run("--help", DISPLAY=None).returncode, 0)
        for wrong in (["--record"], ["x"], ["--help", "--quit"]):
            result = run(*wrong)
            self.assertEqual((result.returncode, result.stdout), (2, ""))
            self.assertIn("clipwren: un", result.stderr)

    def test_trigger_runs_the_dispatch(self):
        clipwren = self.start()
        self.assertEqual(run("--trigger").returncode, 0)
        wait_for(self.desktop.selecting, "the selector")
        self.assertEqual(run("--trigger").returncode, 0)
        wait_for(self.desktop.bare, "the selector's end")
        self.assertEqual(run("--trigger").returncode, 0)
        wait_for(self.desktop.selecting, "the selector")
        self.desktop.drag(200, 200, 500, 400)
        wait_for(self.desktop.recording, "the veil")
        time.sleep(1)
        self.assertEqual(run("--trigger").returncode, 0)
        clipwren.wait_for_gif()

    def test_a_second_start_shows_the_settings_of_the_first(self):
        clipwren = self.start()
        self.assertEqual(self.desktop.windows_named("Settings"), [])
        second = run()
        self.assertEqual((second.returncode, second.stderr), (0, ""))
        wait_for(lambda: self.desktop.windows_named("Settings"), "the settings")
        self.assertEqual(run().returncode, 0)
        holds_for(lambda: len(self.desktop.windows_named("Settings")) == 1, "one settings window")
        self.assertEqual(run("--quit").returncode, 0)
        self.assertEqual(clipwren.process.wait(10), 0)

    def test_quit_returns_when_it_is_gone(self):
        for _ in range(3):
            self.start()
            self.assertEqual(run("--quit").returncode, 0)
        clipwren = self.start()
        self.assertTrue(clipwren.running(), "a start right after --quit is the only one")

    def test_quit_while_recording_leaves_the_gif_and_a_bare_desktop(self):
        clipwren = self.start()
        clipwren.select(200, 200, 500, 400)
        time.sleep(1)
        self.assertEqual(run("--quit").returncode, 0)
        wait_for(self.desktop.bare, "the veil's end")
        self.assertEqual(clipwren.process.wait(20), 0)
        wait_for(lambda: clipwren.gifs(), "the GIF")
        self.assertTrue(clipwren.log.matching("GIF saved before the program ended"))
        self.assertFalse(clipwren.log.matching("QObject"), "objects of the main thread end there")

    def test_without_a_bus(self):
        clipwren = self.start(environment={"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"})
        wait_for(lambda: clipwren.log.matching("there is no D-Bus session"), "what it says of the bus")
        second = run(DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent")
        self.assertEqual(second.returncode, 1)
        self.assertEqual(run("--trigger", DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent").returncode, 1)
        clipwren.select(200, 200, 500, 400)
        time.sleep(1)
        clipwren.stop()

    def test_without_a_panel_the_user_is_told_once(self):
        monitor = subprocess.Popen(["dbus-monitor", "--session", "interface='org.freedesktop.Notifications'"],
                                   stdout=subprocess.PIPE, text=True)
        self.addCleanup(end, monitor)
        bus = desktop.Lines(monitor.stdout)
        began = time.monotonic()
        clipwren = self.start()
        wait_for(lambda: bus.matching("member=Notify"), "the notification")
        self.assertLess(time.monotonic() - began, 12)
        wait_for(lambda: bus.matching(r"Super\+Shift\+G"), "what it tells")
        # Nobody shows notifications here.
        wait_for(lambda: clipwren.log.matching(r"Clipwren is running\..*Super\+Shift\+G"), "the same on standard error")

        # A panel that comes later shows the item all the same.
        panel = subprocess.Popen(["trayer", "--edge", "top", "--align", "right", "--widthtype", "request"])
        self.addCleanup(end, panel)
        wait_for(lambda: self.desktop.tray_windows_named("Clipwren"), "the item")
        time.sleep(7)
        self.assertEqual(len(bus.matching("member=Notify")), 1)


if __name__ == "__main__":
    desktop.main()
