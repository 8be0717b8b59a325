"""The X server dies while recording: the frames so far become a GIF and the program ends by itself."""

import os
import signal

import desktop
from gif import Gif


class ServerGone(desktop.ScreenTest):
    expected_status = 1

    def test_the_frames_so_far_become_a_gif(self):
        clipwren = self.start()
        window = self.pattern(150, 112, 680, 396, 15, 0)
        clipwren.select(160, 120, 800, 480)
        window.go()
        window.wait_for_frame(30)
        os.kill(int(os.environ["XSERVER_PID"]), signal.SIGKILL)
        clipwren.process.wait(20)
        gifs = clipwren.gifs()
        self.assertEqual(len(gifs), 1, f"{gifs}")
        gif = Gif(gifs[0])
        print(f"status {clipwren.process.returncode}, {len(gif.frames)} frames, {gif.duration:.2f} s")
        self.assertGreaterEqual(len(gif.frames), 25)


if __name__ == "__main__":
    desktop.main()
