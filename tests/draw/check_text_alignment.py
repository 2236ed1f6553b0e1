"""Where every text of a drawn module stands, read back with ezdxf and judged by the rules.

Usage: check_text_alignment.py FILE FORMAT ORIENTATION MODE OX OY
  FORMAT 1..3, ORIENTATION 0 (horizontal) or 1 (vertical), MODE whole or divided,
  (OX, OY) the module's origin (the first piece's start for a divided drawing).

The drawing must come from the test environment: the test symbol (5 long, its terminal-text
point at (2, 0.4)), spacing 10, frame width 10, label height 4. Each terminal's texts name
their side by their first character (上 下 右 左) and a number text is told from a
description by the links the symbol carries. Prints "checked N texts" or the reasons and
exits 1.
"""
import math
import sys

import ezdxf

S = 5.0  # the test symbol's measured size
P = 10.0
H = 10.0
LABEL_H = 4.0
TOL = 1e-4

path, fmt, vertical, mode = sys.argv[1], int(sys.argv[2]), sys.argv[3] != "0", sys.argv[4]
origin = (float(sys.argv[5]), float(sys.argv[6]))
divided = mode == "divided"
errors = []

OUT = {"上": (0, 1), "下": (0, -1), "右": (1, 0), "左": (-1, 0)}


def fail(text):
    errors.append(text)


def near(a, b):
    return abs(a[0] - b[0]) < TOL and abs(a[1] - b[1]) < TOL


def angle_eq(a, b):
    d = (a - b) % 360.0
    return min(d, 360.0 - d) < 1e-3


def expected_modes(side, kind):
    """(group 72, group 73, rotation in degrees) the rules give this text."""
    if fmt == 3:
        rotation = 270.0 if vertical else 0.0
        if kind == "number":
            return 1, 2, rotation
        bottom = side == "下" and not divided
        return 1, (1 if bottom else 3), rotation
    rotation = 270.0 if vertical else 90.0
    if divided:
        return (1, 2, rotation) if kind == "number" else (1, 3, rotation)
    if kind == "number":
        return 4, 0, rotation
    return 4, (3 if side in ("上", "右") else 0), rotation


def anchor(text):
    if text.dxf.halign == 0 and text.dxf.valign == 0:
        return text.dxf.insert
    if not text.dxf.hasattr("align_point"):
        fail(f"{text.dxf.text}: aligned text without an alignment point (11)")
        return text.dxf.insert
    return text.dxf.align_point


def cell_centre(cells, point, out):
    """The centre of the cell the symbol at `point` stands on (nearest across the edge)."""
    best = None
    for c in cells:
        along_ok = abs((c[0] - point[0]) * out[1]) + abs((c[1] - point[1]) * out[0]) < TOL
        if along_ok:
            d = abs(c[0] - point[0]) + abs(c[1] - point[1])
            if best is None or d < best[0]:
                best = (d, c)
    return best[1] if best else None


