"""Whether the Chinese texts of a drawing show where they stand, in LibreCAD and in qvplc.

Usage: check_cjk_rendering.py FILE.dxf QVPLC FONT_DIR SCRATCH

Every TEXT and MTEXT holding Chinese characters is located in the drawing (ezdxf), and the
picture is inspected at the middle of its last line: a box one text height across must hold
ink. Two crosses put outside the drawing's extents pin the picture's scale and offset.

- LibreCAD (`librecad dxf2pdf`, headless, its font folder pointed at FONT_DIR for
  qvcjk.lff), then pdftoppm. As a witness that the ink is glyphs and not LibreCAD's
  placeholder for a missing character, the same drawing is drawn once more with the texts'
  style renamed (LibreCAD then falls back to its standard font, which lacks the characters):
  each text must carry clearly more ink with the font than without it.
- qvplc's own renderer (`qvplc dxf render`), decoded here.

Prints one line per renderer; exits 1 on any failure, 77 when LibreCAD or pdftoppm cannot run
(the caller skips that half and says so).
"""
import math
import os
import shutil
import struct
import subprocess
import sys
import zlib

import ezdxf
from ezdxf import bbox

path, qvplc, font_dir, scratch = sys.argv[1:5]
errors = []


def has_cjk(text):
    return any("\u3400" <= c <= "\u9fff" for c in text)


def text_middles(doc):
    """(label, middle point, height) of every Chinese text: the middle of its last line."""
    found = []
    for e in doc.modelspace():
        if e.dxftype() == "TEXT" and has_cjk(e.dxf.text):
            h = e.dxf.height
            r = math.radians(e.dxf.rotation)
            up = (-math.sin(r), math.cos(r))
            special = e.dxf.halign in (1, 2, 4) or e.dxf.valign != 0
            at = e.dxf.align_point if special else e.dxf.insert
            shift = {0: 0.5, 1: 0.5, 2: 0.0, 3: -0.5}[e.dxf.valign]
            if e.dxf.halign == 4:
                shift = 0.0
            found.append((e.dxf.text, (at[0] + up[0] * h * shift, at[1] + up[1] * h * shift), h))
        elif e.dxftype() == "MTEXT" and has_cjk(e.text):
            # Middle-centre texts stand on their insertion point; bottom-centre ones put the
            # middle of their last line half a height above it.
            h = e.dxf.char_height
            r = math.radians(e.get_rotation())
            up = (-math.sin(r), math.cos(r))
            shift = 0.5 * h if e.dxf.attachment_point in (7, 8, 9) else 0.0
            at = e.dxf.insert
            last = e.plain_text().split("\n")[-1]
            found.append((last, (at[0] + up[0] * shift, at[1] + up[1] * shift), h))
    return found


def with_markers(doc, out):
    box = bbox.extents(doc.modelspace())
    lo, hi = box.extmin, box.extmax
    margin = max(hi.x - lo.x, hi.y - lo.y) * 0.05 + 1
    corners = ((lo.x - margin, lo.y - margin), (hi.x + margin, hi.y + margin))
    msp = doc.modelspace()
    for x, y in corners:
        msp.add_line((x - 0.5, y), (x + 0.5, y))
        msp.add_line((x, y - 0.5), (x, y + 0.5))
    doc.saveas(out)
    return corners


# Anything clearly off white is ink: the module texts are yellow (colour 2) on white.
DARK = bytes(1 if v < 235 else 0 for v in range(256))


def read_pgm(data):
    parts = data.split(maxsplit=4)
    width, height = int(parts[1]), int(parts[2])
    pixels = parts[4][-width * height:]
    return width, height, [pixels[y * width:(y + 1) * width] for y in range(height)]


