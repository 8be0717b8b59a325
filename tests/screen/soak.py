#!/usr/bin/python3
"""Many recordings in a row of one Clipwren: what it holds must not grow.

usage: soak.py [RECORDINGS]     100 when not said; status 1 when something grows after the tenth
"""

import collections
import pathlib
import sys
import time

from Xlib.ext import res

import desktop

# Megabytes. What the toolkit makes at its first uses is not all there after the tenth recording; a leak of one
# small object a recording is more than the second half allows.
SLACK_SINCE_TENTH = 4.0
SLACK_IN_SECOND_HALF = 1.5


def field(text, name):
    return next(int(line.split()[1]) for line in text.splitlines() if line.startswith(name + ":"))


class Holdings:
    """What a process holds: megabytes, and numbers of descriptors, threads and resources of the X server."""

    def __init__(self, screen, pid):
        process = pathlib.Path("/proc") / str(pid)
        memory = (process / "smaps_rollup").read_text()
        self.rss = field(memory, "Rss") / 1024
        self.pss = field(memory, "Pss") / 1024
        self.anonymous = field(memory, "Anonymous") / 1024
        self.descriptors = len(list((process / "fd").iterdir()))
        self.threads = len(list((process / "task").iterdir()))
        self.clients, self.resources, self.pixmaps = 0, collections.Counter(), 0.0
        for client in screen.display.res_query_clients().clients:
            if self.owner(screen, client.resource_base) != pid:
                continue
            self.clients += 1
            self.pixmaps += screen.display.res_query_client_pixmap_bytes(client.resource_base).bytes / 1e6
            for kind in screen.display.res_query_client_resources(client.resource_base).types:
                self.resources[screen.display.get_atom_name(kind.resource_type)] += kind.count

    @staticmethod
    def owner(screen, client):
        ids = screen.display.res_query_client_ids([{"client": client, "mask": res.LocalClientPIDMask}]).ids
        return ids[0].value[0] if ids and ids[0].value else None

    def __str__(self):
        return (f"{self.rss:6.1f} {self.pss:6.1f} {self.anonymous:9.1f} {self.descriptors:11} {self.threads:7} "
                f"{self.clients:9} {sum(self.resources.values()):9} {self.pixmaps:7.2f}")

    HEAD = "   RSS    PSS anonymous descriptors threads X clients resources pixmaps"


def settled(screen, clipwren):
    """What it holds once it has come to rest."""
    desktop.wait_for(screen.bare, "the veil to go")
    time.sleep(0.4)
    return Holdings(screen, clipwren.process.pid)


def growth(before, after, slack):
    """What there is too much of. The share of common memory depends on who else has it, and does not count."""
    found = [f"{name}: {getattr(before, name)} -> {getattr(after, name)}"
             for name in ("descriptors", "threads", "clients") if getattr(after, name) > getattr(before, name)]
    found += [f"X {kind}: {before.resources[kind]} -> {count}" for kind, count in after.resources.items()
              if count > before.resources[kind]]
    found += [f"{name}: {getattr(before, name):.1f} -> {getattr(after, name):.1f} MB"
              for name in ("rss", "anonymous", "pixmaps")
              if getattr(after, name) > getattr(before, name) + slack]
    return found


def main():
    recordings = int(sys.argv[1]) if len(sys.argv) > 1 else 100
    screen = desktop.Desktop()
    window = desktop.PatternWindow(150, 112, 680, 396, 15, 0)
    clipwren = desktop.Clipwren(screen, {"fps": 15, "resolution": 800, "maxDuration": 0})
    window.go()
    print(f"recording {Holdings.HEAD}", flush=True)
    try:
        print(f"        0 {settled(screen, clipwren)}", flush=True)
        states = []
        for number in range(1, recordings + 1):
            # Each a little elsewhere and of another size.
            clipwren.select(160 + number % 7, 120, 800, 480 - number % 11)
            time.sleep(0.6)
            clipwren.stop().unlink()
            if number % 10 == 0:
                states.append(settled(screen, clipwren))
                print(f"{number:9} {states[-1]}", flush=True)
    finally:
        status = clipwren.close()
        window.close()
    found = growth(states[0], states[-1], SLACK_SINCE_TENTH)
    found += growth(states[len(states) // 2], states[-1], SLACK_IN_SECOND_HALF)
    for line in found:
        print(f"grown: {line}")
    left = list(clipwren.folder.iterdir())
    print(f"{recordings} recordings, status {status}, {len(left)} files left")
    sys.exit(1 if found or status != 0 or left else 0)


if __name__ == "__main__":
    main()
