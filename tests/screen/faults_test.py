"""What the user has when something is broken: a message, a GIF of what there was, and a program that goes on."""

import os
import pathlib
import time

import desktop
from gif import Gif

# A private view of the file system, so that a folder can be small or read-only for Clipwren alone.
ISOLATED = ("unshare", "--mount") if os.geteuid() == 0 else ("unshare", "--mount", "--map-root-user")


def mounted(options):
    folder = pathlib.Path(os.environ["HOME"]) / "Pictures" / "Clipwren"
    folder.mkdir(parents=True, exist_ok=True)
    return (*ISOLATED, "sh", "-c", f'mount -t tmpfs -o {options} none "{folder}" && exec "$@"', "sh")


class Faults(desktop.ScreenTest):
    REGION = (160, 120, 800, 480)
    WINDOW = (150, 112, 680, 396)

    def record(self, clipwren, seconds=1.0):
        window = self.pattern(*self.WINDOW, 15, 0)
        clipwren.select(*self.REGION)
        window.go()
        time.sleep(seconds)
        self.desktop.hot_key()
        return window

    def answer_alert(self):
        desktop.wait_for(lambda: self.desktop.windows_named("Clipwren"), "the alert", 30)
        time.sleep(0.3)
        self.desktop.keysym("Return")
        desktop.wait_for(lambda: not self.desktop.windows_named("Clipwren"), "the alert to go")

    def works_again(self, clipwren):
        """After the failure the program is idle and ready."""
        self.assertTrue(clipwren.running())
        clipwren.begin()
        self.desktop.keysym("Escape")
        desktop.wait_for(self.desktop.bare, "the selector to go")

    def fails_and_goes_on(self, clipwren, seconds=1.0):
        self.record(clipwren, seconds)
        self.answer_alert()
        self.assertEqual(clipwren.log.matching("GIF copied"), [])
        self.works_again(clipwren)

    def test_a_read_only_folder(self):
        self.fails_and_goes_on(self.start(command=mounted("ro")))

    def test_a_file_in_the_folders_place(self):
        folder = pathlib.Path(os.environ["HOME"]) / "Pictures" / "Clipwren"
        if folder.is_dir():
            folder.rename(folder.with_name("Clipwren before"))
        folder.write_text("no folder")
        self.addCleanup(folder.unlink)
        self.fails_and_goes_on(self.start())

    def test_a_full_disk(self):
        clipwren = self.start(command=mounted("size=64k"))
        self.fails_and_goes_on(clipwren, 2)

    def test_nonsense_in_the_settings(self):
        for text in ("[recording]\nfps=banana\nresolution=-99999999999999999999\nmaxDuration=7\n",
                     b"\xff\xfe\x00[[[\n===\n\x00\x00fps=30", "[recording\nfps", "x" * 100000, "[recording]\nfps=" + "9" * 5000):
            with self.subTest(text[:40]):
                clipwren = desktop.Clipwren(self.desktop, text)
                self.pattern(*self.WINDOW)
                try:
                    clipwren.select(*self.REGION)
                    time.sleep(0.3)
                    gif = Gif(clipwren.stop())
                    self.assertEqual((gif.width, gif.height), (640, 360))
                finally:
                    clipwren.close()
                time.sleep(1.1)

    def test_a_folder_in_the_place_of_the_settings(self):
        settings = pathlib.Path(os.environ["XDG_CONFIG_HOME"]) / "clipwren" / "clipwren.ini"
        settings.unlink(missing_ok=True)
        settings.mkdir(parents=True)
        self.addCleanup(settings.rmdir)
        clipwren = desktop.Clipwren(self.desktop)
        self.addCleanup(clipwren.close)
        clipwren.select(*self.REGION)
        time.sleep(0.3)
        self.assertTrue(clipwren.stop().is_file())

    def test_a_stop_while_the_start_is_pending(self):
        # Nothing or little has been recorded: a GIF of it, or the message that there is nothing to save.
        clipwren = self.start()
        for _ in range(5):
            clipwren.begin()
            self.desktop.drag(*self.REGION)
            self.desktop.hot_key()

            def outcome():
                return clipwren.log.matching("GIF copied")[clipwren.saved:] or self.desktop.windows_named("Clipwren")
            desktop.wait_for(outcome, "a GIF or an alert")
            if clipwren.log.matching("GIF copied")[clipwren.saved:]:
                Gif(clipwren.wait_for_gif())
            else:
                self.answer_alert()
            self.works_again(clipwren)
            time.sleep(1.1)

    def test_auto_stop_after_15_seconds(self):
        clipwren = self.start({"fps": 15, "resolution": 800, "maxDuration": 15})
        window = self.pattern(*self.WINDOW, 10, 0)
        clipwren.select(*self.REGION)
        window.go()
        gif = Gif(clipwren.wait_for_gif(40))
        print(f"{len(gif.frames)} frames, {gif.duration:.2f} s")
        self.assertAlmostEqual(gif.duration, 15, delta=0.4)
        self.works_again(clipwren)


if __name__ == "__main__":
    desktop.main()
