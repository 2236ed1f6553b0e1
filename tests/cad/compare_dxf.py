"""Compares two DXF files the way a reader sees them: every entity of every layout and
block, found by handle, with its type, every DXF attribute ezdxf knows, its extended data
and its subclass tags; and every object of the OBJECTS section by handle and type.

Usage: compare_dxf.py ORIGINAL.dxf CONVERTED.dxf
Prints the differences and exits 1 when there are any.
"""
import math
import re
import sys

import ezdxf

# Attributes that a version change may legitimately alter.
VOLATILE = {"owner"}


def plain(text):
    """Text with its \\U+XXXX escapes decoded: files before R2007 hold non-ASCII text so."""
    return re.sub(r"\\U\+([0-9A-Fa-f]{4})", lambda m: chr(int(m.group(1), 16)), text)


def close(a, b):
    if isinstance(a, str) and isinstance(b, str):
        return plain(a) == plain(b)
    if isinstance(a, float) or isinstance(b, float):
        try:
            return math.isclose(float(a), float(b), rel_tol=1e-9, abs_tol=1e-9)
        except (TypeError, ValueError):
            return False
    if hasattr(a, "isclose"):
        return a.isclose(b, abs_tol=1e-9)
    if isinstance(a, (tuple, list)) and isinstance(b, (tuple, list)):
        return len(a) == len(b) and all(close(x, y) for x, y in zip(a, b))
    return a == b


def entities(doc, blocks=None):
    """Entities by handle, of the named blocks only when `blocks` is given."""
    out = {}
    for layout in doc.layouts:
        for e in layout:
            out[e.dxf.handle] = e
            for sub in getattr(e, "attribs", []):
                out[sub.dxf.handle] = sub
    for block in doc.blocks:
        if blocks is not None and block.name not in blocks:
            continue
        for e in block:
            out[e.dxf.handle] = e
    return out


def xdata(e):
    result = {}
    if e.xdata is None:
        return result
    for app, tags in e.xdata.data.items():
        result[app] = [(t.code, t.value) for t in tags]
    return result


def main():
    a, b = ezdxf.readfile(sys.argv[1]), ezdxf.readfile(sys.argv[2])
    problems = []
    # A reader may add blocks of its own on loading an older version (ezdxf adds arrow
    # blocks to R14 files): entities of blocks the original does not have are not compared.
    ea, eb = entities(a), entities(b, {blk.name for blk in a.blocks})
    for h, e in ea.items():
        f = eb.get(h)
        if f is None:
            problems.append(f"{e.dxftype()} {h} lost")
            continue
        if f.dxftype() != e.dxftype():
            problems.append(f"{h}: {e.dxftype()} became {f.dxftype()}")
            continue
        da, db_ = e.dxfattribs(), f.dxfattribs()
        for key, value in da.items():
            if key in VOLATILE:
                continue
            if key not in db_:
                problems.append(f"{e.dxftype()} {h}: attribute {key} lost")
            elif not close(value, db_[key]):
                problems.append(f"{e.dxftype()} {h}: {key} {value!r} became {db_[key]!r}")
        xa, xb = xdata(e), xdata(f)
        for app, items in xa.items():
            other = xb.get(app)
            if other is None or len(other) != len(items) or not all(
                    c1 == c2 and close(v1, v2) for (c1, v1), (c2, v2) in zip(items, other)):
                problems.append(f"{e.dxftype()} {h}: extended data of {app} {items} became {other}")
    for h in eb:
        if h not in ea:
            problems.append(f"{eb[h].dxftype()} {h} appeared")
    oa = {o.dxf.handle: o.dxftype() for o in a.objects}
    ob = {o.dxf.handle: o.dxftype() for o in b.objects}
    for h, t in oa.items():
        if ob.get(h) != t:
            problems.append(f"object {t} {h} lost or changed to {ob.get(h)}")
    for p in problems:
        print(p)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
