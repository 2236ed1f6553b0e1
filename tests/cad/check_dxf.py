"""Independent check of a DXF file written by the drawing database.

Usage: check_dxf.py FILE [EXPECT.json]

1. ezdxf loads the file strictly, its audit must find no error and make no fix, and the
   ezdxf logger must not report anything it had to create or repair.
2. Checks of what ezdxf lets through, made on the raw tags: unique handles, $HANDSEED above
   all of them, owners that exist, registered applications, 1005 targets, LWPOLYLINE vertex
   counts, TEXT alignment points, extended data last.
3. With EXPECT.json: every listed entity is found by handle with its type, layer, text and
   extended data.
Prints the problems and exits 1 when there are any.
"""
import json
import logging
import math
import re
import sys

import ezdxf

problems = []


class Collect(logging.Handler):
    def emit(self, record):
        msg = record.getMessage()
        if record.levelno >= logging.WARNING or any(
                w in msg.lower() for w in ("creat", "missing", "repair", "invalid", "fix")):
            problems.append("ezdxf log: " + msg)


def raw_tags(path):
    data = open(path, "rb").read()
    lines = data.split(b"\n")
    if lines and lines[-1] == b"":
        lines.pop()
    if len(lines) % 2:
        problems.append("odd number of lines")
    version = b""
    for i in range(0, len(lines) - 1, 2):
        if lines[i].strip() == b"9" and lines[i + 1].strip() == b"$ACADVER":
            version = lines[i + 3].strip()
            break
    codepage = b""
    for i in range(0, len(lines) - 3, 2):
        if lines[i].strip() == b"9" and lines[i + 1].strip() == b"$DWGCODEPAGE":
            codepage = lines[i + 3].strip().upper()
            break
    legacy = {b"ANSI_936": "gbk", b"ANSI_932": "cp932", b"ANSI_949": "cp949",
              b"ANSI_950": "big5"}.get(codepage)
    if legacy is None and codepage.startswith(b"ANSI_125"):
        legacy = "cp" + codepage[5:].decode()
    if not codepage:
        legacy = "cp1252"  # what readers assume of a file that names no code page
    enc = "utf-8" if version >= b"AC1021" else legacy or "gbk"
    tags = []
    for i in range(0, len(lines) - 1, 2):
        tags.append((int(lines[i].strip()), lines[i + 1].rstrip(b"\r").decode(enc)))
    return tags


def records(tags):
    """Splits the tags into (type, tags) records at every group code 0."""
    out, cur = [], None
    for code, value in tags:
        if code == 0:
            cur = (value, [])
            out.append(cur)
        elif cur is not None:
            cur[1].append((code, value))
    return out


def raw_checks(path):
    tags = raw_tags(path)
    recs = records(tags)
    handles, owners, refs, apps_used = {}, [], [], []
    appids = set()
    seed = None
    for i, (code, value) in enumerate(tags):
        if code == 9 and value == "$HANDSEED":
            seed = int(tags[i + 1][1], 16)
    for typ, body in recs:
        if typ in ("SECTION", "ENDSEC", "EOF", "CLASS"):
            continue
        hcode = 105 if typ == "DIMSTYLE" else 5
        own = [v for c, v in body if c == hcode]
        if not own:
            if typ not in ("ENDTAB",):
                problems.append(f"{typ} without handle")
            continue
        h = own[0]
        if h in handles:
            problems.append(f"duplicate handle {h} ({typ} and {handles[h]})")
        handles[h] = typ
        in_xdata = False
        owner_seen = False
        for c, v in body:
            if c == 330 and not owner_seen and not in_xdata:
                owners.append((h, v))
                owner_seen = True
            if c == 1001:
                in_xdata = True
                apps_used.append((h, v))
            elif in_xdata and c < 1000:
                problems.append(f"{typ} {h}: group code {c} after its extended data")
            if c == 1005:
                refs.append((h, v))
        if typ == "APPID":
            appids.add([v for c, v in body if c == 2][0].upper())
        if typ == "LWPOLYLINE":
            n = int([v for c, v in body if c == 90][0])
            count = len([1 for c, v in body if c == 10])
            if n != count:
                problems.append(f"LWPOLYLINE {h}: 90 says {n}, {count} vertices")
        if typ in ("TEXT", "ATTRIB", "ATTDEF"):
            codes = {c: v for c, v in body if c < 1000}
            aligned = int(codes.get(72, 0)) != 0 or int(codes.get(73, codes.get(74, 0))) != 0
            if aligned and 11 not in codes:
                problems.append(f"{typ} {h}: aligned text without its alignment point")
    if seed is None:
        problems.append("no $HANDSEED")
    else:
        for h in handles:
            if int(h, 16) >= seed:
                problems.append(f"handle {h} not below $HANDSEED {seed:X}")
    for h, o in owners:
        if o != "0" and o not in handles:
            problems.append(f"{h}: owner {o} does not exist")
    for h, a in apps_used:
        if a.upper() not in appids:
            problems.append(f"{h}: application {a} not registered")
    for h, r in refs:
        if r != "0" and r not in handles:
            problems.append(f"{h}: 1005 {r} points at nothing")


