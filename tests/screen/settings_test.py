#!/usr/bin/python3
"""The settings window of the real program: heard through the accessibility bus, driven by keys and mouse."""

import os
import pathlib
import shutil
import subprocess
import unittest

import numpy as np
from Xlib import X
from Xlib.protocol import event

import hearing
import desktop
from desktop import holds_for, wait_for

ORDER = ["Frame rate", "Resolution", "Auto-stop"]
KEYS = {"Frame rate": "fps", "Resolution": "resolution", "Auto-stop": "maxDuration"}
VALUES = {
    "Frame rate": [("10 fps", 10), ("15 fps", 15), ("20 fps", 20), ("24 fps", 24), ("30 fps", 30)],
    "Resolution": [("480 px wide", 480), ("600 px wide", 600), ("800 px wide", 800), ("1200 px wide", 1200),
                   ("1600 px wide", 1600)],
    "Auto-stop": [("15 seconds", 15), ("30 seconds", 30), ("60 seconds", 60), ("No limit", 0)],
}
DEFAULTS = {"Frame rate": "15 fps", "Resolution": "800 px wide", "Auto-stop": "30 seconds"}
SPRINGS_BACK = r"Clipwren: launch-at-login toggle failed: .*app\.clipwren\.Clipwren\.desktop could not be written"


def setUpModule():
    unittest.addModuleCleanup(hearing.Bus().close)


