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
    def relaunched(self, program, meanwhile=lambda: None):
        """The lines of the diary of a probe that restarts itself, after something has been done while it ran."""
        diary = program.parent / "diary"

        def lines():
            return [line.split() for line in diary.read_text().splitlines()] if diary.exists() else []

        first = subprocess.Popen([program], stdin=subprocess.PIPE, env={**os.environ, "RELAUNCH_DIARY": str(diary)})
        self.addCleanup(first.stdin.close)
        wait_for(lambda: len(lines()) == 1, "the first instance to begin")
        meanwhile()
        first.communicate(b"\n", desktop.PATIENCE)
        self.assertEqual(first.returncode, 0)
        wait_for(lambda: len(lines()) >= 4, "the second instance to begin and end")
        holds_for(lambda: len(lines()) == 4, "one new instance only", 1.5)
        self.assertEqual([(what, pid == str(first.pid)) for what, pid, _ in lines()],
                         [("begin", True), ("end", True), ("begin", False), ("end", False)])
        return lines()

    def test_the_next_instance_begins_after_this_one_has_ended(self):
        for name in ("plain", "it's a \"bird\" $HOME `id` 100% \\"):
            with self.subTest(folder=name), tempfile.TemporaryDirectory() as folder:
                program = pathlib.Path(folder) / name / "the probe"
                program.parent.mkdir()
                shutil.copy2(desktop.tool("relaunch_probe"), program)
                _, (_, _, ended), (_, _, begun), _ = self.relaunched(program)
                # A pause of 0.2 s, a poll every 0.1 s, and the start itself.
                self.assertGreater(float(begun) - float(ended), 0.2)
                self.assertLess(float(begun) - float(ended), desktop.PATIENCE)

    def test_after_an_update_it_is_the_new_program_that_begins(self):
        with tempfile.TemporaryDirectory() as folder:
            program, update = pathlib.Path(folder) / "program", pathlib.Path(folder) / "update"
            mark = pathlib.Path(folder) / "mark"
            shutil.copy2(desktop.tool("relaunch_probe"), program)
            # As a package manager does it: a new file takes the name of the old.
            update.write_text(f"#!/bin/sh\ntouch '{mark}'\nexec '{desktop.tool('relaunch_probe')}'\n")
            update.chmod(0o755)
            self.relaunched(program, lambda: os.replace(update, program))
            self.assertTrue(mark.exists())


if __name__ == "__main__":
    desktop.main()
