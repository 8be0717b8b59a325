#!/usr/bin/python3
"""One whole recording on the virtual desktop; the GIF goes to the given folder and its path to standard output.

usage: record_once.py FOLDER [SECONDS]
"""

import pathlib
import shutil
import sys
import time

import desktop


def main():
    folder = pathlib.Path(sys.argv[1]).resolve()
    seconds = float(sys.argv[2]) if len(sys.argv) > 2 else 3
    screen = desktop.Desktop()
    window = desktop.PatternWindow(150, 112, 680, 396, 15, 0)
    clipwren = desktop.Clipwren(screen)
    try:
        print("run: Super+Shift+G, a drag, a few seconds, Super+Shift+G", file=sys.stderr)
        clipwren.select(160, 120, 800, 480)
        window.go()
        time.sleep(seconds)
        path = clipwren.stop()
    finally:
        clipwren.close()
        window.close()
    folder.mkdir(parents=True, exist_ok=True)
    print(shutil.copy2(path, folder / path.name))


if __name__ == "__main__":
    main()
