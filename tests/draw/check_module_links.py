"""Independent check of a drawn module's DXF file with ezdxf.

Usage: check_module_links.py FILE

Loads the file strictly, requires a clean audit and no repair messages from ezdxf, checks
what ezdxf lets through (unique handles below $HANDSEED, registered applications, extended
data last), and follows every link the module drawing writes: each 1005 item must name an
entity of the file, and each link must be answered by the link the other side carries.
Prints one line of counts and then the plain text of every TEXT and MTEXT, one per line,
for the calling test to compare. Exits 1 with the reasons on any failure.
"""
import logging
import sys

import ezdxf

messages = []


class Collect(logging.Handler):
    def emit(self, record):
        messages.append(record.getMessage())


logging.getLogger("ezdxf").addHandler(Collect())
logging.getLogger("ezdxf").setLevel(logging.WARNING)

errors = []


def fail(text):
    errors.append(text)


def items(entity, app):
    if not entity.has_xdata(app):
        return []
    return list(entity.get_xdata(app))


def handles(entity, app):
    return [value for code, value in items(entity, app) if code == 1005]


def raw_checks(path):
    """Tag-level checks: handles unique and below the seed, xdata after everything else."""
    with open(path, "rb") as f:
        lines = f.read().decode("utf-8", errors="replace").splitlines()
    pairs = [(lines[i].strip(), lines[i + 1]) for i in range(0, len(lines) - 1, 2)]
    seed = None
    for i, (code, value) in enumerate(pairs):
        if code == "9" and value == "$HANDSEED":
            seed = int(pairs[i + 1][1], 16)
    seen = set()
    in_xdata = False
    in_header = False
    for code, value in pairs:
        if code == "2" and value == "HEADER":
            in_header = True
        if code == "0":
            in_xdata = False
            in_header = in_header and value != "ENDSEC"
        if in_header:
            continue
        elif code == "1001":
            in_xdata = True
        elif in_xdata and not code.startswith("10"):
            fail("group %s after extended data" % code)
        if code == "5" or code == "105":
            h = int(value, 16)
            if h in seen:
                fail("duplicate handle %s" % value)
            seen.add(h)
            if seed is not None and h >= seed:
                fail("handle %s not below $HANDSEED" % value)


def check_links(doc):
    db = doc.entitydb
    msp = doc.modelspace()
    apps = {e.dxf.name.upper() for e in doc.appids}
    counts = {"INSERT": 0, "TEXT": 0, "MTEXT": 0, "LWPOLYLINE": 0, "links": 0}

    def target(h, kind, what):
        e = db.get(h)
        if e is None or e.dxftype() != kind:
            fail("%s: %s does not name a %s" % (what, h, kind))
            return None
        return e

    for e in msp:
        kind = e.dxftype()
        if kind in counts:
            counts[kind] += 1
        if e.xdata:
            for app in e.xdata.data:
                if app.upper() not in apps:
                    fail("application %r not registered" % app)
                for code, value in e.xdata.get(app):
                    if code == 1005:
                        counts["links"] += 1
                        if value != "0" and db.get(value) is None:
                            fail("%s %s: 1005 %s names nothing" % (kind, e.dxf.handle, value))
        h = e.dxf.handle
        if kind == "INSERT" and e.has_xdata("QV_SYMB2_TERM_TEXT_1"):
            term = items(e, "QV_SYMB2_TERM_TEXT_1")
            if not term or term[0] != (1000, "1"):
                fail("symbol %s: QV_SYMB2_TERM_TEXT_1 does not open with 1000 '1'" % h)
            for n in handles(e, "QV_SYMB2_TERM_TEXT_1"):
                number = target(n, "TEXT", "symbol %s number" % h)
                if number is not None and handles(number, "QV_SYMB2_TERM_TEXT_1") != [h]:
                    fail("number text %s does not link back to %s" % (n, h))
                if number is not None and handles(number, "QV_SYMB2_TERMDESC_TEXT_1") != [h]:
                    fail("number text %s lacks the description link to %s" % (n, h))
            for d in handles(e, "QV_SYMB2_TERMDESC_TEXT_1"):
                target(d, "TEXT", "symbol %s description" % h)
            for lab in handles(e, "QV_SYMB2_LABEL"):
                label = target(lab, "MTEXT", "symbol %s label" % h)
                if label is not None and h not in handles(label, "QV_SYMB2_LABEL"):
                    fail("label %s does not list symbol %s" % (lab, h))
        if kind == "LWPOLYLINE" and e.has_xdata("QV_ GROUPPARTXRECT_TEXT"):
            for lab in handles(e, "QV_ GROUPPARTXRECT_TEXT"):
                label = target(lab, "MTEXT", "outline %s label" % h)
                if label is not None and h not in handles(label, "QV_ GROUPPARTXRECT_XRECT"):
                    fail("label %s does not list outline %s" % (lab, h))
        if kind == "MTEXT" and e.has_xdata("QV_LABEL_DETAIL"):
            for d in handles(e, "QV_LABEL_DETAIL"):
                data = target(d, "MTEXT", "label %s detail" % h)
                if data is not None and handles(data, "QV_DETAIL_LABEL") != [h]:
                    fail("data text %s does not link back to label %s" % (d, h))
    return counts


def main():
    path = sys.argv[1]
    try:
        doc = ezdxf.readfile(path)
    except Exception as exc:  # strict load failed
        print("load failed: %s" % exc)
        return 1
    auditor = doc.audit()
    for err in auditor.errors:
        fail("audit error: %s" % err.message)
    for fix in auditor.fixes:
        fail("audit fix: %s" % fix.message)
    for m in messages:
        fail("ezdxf: %s" % m)
    raw_checks(path)
    counts = check_links(doc)
    if errors:
        print("\n".join(errors))
        return 1
    print(" ".join("%s=%d" % (k, v) for k, v in sorted(counts.items())))
    for e in doc.modelspace():
        if e.dxftype() == "TEXT":
            print("TEXT " + e.dxf.text)
        elif e.dxftype() == "MTEXT":
            print("MTEXT " + e.plain_text().replace("\n", "|"))
    return 0


sys.exit(main())