def check_terminal_text(text, kind, ref, cells):
    content = text.dxf.text
    side = content[:1]
    if side not in OUT:
        fail(f"{content}: no side mark")
        return
    out = OUT[side]
    want72, want73, want_rot = expected_modes(side, kind)
    got = (text.dxf.halign, text.dxf.valign)
    if got != (want72, want73):
        fail(f"{content} ({kind}, side {side}): 72/73 {got}, rules give {(want72, want73)}")
    if not angle_eq(text.dxf.rotation, want_rot):
        fail(f"{content}: rotation {text.dxf.rotation}, rules give {want_rot}")
    at = anchor(text)
    ins = ref.dxf.insert
    if fmt in (1, 2):
        edge = (ins[0], ins[1])
        if kind == "number" and fmt == 2:
            r = math.radians(ref.dxf.rotation)
            want = (ins[0] + 2 * math.cos(r) - 0.4 * math.sin(r),
                    ins[1] + 2 * math.sin(r) + 0.4 * math.cos(r))
        elif kind == "number":
            want = (edge[0] - out[0] * (S + 0.8), edge[1] - out[1] * (S + 0.8))
        else:
            want = (edge[0] + out[0] * (S + 0.5), edge[1] + out[1] * (S + 0.5))
        if not near(at, want):
            fail(f"{content}: at ({at[0]:.4f}, {at[1]:.4f}), rules give {want}")
        return
    centre = cell_centre(cells, ins, out)
    if centre is None:
        fail(f"{content}: no cell under its symbol")
        return
    if kind == "number":
        if not near(at, centre):
            fail(f"{content}: at ({at[0]:.4f}, {at[1]:.4f}), not the cell centre {centre}")
        return
    # The description's body, measured outward from the cell centre, must start half a unit
    # beyond the symbol's far end and lie wholly outside it.
    h = text.dxf.height
    r = math.radians(text.dxf.rotation)
    up = (-math.sin(r), math.cos(r))
    lo, hi = {3: (-h, 0.0), 1: (0.0, h), 2: (-h / 2, h / 2), 0: (0.0, h)}[text.dxf.valign]
    up_out = up[0] * out[0] + up[1] * out[1]
    base = (at[0] - centre[0]) * out[0] + (at[1] - centre[1]) * out[1]
    span = sorted((base + lo * up_out, base + hi * up_out))
    clear = 2.5 + S + 0.5
    if abs(span[0] - clear) > TOL:
        fail(f"{content}: body spans {span[0]:.4f}..{span[1]:.4f} out from the cell, "
             f"should start at {clear}")
    sideways = (at[0] - centre[0]) * out[1] - (at[1] - centre[1]) * out[0]
    if abs(sideways) > TOL:
        fail(f"{content}: {sideways:.4f} along the edge from its cell's centre")


def check_headers(msp):
    mtexts = list(msp.query("MTEXT"))
    if len(mtexts) != 2:
        fail(f"{len(mtexts)} header texts, expected 2")
        return
    label, data = mtexts
    ox, oy = origin
    if vertical:
        want_label, want_data, rotation = (ox - H / 2, oy + LABEL_H), (ox - H / 2, oy + 2 * LABEL_H), 0.0
    else:
        want_label, want_data, rotation = (ox - LABEL_H, oy - H / 2), (ox - 2 * LABEL_H, oy - H / 2), 90.0
    for name, m, attach, want in (("label", label, 5, want_label), ("data", data, 8, want_data)):
        if m.dxf.attachment_point != attach:
            fail(f"{name}: attachment {m.dxf.attachment_point}, rules give {attach}")
        if not near(m.dxf.insert, want):
            fail(f"{name}: at {tuple(m.dxf.insert)[:2]}, rules give {want}")
        if not angle_eq(m.get_rotation(), rotation):
            fail(f"{name}: rotation {m.get_rotation()}, rules give {rotation}")


def main():
    doc = ezdxf.readfile(path)
    msp = doc.modelspace()
    by_handle = {e.dxf.handle: e for e in msp}
    role = {}
    for ref in msp.query("INSERT"):
        for app, kind in (("QV_SYMB2_TERM_TEXT_1", "number"), ("QV_SYMB2_TERMDESC_TEXT_1", "desc")):
            for code, value in (ref.get_xdata(app) if ref.has_xdata(app) else []):
                if code == 1005:
                    role[value] = (kind, ref)
    cells = []
    for poly in msp.query("LWPOLYLINE"):
        pts = [(p[0], p[1]) for p in poly.get_points()]
        if poly.closed and len(pts) == 4:
            cells.append((sum(p[0] for p in pts) / 4, sum(p[1] for p in pts) / 4))
    texts = list(msp.query("TEXT"))
    for text in texts:
        if text.dxf.handle not in role:
            fail(f"{text.dxf.text}: no symbol links to it")
            continue
        kind, ref = role[text.dxf.handle]
        check_terminal_text(text, kind, ref, cells)
    check_headers(msp)
    if errors:
        print("\n".join(errors))
        sys.exit(1)
    print(f"checked {len(texts)} texts")


main()