def read_png(data):
    """An 8-bit, non-interlaced PNG (grey, RGB or RGBA) as rows of grey levels."""
    pos, idat = 8, b""
    while pos < len(data):
        length, kind = struct.unpack(">I4s", data[pos:pos + 8])
        body = data[pos + 8:pos + 8 + length]
        if kind == b"IHDR":
            width, height, _, colour = struct.unpack(">IIBB", body[:10])
        elif kind == b"IDAT":
            idat += body
        pos += 12 + length
    ch = {0: 1, 2: 3, 6: 4, 4: 2}[colour]
    raw = zlib.decompress(idat)
    stride = width * ch
    rows, prev = [], bytearray(stride)
    for y in range(height):
        f = raw[y * (stride + 1)]
        line = bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        if f == 2:
            line = bytearray((v + b) & 255 for v, b in zip(line, prev))
        elif f != 0:
            for i in range(stride):
                a = line[i - ch] if i >= ch else 0
                b = prev[i]
                if f == 1:
                    line[i] = (line[i] + a) & 255
                elif f == 3:
                    line[i] = (line[i] + (a + b) // 2) & 255
                else:
                    c = prev[i - ch] if i >= ch else 0
                    p = a + b - c
                    pa, pb, pc = abs(p - a), abs(p - b), abs(p - c)
                    line[i] = (line[i] + (a if pa <= pb and pa <= pc else b if pb <= pc else c)) & 255
        prev = line
        if ch >= 3:
            grey = bytes(255 if ch == 4 and al == 0 else min(r, g, b_)
                         for r, g, b_, al in zip(line[0::ch], line[1::ch], line[2::ch],
                                                 line[3::ch] if ch == 4 else [255] * width))
        else:
            grey = bytes(line[0::ch])
        rows.append(grey)
    return width, height, rows


def ink_counter(image, corners):
    width, height, rows = image
    dark = [row.translate(DARK) for row in rows]
    ys = [y for y in range(height) if 1 in dark[y]]
    if not ys:
        return None
    xs = [dark[y].find(1) for y in ys] + [dark[y].rfind(1) for y in ys]
    (x0, y0), (x1, y1) = corners
    sx = (max(xs) - min(xs)) / (x1 - x0)
    sy = (max(ys) - min(ys)) / (y1 - y0)
    left, bottom = min(xs), max(ys)

    def count(point, size):
        cx = int(left + (point[0] - x0) * sx)
        cy = int(bottom - (point[1] - y0) * sy)
        half = max(1, int(size * sx / 2))
        return sum(dark[y][max(0, cx - half):cx + half + 1].count(1)
                   for y in range(max(0, cy - half), min(height, cy + half + 1)))
    return count


def librecad(dxf, name):
    home = os.path.join(scratch, "home-" + name)
    os.makedirs(os.path.join(home, ".librecad"), exist_ok=True)
    link = os.path.join(home, ".librecad", "fonts")
    if not os.path.exists(link):
        os.symlink(os.path.abspath(font_dir), link)
    # dxf2pdf writes NAME.pdf beside NAME.dxf.
    pdf = os.path.splitext(dxf)[0] + ".pdf"
    env = dict(os.environ, HOME=home, QT_QPA_PLATFORM="offscreen", XDG_CONFIG_HOME=home)
    subprocess.run(["timeout", "120", "librecad", "dxf2pdf", "-a", dxf], env=env,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
    if not os.path.exists(pdf):
        return None
    pgm = subprocess.run(["pdftoppm", "-r", "150", "-gray", "-singlefile", pdf],
                         capture_output=True, check=True).stdout
    return read_pgm(pgm)


def main():
    doc = ezdxf.readfile(path)
    texts = text_middles(doc)
    if not texts:
        print("no Chinese text in the drawing")
        sys.exit(1)
    marked = os.path.join(scratch, "marked.dxf")
    corners = with_markers(doc, marked)

    png = os.path.join(scratch, "own.png")
    run = subprocess.run([qvplc, "dxf", "render", marked, png, "--width", "1600"],
                         capture_output=True, text=True, check=False)
    if run.returncode != 0:
        errors.append("qvplc dxf render: " + run.stderr.strip())
    else:
        count = ink_counter(read_png(open(png, "rb").read()), corners)
        for text, at, h in texts:
            if count(at, h) < 3:
                errors.append(f"qvplc renderer: no ink where '{text}' stands")
        print(f"qvplc renderer: {len(texts)} Chinese texts checked")

    if shutil.which("librecad") is None or shutil.which("pdftoppm") is None:
        print("LibreCAD half skipped: librecad or pdftoppm is not installed")
        sys.exit(77 if not errors else 1)
    image = librecad(marked, "font")
    if image is None:
        print("LibreCAD half skipped: librecad dxf2pdf cannot run headless here")
        sys.exit(77 if not errors else 1)
    bare = ezdxf.readfile(marked)
    bare.styles.new("qvnone", dxfattribs={"font": "txt"})
    for e in bare.modelspace():
        if e.dxftype() in ("TEXT", "MTEXT"):
            e.dxf.style = "qvnone"
    bare_path = os.path.join(scratch, "bare.dxf")
    bare.saveas(bare_path)
    witness = librecad(bare_path, "bare")
    count = ink_counter(image, corners)
    count_bare = ink_counter(witness, corners)
    least = None
    for text, at, h in texts:
        ink, ink_bare = count(at, h), count_bare(at, h)
        ratio = ink / max(ink_bare, 1)
        least = ratio if least is None else min(least, ratio)
        if ink < 3 or ratio < 1.5:
            errors.append(f"LibreCAD: '{text}' shows {ink} ink pixels, "
                          f"{ink_bare} without its font")
    print(f"LibreCAD: {len(texts)} Chinese texts checked, the least ink {least:.1f} times "
          "that without the font")
    if errors:
        print("\n".join(errors))
        sys.exit(1)


main()
