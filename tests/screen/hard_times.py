"""What goes wrong with a program's files and its clock, as the test says while it runs."""

import os
import pathlib

from processes import tool, wait_for


class HardTimes:
    """What goes wrong for the programs that are started with `environment`; see hard_times.cpp."""

    def __init__(self, name, environment=None):
        self.file = pathlib.Path(os.environ["DESKTOP_FOLDER"]) / name
        self.environment = {**(environment or {}), "HARD_TIMES": str(self.file),
                            "LD_PRELOAD": tool("hard_times.so")}
        self.wish()

    def wish(self, *lines):
        new = self.file.with_suffix(".new")
        new.write_text("".join(line + "\n" for line in lines))
        new.replace(self.file)

    def beside(self, suffix):
        return pathlib.Path(f"{self.file}.{suffix}")

    def wait_until_held(self):
        wait_for(lambda: self.beside("held").exists(), "the operation to be held")

    def trace(self):
        """What the program has done with the files of recordings since the last question."""
        lines = self.beside("trace").read_text().splitlines() if self.beside("trace").exists() else []
        self.beside("trace").unlink(missing_ok=True)
        return lines
