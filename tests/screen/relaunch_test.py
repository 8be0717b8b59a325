#!/usr/bin/python3
"""The program restarts itself: the new instance begins only when the old one has ended, wherever it is installed."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

import desktop
from desktop import holds_for, wait_for


class RelaunchTest(unittest.TestCase):
    def test_the_next_instance_begins_after_this_one_has_ended(self):
        for name in ("plain", "it's a \"bird\" $HOME `id` 100% \\"):
            with self.subTest(folder=name), tempfile.TemporaryDirectory() as folder:
                program = pathlib.Path(folder) / name / "the probe"
                program.parent.mkdir()
                shutil.copy2(desktop.tool("relaunch_probe"), program)
                diary = pathlib.Path(folder) / "diary"

                def lines():
                    return [line.split() for line in diary.read_text().splitlines()]

                first = subprocess.Popen([program], env={**os.environ, "RELAUNCH_DIARY": str(diary)})
                self.assertEqual(first.wait(desktop.PATIENCE), 0)
                wait_for(lambda: len(lines()) >= 4, "the second instance to begin and end")
                holds_for(lambda: len(lines()) == 4, "one new instance only", 1.5)
                (_, first_pid, _), (_, ended_pid, ended), (_, second_pid, begun), _ = lines()
                self.assertEqual([what for what, _, _ in lines()], ["begin", "end", "begin", "end"])
                self.assertEqual((first_pid, ended_pid), (str(first.pid), str(first.pid)))
                self.assertNotEqual(second_pid, first_pid)
                # A pause of 0.2 s, a poll every 0.1 s, and the start itself.
                self.assertGreater(float(begun) - float(ended), 0.2)
                self.assertLess(float(begun) - float(ended), desktop.PATIENCE)


if __name__ == "__main__":
    desktop.main()
