"""The two programs of nearly every screen test: the window with known pictures, and Clipwren itself."""

import os
import pathlib
import subprocess
import time

from processes import BUILD, PATIENCE, Lines, end, tool, wait_for


class PatternWindow:
    """A running pattern_window. An unmanaged one stands where no window manager would let it."""

    def __init__(self, left, top, width, height, fps=0, frames=1, unmanaged=False):
        self.size = (width, height)
        self.process = subprocess.Popen([tool("pattern_window"), *map(str, (left, top, width, height, fps, frames)),
                                         *(["unmanaged"] if unmanaged else [])],
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.output = Lines(self.process.stdout)
        ready = wait_for(lambda: self.output.matching(r"^ready (-?\d+) (-?\d+) (\d+)"), "the pattern window")[0]
        assert (int(ready[1]), int(ready[2])) == (left, top), f"the window manager put it elsewhere: {ready[0]}"
        self.left, self.top, self.id = left, top, int(ready[3])
        self.moving = False

    def go(self):
        """Sets the pictures in motion."""
        self.moving = True
        self.process.stdin.write("\n")
        self.process.stdin.flush()

    def times(self):
        """When each picture appeared, by number."""
        return {int(match[1]): float(match[2]) for match in self.output.matching(r"^frame (\d+) ([\d.]+)")}

    def wait_for_frame(self, n, seconds=PATIENCE):
        wait_for(lambda: n in self.times(), f"picture {n}", seconds)

    def presses(self, kind):
        """The presses of buttons ("button") or keys ("key") so far, as the numbers that the window logged."""
        return [int(match[1]) for match in self.output.matching(rf"^{kind} (\d+) ")]

    def close(self):
        end(self.process)


class Clipwren:
    """A running Clipwren, ready for its hot key.

    settings: what stands in the ini file's section [recording], or its whole text.
    command: a prefix for the command line.
    """

    def __init__(self, desktop, settings=None, command=(), environment=None):
        self.desktop = desktop
        home = pathlib.Path(os.environ["HOME"])
        self.folder = home / "Pictures" / "Clipwren"
        self.settings = pathlib.Path(os.environ["XDG_CONFIG_HOME"]) / "clipwren" / "clipwren.ini"
        if settings is not None:
            self.settings.parent.mkdir(parents=True, exist_ok=True)
            text = settings
            if not isinstance(settings, (str, bytes)):
                text = "[recording]\n" + "".join(f"{key}={value}\n" for key, value in settings.items())
            self.settings.write_bytes(text if isinstance(text, bytes) else text.encode())
        self.before = set(self.folder.glob("*"))
        self.process = subprocess.Popen([*command, str(BUILD / "clipwren")], stderr=subprocess.PIPE, text=True,
                                        errors="replace", env={**os.environ, **(environment or {})})
        self.log = Lines(self.process.stderr, echo=True)
        self.saved = 0
        wait_for(lambda: self.process.poll() is not None or desktop.hot_key_is_taken(), "the hot key")
        assert self.process.poll() is None, f"Clipwren ended with {self.process.returncode}"

    def running(self):
        return self.process.poll() is None

    def begin(self):
        """Hot key; returns when the selector is up and a person could have noticed."""
        self.desktop.hot_key()
        wait_for(self.desktop.selecting, "the selector")
        time.sleep(0.15)

    def select(self, left, top, right, bottom):
        """Hot key and drag; returns when the veil is up."""
        self.begin()
        self.desktop.drag(left, top, right, bottom)
        wait_for(self.desktop.recording, "the veil")

    def stop(self):
        self.desktop.hot_key()
        return self.wait_for_gif()

    def wait_for_gif(self, seconds=60):
        """The path of the next GIF that the log speaks of."""
        def line():
            assert self.running() or self.log.thread.is_alive(), "Clipwren ended"
            assert not self.desktop.windows_named("Clipwren"), "Clipwren shows an alert instead"
            found = self.log.matching(r"\[Clipwren\] GIF copied to clipboard — (Recording_.*\.gif)$")
            return found[self.saved:self.saved + 1]
        name = wait_for(line, "the log line of a saved GIF", seconds)[0][1]
        self.saved += 1
        return self.folder / name

    def gifs(self):
        """The files that have come into the folder since the start."""
        return sorted(set(self.folder.glob("*")) - self.before)

    def close(self):
        """Ends it as a session manager does; its status."""
        return end(self.process)