def plain(text):
    """Text with its \\U+XXXX escapes decoded: files before R2007 hold non-ASCII text so."""
    return re.sub(r"\\U\+([0-9A-Fa-f]{4})", lambda m: chr(int(m.group(1), 16)), text)


def same_value(code, got, want):
    if 1010 <= code <= 1059:
        g = got[0] if isinstance(got, (tuple, list)) or hasattr(got, "x") else got
        try:
            return math.isclose(float(g if not hasattr(g, "x") else g.x), float(want), rel_tol=1e-9, abs_tol=1e-9)
        except (TypeError, ValueError):
            return False
    if code in (1070, 1071):
        return int(got) == int(want)
    return plain(str(got)) == plain(str(want))


def compare(doc, expect):
    db = doc.entitydb
    for e in expect.get("entities", []):
        ent = db.get(e["handle"])
        if ent is None:
            problems.append(f"entity {e['handle']} ({e['type']}) missing")
            continue
        if ent.dxftype() != e["type"]:
            problems.append(f"{e['handle']}: type {ent.dxftype()} instead of {e['type']}")
        if "layer" in e and ent.dxf.layer != e["layer"]:
            problems.append(f"{e['handle']}: layer {ent.dxf.layer} instead of {e['layer']}")
        if "text" in e:
            got = ent.text if ent.dxftype() == "MTEXT" else ent.dxf.text
            if plain(got) != e["text"]:
                problems.append(f"{e['handle']}: text {got!r} instead of {e['text']!r}")
        for app, items in e.get("xdata", {}).items():
            if not ent.has_xdata(app):
                problems.append(f"{e['handle']}: no extended data of {app}")
                continue
            got = list(ent.get_xdata(app))
            if len(got) != len(items):
                problems.append(f"{e['handle']}: {app} has {len(got)} items, expected {len(items)}")
                continue
            for (gc, gv), (wc, wv) in zip(got, items):
                if gc != wc or not same_value(gc, gv, wv):
                    problems.append(f"{e['handle']}: {app} item ({gc}, {gv!r}) instead of ({wc}, {wv!r})")
    for d in expect.get("xrecords", []):
        root = doc.rootdict
        sub = root.get(d["dictionary"])
        x = sub.get(d["key"]) if sub is not None else None
        if x is None or x.dxftype() != "XRECORD":
            problems.append(f"xrecord {d['dictionary']}/{d['key']} missing")
        else:
            tags = [list(t) for t in x.tags]
            if tags and tags[0][0] == 280:
                tags = tags[1:]  # the cloning flag, not data
            if tags != d["tags"]:
                problems.append(f"xrecord {d['dictionary']}/{d['key']}: {tags} instead of {d['tags']}")
    if "count" in expect:
        n = len(doc.modelspace())
        if n != expect["count"]:
            problems.append(f"model space holds {n} entities, expected {expect['count']}")


def main():
    path = sys.argv[1]
    handler = Collect()
    logging.getLogger("ezdxf").addHandler(handler)
    logging.getLogger("ezdxf").setLevel(logging.INFO)
    try:
        doc = ezdxf.readfile(path)
    except Exception as exc:  # noqa: BLE001 - any refusal is the finding
        print(f"ezdxf refuses the file: {exc!r}")
        return 1
    auditor = doc.audit()
    for err in auditor.errors:
        problems.append(f"audit error: {err.code} {err.message}")
    for fix in auditor.fixes:
        problems.append(f"audit fix: {fix.code} {fix.message}")
    raw_checks(path)
    if len(sys.argv) > 2:
        with open(sys.argv[2], encoding="utf-8") as f:
            compare(doc, json.load(f))
    for p in problems:
        print(p)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
