#!/usr/bin/env python3
"""Draws the installer's three images and writes them as files and as one C++ source.

The wizard shows a side image on every page and message boxes show an error or a
question icon. They are our own artwork, drawn here from simple geometry (signed
distances give anti-aliased edges) so the build needs no image files and no tools
beyond the standard library. The output is the same bytes on every run.

Usage: make_images.py OUTPUT_DIR
Writes OUTPUT_DIR/side_image.bmp (158 x 286, 8-bit palette), small_icon.png
(125 x 125 RGBA, error), large_icon.png (256 x 256 RGBA, question) and page_images.cpp.
"""

import math
import os
import struct
import sys
import zlib

# ---- geometry: signed distances in pixels (negative inside) -------------------------

def clamp(v, lo=0.0, hi=1.0):
    return lo if v < lo else hi if v > hi else v

def mix(a, b, t):
    return tuple(x + (y - x) * t for x, y in zip(a, b))

def coverage(d, soft=1.0):
    """Share of a pixel inside an edge at signed distance d; soft > 1 blurs it."""
    return clamp(0.5 - d / soft)

def rounded_rect(cx, cy, hw, hh, r, angle=0.0):
    c, s = math.cos(math.radians(angle)), math.sin(math.radians(angle))

    def d(x, y):
        x, y = x - cx, y - cy
        x, y = abs(c * x + s * y) - hw + r, abs(-s * x + c * y) - hh + r
        return math.hypot(max(x, 0.0), max(y, 0.0)) + min(max(x, y), 0.0) - r

    return d

def circle(cx, cy, r):
    return lambda x, y: math.hypot(x - cx, y - cy) - r

def stroke(ax, ay, bx, by, ra, rb):
    """A stroke with round ends from a to b, radius ra at a narrowing to rb at b."""
    vx, vy = bx - ax, by - ay
    length2 = vx * vx + vy * vy

    def d(x, y):
        h = clamp(((x - ax) * vx + (y - ay) * vy) / length2)
        return math.hypot(x - ax - vx * h, y - ay - vy * h) - (ra + (rb - ra) * h)

    return d

def arc(cx, cy, r, start, sweep, width):
    """A round-ended stroke along a circle from angle start (degrees, y down) by sweep."""
    a0, a1 = math.radians(start), math.radians(start + sweep)
    ends = [(cx + r * math.cos(a), cy + r * math.sin(a)) for a in (a0, a1)]

    def d(x, y):
        a = (math.atan2(y - cy, x - cx) - a0) % (2 * math.pi)
        if a <= a1 - a0:
            return abs(math.hypot(x - cx, y - cy) - r) - width / 2
        return min(math.hypot(x - ex, y - ey) for ex, ey in ends) - width / 2

    return d

def union(*shapes):
    return lambda x, y: min(s(x, y) for s in shapes)

# ---- the side image: 8 bits per pixel over a palette made of a few ramps -------------

SIDE_W, SIDE_H = 158, 286
TOP, MIDDLE, BOTTOM = (28, 66, 124), (33, 104, 158), (38, 148, 152)
WHITE = (255, 255, 255)
# Every colour is the background veiled by white to one of these levels.
LEVELS = [0.0, 0.025, 0.05, 0.075, 0.1, 0.2, 0.3, 0.4, 0.5, 0.62, 0.8, 1.0]
GROUNDS = 20  # steps of the background ramp; 20 x 12 = 240 entries
INK, ACCENT = (37, 84, 140), (242, 164, 72)  # two ramps of 8 from white, on the card
BAYER = [[0, 8, 2, 10], [12, 4, 14, 6], [3, 11, 1, 9], [15, 7, 13, 5]]

def ground(t):
    return mix(TOP, MIDDLE, t * 2) if t < 0.5 else mix(MIDDLE, BOTTOM, t * 2 - 1)

def side_palette():
    entries = [mix(ground(i / (GROUNDS - 1)), WHITE, v) for i in range(GROUNDS) for v in LEVELS]
    for colour in (INK, ACCENT):
        entries += [mix(WHITE, colour, k / 8) for k in range(1, 9)]
    return [tuple(int(round(c)) for c in e) for e in entries]

def dither(value, steps, threshold):
    """Index into the ascending list steps, ordered-dithered between neighbours."""
    i = 0
    while i + 2 < len(steps) and value >= steps[i + 1]:
        i += 1
    f = (value - steps[i]) / (steps[i + 1] - steps[i])
    return i + 1 if f > threshold else i

