"""What the window should show, evaluated apart from the program: the Mandelbrot rule, the palettes,
and the way a texture of 2048 x 2048 is stretched over a window."""

import ctypes
import functools

import numpy as np

SIDE = 2048
PALETTE_LENGTH = 768
ROWS = 32


def random_palette():
    """Low bytes of the first 2304 results of an unseeded rand(), as rows of red, green, blue."""
    libc = ctypes.CDLL("libc.so.6")
    libc.srand(1)
    low_bytes = [libc.rand() & 0xFF for _ in range(3 * PALETTE_LENGTH)]
    return np.array(low_bytes, dtype=np.uint8).reshape(PALETTE_LENGTH, 3)


def rgb_palette():
    """A green, a blue and a red ramp, each from black."""
    palette = np.zeros((PALETTE_LENGTH, 3), dtype=np.uint8)
    for start, channel in ((0, 1), (256, 2), (512, 0)):
        palette[start:start + 256, channel] = np.arange(256)
    return palette


def plane(low, high, real):
    """Coordinates of the pixels of one axis in the number type `real`: division first, the low edge
    at pixel 0, the high edge never reached."""
    low, high = real(low), real(high)
    return np.arange(SIDE).astype(real) / real(SIDE) * (high - low) + low


@functools.cache
def mandelbrot(view, real=np.float32, limit=4, max_iterations=768):
    """Escape counts, shape (SIDE, SIDE), of view = (x_min, x_max, y_min, y_max). Nobody may write to
    it."""
    x_min, x_max, y_min, y_max = view
    xs, ys = plane(x_min, x_max, real), plane(y_min, y_max, real)
    # So many rows at a time stay in a processor's cache.
    blocks = [_counts(*np.meshgrid(xs, ys[row:row + ROWS]), real(limit), max_iterations)
              for row in range(0, SIDE, ROWS)]
    counts = np.concatenate(blocks).reshape(SIDE, SIDE)
    counts.flags.writeable = False
    return counts


def _counts(cx, cy, limit, max_iterations):
    """Escape counts of some points. An orbit that comes to a value it has had goes round for ever:
    each is compared with its own value at the last power of two."""
    cx, cy = cx.ravel(), cy.ravel()
    counts = np.full(cx.size, max_iterations, dtype=np.int32)
    left = np.arange(cx.size)
    zx, zy = np.zeros_like(cx), np.zeros_like(cy)
    had_x, had_y = zx, zy
    with np.errstate(over="ignore", invalid="ignore"):
        for count in range(max_iterations):
            zx, zy = (zx * zx - zy * zy) + cx, (zx * zy + zy * zx) + cy
            escaped = (zx * zx + zy * zy) > limit
            ended = escaped | ((zx == had_x) & (zy == had_y))
            if ended.any():
                counts[left[escaped]] = count
                left, zx, zy, cx, cy, had_x, had_y = (
                    values[~ended] for values in (left, zx, zy, cx, cy, had_x, had_y))
            if count & (count - 1) == 0:
                had_x, had_y = zx, zy
    return counts


def coloured(counts, palette, max_iterations=768):
    """The pixel buffer, shape (SIDE, SIDE, 3): the palette by count, black where none escaped."""
    picture = palette[counts % PALETTE_LENGTH]
    picture[counts >= max_iterations] = 0
    return picture


def stretched(buffer, width, height):
    """The buffer as a window of that size shows it: linear filtering, edges repeating."""
    picture = buffer.astype(np.float32)
    for axis, length in ((0, height), (1, width)):
        at = (np.arange(length) + 0.5) * buffer.shape[axis] / length - 0.5
        low = np.floor(at).astype(int)
        weight = (at - low).astype(np.float32).reshape([-1 if a == axis else 1 for a in range(3)])
        before = np.take(picture, low % buffer.shape[axis], axis=axis)
        after = np.take(picture, (low + 1) % buffer.shape[axis], axis=axis)
        picture = before * (1 - weight) + after * weight
    return picture


def share_alike(shown, buffer, tolerance=4):
    """Share (0 to 1) of the shown pixels whose three channels are all within `tolerance` of the
    stretched buffer."""
    height, width, _ = shown.shape
    difference = np.abs(shown.astype(np.float32) - stretched(buffer, width, height))
    return float((difference.max(axis=2) <= tolerance).mean())


def zoomed(view, drag, window):
    """The view that a drag (x1, y1, x2, y2) in a window (width, height) selects: corners scaled to
    buffer pixels in single precision, then to the plane in double."""
    x_min, x_max, y_min, y_max = view
    sx = np.float32(SIDE) / np.float32(window[0])
    sy = np.float32(SIDE) / np.float32(window[1])
    x1, y1, x2, y2 = drag

    def scaled(pixel, scale, low, high):
        return float(np.float32(pixel) * scale) / SIDE * (high - low) + low

    return (
        scaled(min(x1, x2), sx, x_min, x_max), scaled(max(x1, x2), sx, x_min, x_max),
        scaled(min(y1, y2), sy, y_min, y_max), scaled(max(y1, y2), sy, y_min, y_max),
    )
