"""The clipboard holds the GIF's file in the forms that file managers and browsers read, also after the end."""

import subprocess
import time

import desktop

FORMS = ("text/uri-list", "x-special/gnome-copied-files", "application/x-kde-cutselection")


def read(form):
    """What any program gets from the clipboard in this form."""
    return subprocess.run(["xclip", "-selection", "clipboard", "-o", "-t", form], capture_output=True, timeout=10,
                          check=True).stdout


class Clipboard(desktop.ScreenTest):
    def record(self):
        self.clipwren = self.start()
        self.pattern(100, 80, 300, 250)
        self.clipwren.select(120, 100, 360, 280)
        time.sleep(0.4)
        return self.clipwren.stop()

    def check(self, path):
        self.assertLessEqual(set(FORMS), set(read("TARGETS").decode().split()))
        url = path.as_uri()
        self.assertEqual(read("text/uri-list").decode().rstrip("\r\n\0"), url)
        self.assertEqual(read("x-special/gnome-copied-files").decode().rstrip("\n\0"), "copy\n" + url)
        self.assertEqual(read("application/x-kde-cutselection").rstrip(b"\0"), b"0")

    def test_before_and_after_the_program_ended(self):
        path = self.record()
        self.check(path)
        self.assertEqual(self.clipwren.close(), 0)
        for _ in range(3):
            self.check(path)
            time.sleep(0.5)

    def test_the_next_recording_replaces_the_first(self):
        first = self.record()
        time.sleep(1.1)  # files are named by the second
        self.clipwren.select(120, 100, 360, 280)
        time.sleep(0.4)
        second = self.clipwren.stop()
        self.assertNotEqual(first, second)
        self.check(second)

    def test_a_later_copy_elsewhere_wins_for_good(self):
        self.record()
        subprocess.run(["xclip", "-selection", "clipboard"], input=b"other", check=True, timeout=10)
        self.assertEqual(self.clipwren.close(), 0)
        time.sleep(0.5)
        self.assertEqual(read("UTF8_STRING"), b"other")


if __name__ == "__main__":
    desktop.main()