class Canvas:
    """Per pixel a veil level over the background and optional ink on opaque white."""

    def __init__(self):
        self.level = [[0.0] * SIDE_W for _ in range(SIDE_H)]
        self.ink = [[None] * SIDE_W for _ in range(SIDE_H)]

    def pixels(self, box):
        x0, y0, x1, y1 = (int(v) for v in box)
        for y in range(max(y0, 0), min(y1 + 1, SIDE_H)):
            for x in range(max(x0, 0), min(x1 + 1, SIDE_W)):
                yield x, y, x + 0.5, y + 0.5

    def paint(self, shape, box, level):
        for x, y, px, py in self.pixels(box):
            c = coverage(shape(px, py))
            if c > 0:
                self.level[y][x] += (level - self.level[y][x]) * c
                self.ink[y][x] = None

    def write(self, shape, box, ramp, strength):
        """Ink on parts already opaque white (level 1): ramp 0 is INK, 1 is ACCENT."""
        for x, y, px, py in self.pixels(box):
            c = coverage(shape(px, py))
            if c > 0:
                self.ink[y][x] = (ramp, strength * c)

    def indices(self):
        rows = []
        for y in range(SIDE_H):
            row = bytearray()
            for x in range(SIDE_W):
                threshold = (BAYER[y % 4][x % 4] + 0.5) / 16
                ink = self.ink[y][x]
                k = 0 if ink is None else int(ink[1] * 8 + threshold)
                if k > 0:
                    row.append(GROUNDS * len(LEVELS) + 8 * ink[0] + min(k, 8) - 1)
                    continue
                t = clamp(0.85 * y / (SIDE_H - 1) + 0.15 * x / (SIDE_W - 1))
                g = dither(t * (GROUNDS - 1), range(GROUNDS), threshold)
                shifted = (BAYER[(y + 2) % 4][(x + 1) % 4] + 0.5) / 16  # unlike the ground's
                v = dither(self.level[y][x], LEVELS, shifted)
                row.append(g * len(LEVELS) + v)
            rows.append(row)
        return rows

PAGE_W, PAGE_H = 32, 42  # half sizes of a page

def document(canvas, cx, cy, angle, level, fold=12):
    """A page turned by angle about its centre, its top-right corner folded down."""
    c, s = math.cos(math.radians(angle)), math.sin(math.radians(angle))

    def corner(x, y):  # u, v: distances left of and below the corner, negative inside
        x, y = x - cx, y - cy
        return c * x + s * y - PAGE_W, -(-s * x + c * y) - PAGE_H

    def cut(x, y):
        u, v = corner(x, y)
        return (u + v + fold) / math.sqrt(2)

    def flap(x, y):
        u, v = corner(x, y)
        return max(-u - fold, -v - fold, (u + v + fold) / math.sqrt(2))

    page = rounded_rect(cx, cy, PAGE_W, PAGE_H, 4, angle)
    box = (cx - 50, cy - 50, cx + 50, cy + 50)
    canvas.paint(lambda x, y: max(page(x, y), cut(x, y)), box, level)
    canvas.paint(flap, box, 0.8 if level == 1.0 else 0.5)

def side_image():
    """Pages fanned out of an open folder, over a blue-to-teal ground with soft circles."""
    canvas = Canvas()
    canvas.paint(circle(150, 36, 92), (40, 0, SIDE_W, 130), 0.05)
    canvas.paint(circle(150, 36, 52), (90, 0, SIDE_W, 90), 0.1)
    canvas.paint(circle(6, 270, 70), (0, 190, 80, SIDE_H), 0.05)
    fx, fy = SIDE_W / 2, 180  # centre of the folder
    back = union(rounded_rect(fx, fy - 4, 54, 40, 6), rounded_rect(fx - 38, fy - 44, 16, 8, 5))
    canvas.paint(back, (fx - 60, fy - 50, fx + 60, fy + 40), 0.3)
    document(canvas, fx - 12, fy - 50, -9, 0.62)
    document(canvas, fx + 13, fy - 48, 8, 0.62)
    document(canvas, fx, fy - 56, 0, 1.0)
    x0, y0 = fx - PAGE_W, fy - 56 - PAGE_H  # top left of the front page
    canvas.write(rounded_rect(x0 + 21, y0 + 15, 13, 4, 2), (x0, y0 + 8, x0 + 40, y0 + 22), 0, 1)
    for i, half in enumerate((22, 18, 22, 12)):
        y = y0 + 29.5 + 9 * i  # whole rows: no dithered half-covered edge
        line = rounded_rect(x0 + 8 + half, y, half, 1.5, 1.5)
        canvas.write(line, (x0, y - 4, x0 + 60, y + 4), 0, 3 / 8)
    canvas.write(circle(x0 + 50, y0 + 66, 5.5), (x0 + 40, y0 + 56, x0 + 60, y0 + 76), 1, 1)
    front = rounded_rect(fx, fy + 10, 54, 26, 6)
    canvas.paint(front, (fx - 60, fy - 30, fx + 60, fy + 40), 0.8)
    return canvas.indices()

def bmp(width, height, palette, rows):
    stride = (width + 3) // 4 * 4
    pixels = b"".join(bytes(r) + bytes(stride - width) for r in reversed(rows))
    offset = 14 + 40 + 4 * len(palette)
    header = struct.pack("<2sIHHI", b"BM", offset + len(pixels), 0, 0, offset)
    info = struct.pack("<IiiHHIIiiII", 40, width, height, 1, 8, 0, len(pixels), 2835, 2835, 256, 0)
    colours = b"".join(bytes((b, g, r, 0)) for r, g, b in palette)
    return header + info + colours + pixels

