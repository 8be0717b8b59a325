"""The pictures that pattern_window draws, computed a second time, and what a recording of it must show."""

import numpy as np

TILES = np.array([0x203040, 0x2c4a5a, 0x38585f, 0x22384c])
BARS = np.array([0xff0000, 0x00ff00, 0x0000ff, 0xffff00, 0x00ffff, 0xff00ff, 0xff8000, 0x8000ff])
SQUARES = [0xc0c0c0, 0xc06060, 0x60c060, 0x6060c0, 0xc0c060, 0x60c0c0, 0xc060c0, 0x806040, 0x408060, 0x604080,
           0xa0e0a0, 0xe0a0a0]
BLOCK, COUNTER_BITS, COUNTER_EDGE = 10, 16, 8
SQUARE_SIDE = 40
QUIET_STRIP = 56
CURSOR_SIDE = 11


def rgb(values):
    """Turns an array of 0xRRGGBB into one of bytes with a last dimension of 3."""
    values = np.asarray(values)
    return np.stack([values >> 16 & 255, values >> 8 & 255, values & 255], axis=-1).astype(np.uint8)


def picture(n, width, height):
    """Picture n as an array of height x width x 3 bytes."""
    x, y = np.arange(width)[None, :], np.arange(height)[:, None]
    moving = height - QUIET_STRIP
    values = TILES[np.where(y < moving, ((x >> 4) + (y >> 4)) & 3, 0)]
    bar = (x + 5 * n) // 24
    values = np.where((y >= moving // 2) & (y < moving) & (bar % 6 == 0), BARS[bar // 6 % 8], values)
    left, top = n * 11 % (width - SQUARE_SIDE), n * 7 % (moving - SQUARE_SIDE)
    values[top:top + SQUARE_SIDE, left:left + SQUARE_SIDE] = SQUARES[n % 12]
    for bit in range(COUNTER_BITS):
        at = COUNTER_EDGE + bit * BLOCK
        white = n >> bit & 1
        values[COUNTER_EDGE:COUNTER_EDGE + BLOCK, at:at + BLOCK] = 0xffffff if white else 0
        values[COUNTER_EDGE + BLOCK:COUNTER_EDGE + 2 * BLOCK, at:at + BLOCK] = 0 if white else 0xffffff
    return rgb(values)


def counter(image, left=0, top=0):
    """The number that a picture carries whose window begins at (left, top) of the image; None when unreadable."""
    middle = BLOCK // 2
    y = top + COUNTER_EDGE + middle
    if y + BLOCK >= image.shape[0] or left + COUNTER_EDGE + COUNTER_BITS * BLOCK > image.shape[1] or y < 0:
        return None
    n = 0
    for bit in range(COUNTER_BITS):
        x = left + COUNTER_EDGE + bit * BLOCK + middle
        upper, lower = int(image[y, x].mean()), int(image[y + BLOCK, x].mean())
        if abs(upper - lower) < 128:
            return None
        n |= (upper > lower) << bit
    return n


def draw_cursor(image, x, y):
    """Draws pattern_window's own cursor with its hot spot at (x, y), clipped to the image."""
    half = CURSOR_SIDE // 2
    area = image[max(0, y - half):max(0, y + half + 1), max(0, x - half):max(0, x + half + 1)]
    area[:] = (255, 0, 255)
    if 0 <= y < image.shape[0] and 0 <= x < image.shape[1]:
        image[y, x] = (255, 255, 255)
    return image


def badge_area(width, height):
    """A box (left, top, right, bottom) that certainly holds the badge of a frame of this size."""
    font = max(height * 0.03, 11)
    margin = max(height * 0.025, 8)
    pill_width = font * 0.65 + font * 0.55 + 12 * (0.85 * font + 0.4) + 2 * max(font * 0.65, 8)
    pill_height = 1.5 * font + 2 * max(font * 0.35, 4)
    return (max(0, int(width - margin - pill_width)), max(0, int(height - margin - pill_height)),
            int(np.ceil(width - margin)), int(np.ceil(height - margin)))


def outside(box, width, height):
    """A mask that is true outside the box."""
    mask = np.ones((height, width), bool)
    mask[box[1]:box[3], box[0]:box[2]] = False
    return mask
