"""Makes the stroke font qvcjk.lff, which LibreCAD draws texts with, from a TrueType font.

Usage: make_lff.py FONT.ttc|FONT.ttf OUT.lff

LibreCAD draws a text with the font named like the text's style and knows only its own
stroke fonts (.lff), none of which holds the simplified Chinese characters. This font holds
printable ASCII, CJK punctuation, full-width forms and the 6,763 characters of GB 2312, each
glyph's outline flattened to polylines, scaled so that a Latin capital is 9 units high as in
LibreCAD's own fonts. Drawings name it through their text style "qvcjk".
"""
import sys

from fontTools.pens.basePen import BasePen
from fontTools.ttLib import TTCollection, TTFont

CURVE_STEPS = 3


def characters():
    chars = [chr(c) for c in range(0x21, 0x7F)]
    chars += [chr(c) for c in range(0x3001, 0x3020)]
    chars += [chr(c) for c in range(0xFF01, 0xFF5F)]
    for high in range(0xB0, 0xF8):
        for low in range(0xA1, 0xFF):
            try:
                chars.append(bytes([high, low]).decode("gb2312"))
            except UnicodeDecodeError:
                pass
    return chars


class FlatPen(BasePen):
    """Collects each contour as a list of points, curves cut into straight pieces."""

    def __init__(self, glyph_set):
        super().__init__(glyph_set)
        self.contours = []
        self.current = None

    def _moveTo(self, pt):
        self.current = [pt]
        self.contours.append(self.current)

    def _lineTo(self, pt):
        self.current.append(pt)

    def _curveToOne(self, p1, p2, p3):
        p0 = self.current[-1]
        for i in range(1, CURVE_STEPS + 1):
            t = i / CURVE_STEPS
            u = 1 - t
            self.current.append(tuple(u ** 3 * a + 3 * u * u * t * b + 3 * u * t * t * c + t ** 3 * d
                                      for a, b, c, d in zip(p0, p1, p2, p3)))

    def _qCurveToOne(self, p1, p2):
        p0 = self.current[-1]
        for i in range(1, CURVE_STEPS + 1):
            t = i / CURVE_STEPS
            u = 1 - t
            self.current.append(tuple(u * u * a + 2 * u * t * b + t * t * c
                                      for a, b, c in zip(p0, p1, p2)))

    def _closePath(self):
        if self.current and self.current[0] != self.current[-1]:
            self.current.append(self.current[0])


def open_font(path):
    if path.lower().endswith(".ttc"):
        return TTCollection(path).fonts[0]
    return TTFont(path)


def number(v):
    text = f"{v:.2f}".rstrip("0").rstrip(".")
    return "0" if text in ("-0", "") else text


def main():
    font = open_font(sys.argv[1])
    cmap = font.getBestCmap()
    glyphs = font.getGlyphSet()
    h_pen = FlatPen(glyphs)
    glyphs[cmap[ord("H")]].draw(h_pen)
    cap = max(y for contour in h_pen.contours for _, y in contour)
    scale = 9.0 / cap
    out = ["# Format:            LibreCAD Font 1",
           "# Name:              qvcjk",
           "# Encoding:          UTF-8",
           "# LetterSpacing:     1.5",
           "# WordSpacing:       6.75",
           "# LineSpacingFactor: 1",
           "# Made by make_lff.py from " + sys.argv[1].rsplit("/", 1)[-1],
           ""]
    for ch in characters():
        name = cmap.get(ord(ch))
        if name is None:
            continue
        pen = FlatPen(glyphs)
        glyphs[name].draw(pen)
        if not pen.contours:
            continue
        out.append(f"[{ord(ch):04x}] {ch}")
        for contour in pen.contours:
            out.append(";".join(number(x * scale) + "," + number(y * scale) for x, y in contour))
        out.append("")
    with open(sys.argv[2], "w", encoding="utf-8") as f:
        f.write("\n".join(out) + "\n")


main()