class SettingsTest(desktop.ScreenTest):
    def setUp(self):
        super().setUp()
        configuration = pathlib.Path(os.environ["XDG_CONFIG_HOME"])
        self.entry = configuration / "autostart" / "app.clipwren.Clipwren.desktop"
        self.addCleanup(self.forget)

    def forget(self):
        """Leaves the next test a user who has stored nothing."""
        shutil.rmtree(self.clipwren.settings.parent, ignore_errors=True)
        if self.entry.parent.is_dir():
            shutil.rmtree(self.entry.parent)
        else:
            self.entry.parent.unlink(missing_ok=True)

    def start(self, settings=None, environment=None):
        self.clipwren = super().start("" if settings is None else settings,
                                      environment={**hearing.environment, **(environment or {})})
        return self.clipwren

    def open(self):
        """By a second start, as somebody does who sees no sign of the first."""
        status = subprocess.run([str(desktop.BUILD / "clipwren")], timeout=desktop.PATIENCE).returncode
        self.assertEqual(status, 0)
        self.window = wait_for(lambda: hearing.window("Settings"), "the settings window")
        wait_for(lambda: self.desktop.windows_named("Settings"), "the window on the screen")
        return self.window

    def close(self):
        """As the button in its title bar does, by the window manager."""
        window = self.desktop.windows_named("Settings")[-1]
        message = event.ClientMessage(window=window, client_type=self.desktop.display.intern_atom("_NET_CLOSE_WINDOW"),
                                      data=(32, [0, 2, 0, 0, 0]))
        self.desktop.root.send_event(message, X.SubstructureRedirectMask | X.SubstructureNotifyMask)
        self.desktop.display.sync()
        wait_for(lambda: not self.desktop.windows_named("Settings"), "the window's end")
        wait_for(lambda: not hearing.window("Settings"), "the window's silence")

    def shown(self):
        return {label: hearing.name(hearing.labelled(self.window, label)) for label in ORDER}

    def stored(self):
        """What the file says now, by key."""
        if not self.clipwren.settings.exists():
            return {}
        lines = self.clipwren.settings.read_text().splitlines()
        return dict(line.split("=", 1) for line in lines if "=" in line)

    def box(self):
        return hearing.found(self.window, "check box", "Launch Clipwren at login")

    def focus(self, element):
        """With the tabulator, as far as it takes."""
        for _ in range(8):
            if hearing.has_focus(element):
                return
            self.desktop.keysym("Tab")
            desktop.time.sleep(0.1)
        self.fail("the keyboard does not reach a control")

    def click(self, element):
        left, top, width, height = hearing.area(element)
        self.desktop.click(left + width // 2, top + height // 2)

    def test_reads_itself_out(self):
        self.start()
        self.open()
        self.assertEqual(self.window.get_role_name(), "frame")
        headings = [element.get_name() for element in hearing.below(self.window) if element.get_role_name() == "panel"]
        self.assertEqual(headings, ["PERMISSIONS", "RECORDING", "GENERAL", "ABOUT"])
        texts = [element.get_name() for element in hearing.below(self.window) if element.get_role_name() == "label"]
        self.assertEqual(texts[:-1], ["Welcome to Clipwren", "PERMISSIONS", "Screen Recording", "RECORDING", *ORDER,
                                      "GENERAL", "ABOUT"])
        self.assertRegex(texts[-1], r"^Clipwren v\d+\.\d+\.\d+ \(build \S+\) · \d{4}-\d\d-\d\d \d\d:\d\d$")
        icon = hearing.labelled(self.window, "Screen Recording")
        self.assertEqual((icon.get_role_name(), icon.get_name()), ("image", "Granted"))
        self.assertIsNone(hearing.found(self.window, "push button", "Enable…"))
        for label in ORDER:
            items = [element.get_name() for element in hearing.below(hearing.labelled(self.window, label))
                     if element.get_role_name() == "list item"]
            self.assertEqual(items, [text for text, _ in VALUES[label]])
        self.assertEqual(self.shown(), DEFAULTS)
        self.assertFalse(hearing.is_on(self.box()))
        self.assertIsNotNone(hearing.found(self.window, "push button", "Reset All Settings"))

    def test_every_choice_is_stored_at_once(self):
        self.start()
        self.open()
        for label in ORDER:
            popup = hearing.labelled(self.window, label)
            self.focus(popup)
            self.desktop.keysym("Home")
            for text, value in VALUES[label]:
                wait_for(lambda: hearing.name(popup) == text, f"{label} to show {text}")
                wait_for(lambda: self.stored().get(KEYS[label]) == str(value), f"{label} to be stored as {value}")
                self.desktop.keysym("Down")
        self.assertEqual(self.stored(), {"fps": "30", "resolution": "1600", "maxDuration": "0"})

    def test_the_list_opens_and_a_click_chooses(self):
        self.start()
        self.open()
        popup = hearing.labelled(self.window, "Auto-stop")
        self.click(popup)
        item = wait_for(lambda: hearing.found(popup, "list item", "60 seconds"), "the open list")
        desktop.time.sleep(0.5)  # a click right after the opening one would count as its second half
        self.click(item)
        wait_for(lambda: self.stored() == {"maxDuration": "60"}, "the choice in the file")
        # Escape leaves the list without choosing.
        self.click(popup)
        wait_for(lambda: hearing.found(popup, "list item", "15 seconds"), "the open list")
        self.desktop.keysym("Up")
        self.desktop.keysym("Escape")
        holds_for(lambda: self.stored() == {"maxDuration": "60"}, "the stored choice")
        self.assertEqual(hearing.name(popup), "60 seconds")

    def test_what_is_stored_is_shown_and_nonsense_is_left_alone(self):
        self.start({"fps": 24, "resolution": 1600, "maxDuration": 60})
        self.open()
        self.assertEqual(self.shown(), {"Frame rate": "24 fps", "Resolution": "1600 px wide",
                                        "Auto-stop": "60 seconds"})
        self.close()
        nonsense = "; mine\n[recording]\nfps=25\nresolution=wide\nmaxDuration=45\n"
        self.clipwren.settings.write_text(nonsense)
        self.open()
        self.assertEqual(self.shown(), DEFAULTS)
        self.close()
        self.assertEqual(self.clipwren.settings.read_text(), nonsense)

    def test_closed_and_opened_it_shows_what_is_stored_now(self):
        self.start()
        self.open()
        popup = hearing.labelled(self.window, "Auto-stop")
        self.focus(popup)
        self.desktop.keysym("End")
        wait_for(lambda: self.stored() == {"maxDuration": "0"}, "no limit in the file")
        self.open()
        self.assertEqual(len(self.desktop.windows_named("Settings")), 1)
        self.close()
        self.open()
        self.assertEqual(self.shown()["Auto-stop"], "No limit")
        self.assertEqual(len(self.desktop.windows_named("Settings")), 1)

    def test_it_is_in_the_taskbar_while_open_and_takes_the_focus(self):
        def listed():
            atom = self.desktop.display.intern_atom("_NET_CLIENT_LIST")
            clients = self.desktop.root.get_full_property(atom, X.AnyPropertyType)
            return list(clients.value) if clients else []
        self.start()
        self.assertEqual(listed(), [])
        self.open()
        window = wait_for(lambda: [w for w in self.desktop.windows_named("Settings") if w.id in listed()],
                          "the taskbar entry")[0]
        states = window.get_full_property(self.desktop.display.intern_atom("_NET_WM_STATE"), X.AnyPropertyType)
        skip = self.desktop.display.intern_atom("_NET_WM_STATE_SKIP_TASKBAR")
        self.assertNotIn(skip, list(states.value) if states else [])
        wait_for(lambda: self.desktop.focus() == window.id, "the focus")
        size = window.get_geometry()
        self.assertEqual((size.width, size.height), (520, 460))
        hints = window.get_wm_normal_hints()
        self.assertEqual((hints.min_width, hints.min_height), (hints.max_width, hints.max_height))
        self.close()
        wait_for(lambda: listed() == [], "an empty taskbar")
        self.assertTrue(self.clipwren.running())

    def test_launch_at_login_writes_and_removes_the_entry(self):
        self.start()
        self.open()
        hearing.act(self.box())
        wait_for(self.entry.exists, "the autostart entry")
        self.assertIn("\nExec=\"", self.entry.read_text())
        self.assertTrue(hearing.is_on(self.box()))
        self.focus(self.box())
        self.desktop.keysym("space")
        wait_for(lambda: not self.entry.exists(), "the entry's end")
        wait_for(lambda: not hearing.is_on(self.box()), "an empty box")

    def test_launch_at_login_springs_back_where_nothing_can_be_written(self):
        self.entry.parent.parent.mkdir(parents=True, exist_ok=True)
        self.entry.parent.write_text("not a folder")
        self.start()
        self.open()
        self.click(self.box())
        wait_for(lambda: self.clipwren.log.matching(SPRINGS_BACK), "the line in the log")
        wait_for(lambda: not hearing.is_on(self.box()), "the box to spring back")

    def test_a_reset_asks_and_then_forgets_everything(self):
        self.start({"fps": 30, "resolution": 480, "maxDuration": 0})
        self.open()
        hearing.act(self.box())
        wait_for(self.entry.exists, "the autostart entry")
        for key, forgets in (("Escape", False), ("Return", True)):
            self.click(hearing.found(self.window, "push button", "Reset All Settings"))
            wait_for(lambda: self.desktop.windows_named("Clipwren"), "the question")
            question = wait_for(lambda: hearing.window("Clipwren"), "the question")
            texts = [element.get_name() for element in hearing.below(question)]
            self.assertIn("Reset all settings?", texts)
            self.assertIn("Frame rate, resolution, auto-stop, and launch-at-login return to defaults. "
                          "Screen Recording permission is not affected.", texts)
            buttons = [element.get_name() for element in hearing.below(question)
                       if element.get_role_name() == "push button"]
            self.assertEqual(sorted(buttons), ["Cancel", "Reset"])
            wait_for(lambda: self.desktop.focus() in [w.id for w in self.desktop.windows_named("Clipwren")],
                     "the question's focus")
            self.desktop.keysym(key)
            wait_for(lambda: not self.desktop.windows_named("Clipwren"), "the question's end")
            if forgets:
                wait_for(lambda: not self.clipwren.settings.exists(), "the settings' end")
                wait_for(lambda: not self.entry.exists(), "the entry's end")
                wait_for(lambda: self.shown() == DEFAULTS, "the defaults")
                self.assertFalse(hearing.is_on(self.box()))
            else:
                self.assertEqual(self.stored(), {"fps": "30", "resolution": "480", "maxDuration": "0"})
                self.assertTrue(self.entry.exists() and hearing.is_on(self.box()))

    def test_at_twice_the_scale_everything_is_twice_as_large(self):
        subprocess.run(["xrdb", "-merge"], input="Xft.dpi: 192\n", text=True, check=True)
        self.addCleanup(subprocess.run, ["xrdb", "-remove"], check=True)
        self.start()
        self.open()
        size = self.desktop.windows_named("Settings")[0].get_geometry()
        self.assertEqual((size.width, size.height), (1040, 920))

    def test_every_text_can_be_read_in_light_and_in_dark_themes(self):
        def contrast(area):
            """Between the ground and what stands out most from it, as accessibility guidelines count it."""
            left, top, width, height = area
            levels = desktop.screenshot()[top:top + height, left:left + width] / 255
            linear = np.where(levels <= 0.04045, levels / 12.92, ((levels + 0.055) / 1.055) ** 2.4)
            luminance = linear @ [0.2126, 0.7152, 0.0722] + 0.05
            ground = np.median(luminance)
            return max(luminance.max() / ground, ground / luminance.min()), ground
        colours = pathlib.Path(os.environ["XDG_CONFIG_HOME"]) / "kdeglobals"
        colours.write_text("".join(f"[Colors:{part}]\nBackgroundNormal={ground}\nForegroundNormal=252,252,252\n"
                                   for part, ground in (("Window", "32,35,38"), ("View", "20,22,24"),
                                                        ("Button", "41,44,48"))))
        self.addCleanup(colours.unlink)
        for theme, environment in (("light", {}), ("dark", {"XDG_CURRENT_DESKTOP": "KDE", "KDE_FULL_SESSION": "true",
                                                            "KDE_SESSION_VERSION": "5"})):
            clipwren = self.start(environment=environment)
            self.open()
            wait_for(lambda: contrast(hearing.area(self.box()))[0] > 4, "the window to be painted")
            for element in hearing.below(self.window):
                if element.get_role_name() in ("label", "combo box", "check box", "push button", "image") and \
                        hearing.is_shown(element):
                    ratio, ground = contrast(hearing.area(element))
                    # The guidelines ask for 4.5 of texts, and for 3 of pictures.
                    where = f"{element.get_name()} in the {theme} theme"
                    self.assertGreater(ratio, 3 if element.get_role_name() == "image" else 4.5, where)
                    self.assertEqual(ground < 0.2, theme == "dark", where)
            clipwren.close()


if __name__ == "__main__":
    desktop.main()
