"""The selector: how it begins, what it refuses, how it ends, and what it looks like."""

import time

import numpy as np

import desktop


class Selector(desktop.ScreenTest):
    def setUp(self):
        super().setUp()
        self.clipwren = self.start()

    def test_escape_cancels(self):
        self.clipwren.begin()
        self.desktop.keysym("Escape")
        self.selection_ends(self.clipwren)

    def test_escape_during_a_drag_cancels(self):
        self.clipwren.begin()
        self.desktop.move(200, 200)
        self.desktop.button(True)
        self.desktop.move(400, 400)
        self.desktop.keysym("Escape")
        desktop.wait_for(self.desktop.bare, "the selector to go")
        self.desktop.button(False)
        self.selection_ends(self.clipwren)

    def test_the_hot_key_cancels(self):
        self.clipwren.begin()
        self.desktop.hot_key()
        self.selection_ends(self.clipwren)

    def test_the_hot_key_twice_quickly(self):
        self.desktop.hot_key()
        self.desktop.hot_key()
        time.sleep(0.3)
        self.selection_ends(self.clipwren)

    def test_a_click_leaves_the_selector_up(self):
        self.clipwren.begin()
        self.desktop.click(300, 300)
        desktop.holds_for(self.desktop.selecting, "the selector")
        self.desktop.keysym("Escape")
        self.selection_ends(self.clipwren)

    def test_a_narrow_drag_leaves_the_selector_up(self):
        self.clipwren.begin()
        for right, bottom in ((307, 600), (600, 307)):
            self.desktop.drag(300, 300, right, bottom)
            desktop.holds_for(self.desktop.selecting, "the selector")
        self.desktop.keysym("Escape")
        self.selection_ends(self.clipwren)

    def test_eight_by_eight_is_recorded(self):
        self.clipwren.begin()
        self.desktop.drag(300, 300, 308, 308)
        desktop.wait_for(self.desktop.recording, "the veil")
        time.sleep(0.5)
        self.assertTrue(self.clipwren.stop().is_file())

    def test_a_drag_may_go_any_way(self):
        self.clipwren.begin()
        self.desktop.drag(700, 500, 400, 300)
        desktop.wait_for(self.desktop.recording, "the veil")
        time.sleep(0.5)
        self.assertTrue(self.clipwren.stop().is_file())

    def test_other_keys_and_the_focus_stay_with_the_window(self):
        window = self.pattern(200, 200, 300, 200)
        self.desktop.click(250, 250)
        desktop.wait_for(lambda: self.desktop.focus() != 0, "a focus")
        focus = self.desktop.focus()
        self.clipwren.begin()
        self.assertEqual(self.desktop.focus(), focus)
        self.desktop.keysym("Escape")
        desktop.wait_for(self.desktop.bare, "the selector to go")
        self.assertEqual(self.desktop.focus(), focus)
        self.desktop.keysym("x")
        code = self.desktop.display.keysym_to_keycode(ord("x"))
        desktop.wait_for(lambda: code in window.presses("key"), "the key")
        self.assertNotIn(self.desktop.display.keysym_to_keycode(0xff1b), window.presses("key"), "Escape is swallowed")

    def test_escape_at_the_first_sight_cancels(self):
        # Whoever sees the selector and presses Escape means the selector, however quick they are.
        window = self.pattern(200, 200, 300, 200)
        self.desktop.click(250, 250)
        escape = self.desktop.display.keysym_to_keycode(0xff1b)
        for _ in range(30):
            self.desktop.hot_key()
            limit = time.monotonic() + desktop.PATIENCE
            while not self.desktop.covering_windows():
                self.assertLess(time.monotonic(), limit, "no selector")
            self.desktop.key(escape)
            desktop.wait_for(self.desktop.bare, "the selector to go")
        self.desktop.keysym("x")
        last = self.desktop.display.keysym_to_keycode(ord("x"))
        desktop.wait_for(lambda: last in window.presses("key"), "the last key")
        self.assertEqual(window.presses("key").count(escape), 0, "Escape reached the window below")
        self.selection_ends(self.clipwren)

    def test_what_a_drag_looks_like(self):
        self.pattern(150, 112, 680, 396)
        self.desktop.move(1000, 900)
        time.sleep(0.3)
        before = desktop.screenshot().astype(int)
        self.clipwren.begin()
        left, top, right, bottom = 200, 160, 520, 400
        self.desktop.move(left, top)
        self.desktop.button(True)
        for point in ((300, 300), (right, bottom)):
            self.desktop.move(*point)

        # Everything on all monitors is black at 0.35, but for the rectangle with its border and label. A
        # compositor shows it a moment later.
        monitors = self.desktop.on_monitors()
        monitors[top - 2:bottom + 32, left - 2:right + 2] = False
        inside = np.s_[top + 5:bottom - 5, left + 5:right - 5]

        def drawn():
            shot = desktop.screenshot().astype(int)
            dimmed = np.abs(shot - before * 0.65).max(axis=2)[monitors].max() <= 2
            # The label comes with the rectangle, but a screenshot may fall between the two.
            labelled = (shot[bottom + 2:bottom + 20, left:left + 60].min(axis=2) > 180).sum() > 20
            return [shot] if dimmed and labelled and np.array_equal(shot[inside], before[inside]) else None
        shot = desktop.wait_for(drawn, "a clear rectangle with its label on a dimmed screen")[0]
        # Dashes of white, 4 on and 2 off, along each edge.
        for name, edge in (("top", shot[top - 1:top + 1, left + 2:right - 2].max(axis=0)),
                           ("bottom", shot[bottom - 1:bottom + 1, left + 2:right - 2].max(axis=0)),
                           ("left", shot[top + 2:bottom - 2, left - 1:left + 1].max(axis=1)),
                           ("right", shot[top + 2:bottom - 2, right - 1:right + 1].max(axis=1))):
            bright = edge.min(axis=1) - edge.min(axis=1).min() > 40
            self.assertTrue(0.4 < bright.mean() < 0.95, f"{name} border: {bright.mean():.2f} of it is bright")
        # The label: white text on a dark box, its top 2 points below the rectangle.
        label = shot[bottom + 2:bottom + 2 + 18, left:left + 60]
        self.assertGreater((label.min(axis=2) > 180).sum(), 20, "no text in the label")
        self.assertGreater((label.max(axis=2) < 40).sum(), 200, "no box under the label")
        self.desktop.keysym("Escape")
        self.desktop.button(False)


if __name__ == "__main__":
    desktop.main()