# ---- the icons: RGBA, composited in premultiplied floats -----------------------------

def icon(size, layers):
    """layers: (shape, colour_at(x, y) -> rgb, opacity, softness) painted in order."""
    rows = []
    for y in range(size):
        row = bytearray([0])  # PNG filter type "none"
        for x in range(size):
            px, py, r, g, b, a = x + 0.5, y + 0.5, 0.0, 0.0, 0.0, 0.0
            for shape, colour, opacity, soft in layers:
                c = coverage(shape(px, py), soft) * opacity
                if c > 0:
                    cr, cg, cb = colour(px, py)
                    r, g, b = r + (cr - r) * c, g + (cg - g) * c, b + (cb - b) * c
                    a += (1 - a) * c
            if a > 0:
                row += bytes(int(round(clamp(v / a) * 255)) for v in (r, g, b))
            else:
                row += bytes(3)
            row.append(int(round(a * 255)))
        rows.append(bytes(row))
    return png(size, size, b"".join(rows))

def png(width, height, raw):
    def chunk(tag, data):
        crc = struct.pack(">I", zlib.crc32(tag + data))
        return struct.pack(">I", len(data)) + tag + data + crc

    ihdr = struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)  # 8-bit RGBA
    idat = zlib.compress(raw, 9)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", ihdr) + chunk(b"IDAT", idat) + chunk(b"IEND", b"")

def vertical(top, bottom, y0, y1):
    top, bottom = [c / 255 for c in top], [c / 255 for c in bottom]
    return lambda x, y: mix(top, bottom, clamp((y - y0) / (y1 - y0)))

def shadow(shape, s):
    """A soft shadow layer a little below shape."""
    return (lambda x, y: shape(x, y - 0.03 * s), lambda x, y: (0.0, 0.0, 0.0), 0.3, 0.05 * s)

def white(x, y):
    return (1.0, 1.0, 1.0)

def error_icon(s=125):
    """A red-orange rounded square with a white exclamation mark."""
    body = rounded_rect(s / 2, s / 2, s * 0.42, s * 0.42, s * 0.2)
    stem = stroke(s / 2, s * 0.27, s / 2, s * 0.58, s * 0.065, s * 0.048)
    mark = union(stem, circle(s / 2, s * 0.72, s * 0.062))
    colour = vertical((240, 112, 72), (206, 48, 44), s * 0.08, s * 0.92)
    return icon(s, [shadow(body, s), (body, colour, 1.0, 1.0), (mark, white, 1.0, 1.0)])

def question_icon(s=256):
    """A blue disc with a white question mark."""
    body = circle(s / 2, s / 2, s * 0.43)
    hook = arc(s * 0.5, s * 0.39, s * 0.12, 190, 245, s * 0.095)
    end = math.radians(190 + 245)
    ex, ey = s * 0.5 + s * 0.12 * math.cos(end), s * 0.39 + s * 0.12 * math.sin(end)
    stem = stroke(ex, ey, s / 2, s * 0.6, s * 0.0475, s * 0.0475)
    mark = union(hook, stem, circle(s / 2, s * 0.735, s * 0.056))
    colour = vertical((84, 156, 232), (34, 92, 184), s * 0.07, s * 0.93)
    return icon(s, [shadow(body, s), (body, colour, 1.0, 1.0), (mark, white, 1.0, 1.0)])

# ---- output ---------------------------------------------------------------------------

def cpp_source(images):
    out = ["// Generated by assets/make_images.py; do not edit.", '#include "assets/page_images.h"']
    out += ["", "namespace {"]
    for function, data in images:
        out.append("const unsigned char k%s[] = {" % function)
        for i in range(0, len(data), 16):
            out.append("    " + ", ".join("0x%02x" % b for b in data[i : i + 16]) + ",")
        out.append("};")
    out += ["}  // namespace", ""]
    for function, data in images:
        out.append("ImageBytes %s() { return {k%s, sizeof k%s}; }" % (function, function, function))
    return "\n".join(out) + "\n"

def main():
    if len(sys.argv) != 2:
        sys.exit("usage: make_images.py OUTPUT_DIR")
    out = sys.argv[1]
    os.makedirs(out, exist_ok=True)
    side = bmp(SIDE_W, SIDE_H, side_palette(), side_image())
    small, large = error_icon(), question_icon()
    source = cpp_source([("SideImage", side), ("ErrorIcon", small), ("QuestionIcon", large)])
    files = [("side_image.bmp", side), ("small_icon.png", small), ("large_icon.png", large)]
    for name, data in files + [("page_images.cpp", source.encode())]:
        with open(os.path.join(out, name), "wb") as f:
            f.write(data)

if __name__ == "__main__":
    main()
