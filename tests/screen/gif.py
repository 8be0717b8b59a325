"""Reads a GIF with two independent decoders, Pillow and giflib, which must agree on every pixel and delay."""

import subprocess

import numpy as np
from PIL import Image, ImageSequence

import desktop


class Gif:
    """`frames`: arrays of height x width x 3 bytes; `delays`: seconds; `loop`: 0 for ever, None for once."""

    def __init__(self, path):
        with Image.open(path) as image:
            self.width, self.height = image.size
            self.loop = image.info.get("loop")
            self.frames, self.delays = [], []
            for frame in ImageSequence.Iterator(image):
                self.delays.append(frame.info.get("duration", 0) / 1000)
                self.frames.append(np.asarray(frame.convert("RGB")).copy())
        self.second_opinion(path)

    def second_opinion(self, path):
        output = subprocess.run([desktop.tool("gif_frames"), path], capture_output=True, check=True, timeout=120).stdout
        header, rest = output.split(b"\n", 1)
        width, height, count, loop = map(int, header.split())
        assert (width, height, count) == (self.width, self.height, len(self.frames)), header
        assert loop == (-1 if self.loop is None else self.loop), f"loop count {loop} or {self.loop}"
        size = width * height * 3
        at = 0
        for index, (frame, delay) in enumerate(zip(self.frames, self.delays)):
            end = rest.index(b"\n", at)
            line, at = rest[at:end], end + 1
            assert int(line) == round(delay * 100), f"delay of frame {index}: {line} or {delay}"
            other = np.frombuffer(rest, np.uint8, size, at).reshape(height, width, 3)
            assert np.array_equal(other, frame), f"the decoders disagree about frame {index}"
            at += size

    @property
    def duration(self):
        return sum(self.delays)
