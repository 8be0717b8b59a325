#!/usr/bin/python3
"""Shows that the include check passes what is right and fails on each kind of breach."""

import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent))
from includes import breaches


class Includes(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.root = Path(self.folder.name)
        for name in ("base/Image.h", "platform/Log.h", "platform/linux/x11/Connection.h", "settings/Preferences.h",
                     "capture/RecordedFrame.h", "encoding/GifWriter.h", "ui/RegionSelector.h", "app/AppDelegate.h"):
            self.write(name, "#pragma once\n")

    def tearDown(self):
        self.folder.cleanup()

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def found(self, name, line):
        self.write(name, "#pragma once\n" + line + "\n")
        return [(str(place), number) for place, number, _ in breaches(self.root)]

    def passes(self, name, line):
        self.assertEqual(self.found(name, line), [], f"{name}: {line}")

    def fails(self, name, line):
        self.assertEqual(self.found(name, line), [(name, 2)], f"{name}: {line}")

    def test_what_is_right_passes(self):
        self.passes("base/New.h", "#include <vector>")
        self.passes("base/New.h", '#include "base/Image.h"')
        self.passes("platform/New.h", '#include "platform/Log.h"')
        self.passes("capture/New.cpp", '#include "settings/Preferences.h"')
        self.passes("app/New.cpp", '#include "ui/RegionSelector.h"')
        self.passes("app/main.cpp", '#include "platform/linux/x11/Connection.h"')
        self.passes("platform/linux/New.cpp", "#include <xcb/xcb.h>")
        self.passes("platform/linux/New.cpp", '#include "platform/linux/x11/Connection.h"')

    def test_the_core_includes_no_system_header(self):
        for header in ("unistd.h", "QString", "xcb/xcb.h", "sys/mman.h", "windows.h"):
            self.fails("encoding/New.cpp", f"#include <{header}>")
            self.write("encoding/New.cpp", "")
        self.fails("app/main.cpp", "#include <QApplication>")

    def test_the_core_includes_no_adapter(self):
        for folder in ("base", "settings", "capture", "encoding", "ui", "app", "platform"):
            self.fails(f"{folder}/New.cpp", '#include "platform/linux/x11/Connection.h"')
            self.write(f"{folder}/New.cpp", "")

    def test_an_adapter_includes_no_core(self):
        for header in ("capture/RecordedFrame.h", "ui/RegionSelector.h", "settings/Preferences.h", "app/AppDelegate.h",
                       "encoding/GifWriter.h"):
            self.fails("platform/linux/x11/New.cpp", f'#include "{header}"')
            self.write("platform/linux/x11/New.cpp", "")

    def test_nothing_includes_upwards(self):
        self.fails("base/New.h", '#include "platform/Log.h"')
        self.write("base/New.h", "")
        self.fails("platform/New.h", '#include "capture/RecordedFrame.h"')
        self.write("platform/New.h", "")
        self.fails("ui/New.h", '#include "app/AppDelegate.h"')
        self.write("ui/New.h", "")
        self.fails("settings/New.h", '#include "capture/RecordedFrame.h"')

    def test_a_port_has_no_conditional_compilation(self):
        self.fails("platform/New.h", "#ifdef __linux__")
        self.write("platform/New.h", "")
        self.passes("platform/linux/New.h", "#ifdef __linux__")

    def test_an_include_is_a_plain_name_from_the_top(self):
        self.fails("base/New.h", "#include HEADER")
        self.fails("base/New.h", '#include "Image.h"')
        self.fails("base/New.h", '#include "base/../base/Image.h"')
        self.fails("base/New.h", "  #  include <unistd.h>")


if __name__ == "__main__":
    unittest.main()
