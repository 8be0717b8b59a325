"""Programs that a screen test starts and waits for: their output, their end, and what takes its time."""

import os
import pathlib
import re
import signal
import subprocess
import sys
import threading
import time

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("CLIPWREN_BUILD", REPOSITORY / "build" / "release"))
# Everything takes longer under a sanitizer and on a busy machine; a wait that succeeds costs nothing.
PATIENCE = 15


def tool(name):
    return str(BUILD / "bin" / name)


def wait_for(predicate, what, seconds=PATIENCE):
    """The first true result of the predicate; AssertionError after the time."""
    limit = time.monotonic() + seconds
    while True:
        result = predicate()
        if result:
            return result
        assert time.monotonic() < limit, f"waited {seconds} s for {what}"
        time.sleep(0.02)


def holds_for(predicate, what, seconds=0.5):
    """Checks that something stays as it is."""
    limit = time.monotonic() + seconds
    while time.monotonic() < limit:
        assert predicate(), f"no longer so: {what}"
        time.sleep(0.02)


class Lines:
    """The lines of a pipe, gathered while they come, each with the monotonic time of its arrival."""

    def __init__(self, pipe, echo=False):
        self.lines = []
        self.times = []
        self.echo = echo
        self.thread = threading.Thread(target=self.read, args=(pipe,), daemon=True)
        self.thread.start()

    def read(self, pipe):
        for line in pipe:
            self.times.append(time.monotonic())
            self.lines.append(line.rstrip("\n"))
            if self.echo:
                print(f"  clipwren: {line}", end="", file=sys.stderr, flush=True)

    def matching(self, pattern):
        return [match for match in (re.search(pattern, line) for line in list(self.lines)) if match]


def end(process, seconds=10):
    """Asks a process to end; its status, or AssertionError when it has to be killed."""
    if process.poll() is None:
        process.send_signal(signal.SIGTERM)
    try:
        return process.wait(seconds)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()
        raise AssertionError(f"{process.args[0]} did not end within {seconds} s")
