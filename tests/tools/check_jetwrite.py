#!/usr/bin/env python3
"""Writes Access files with jetwrite and reads them back with mdbtools' programs.

usage: check_jetwrite.py JETWRITE WORKDIR

Every case is a table description; mdb-tables must list its tables in order, mdb-schema
must give every column its name and type, and mdb-export must give back every field as
written (mdb-export shows a null field and an empty text alike, as an empty field).
"""
import csv
import json
import os
import re
import subprocess
import sys

JETWRITE, WORKDIR = sys.argv[1], sys.argv[2]
failures = []


def table(name, columns, rows):
    return {"name": name, "columns": columns, "rows": rows}


def text(name, length=None):
    column = {"name": name, "type": "text"}
    if length:
        column["length"] = length
    return column


def memo(name):
    return {"name": name, "type": "memo"}


def long(name):
    return {"name": name, "type": "long"}


def cases():
    yield "empty", [table("NoRows", [text("A"), long("B"), memo("C")], []),
                    {"name": "NoRowsKey", "columns": [text("X", 1)]}]
    yield "nulls", [table("Nulls", [text("T", 10), long("L"), memo("M"), text("U")], [
        [None, None, None, None],
        ["", 0, "", ""],
        ["a", None, None, "b"],
        [None, 7, "m", None],
    ])]
    odd = ["中文名称", "Ünïcödé ÿ", "mixed 西门子 S7-300", "\u0100\u0200 zero low bytes",
           "\ufeffstarts with a byte order mark", "tab\tquote\"comma,", "line\r\nbreak",
           "かな カナ 한국어", "€ sign", " lead and trail ", "x" * 255]
    yield "texts", [table("Texts", [text("Name"), text("Short", 12)],
                          [[s, s[:12]] for s in odd])]
    yield "longs", [table("Longs", [long("N"), text("Label", 20)], [
        [0, "zero"], [-1, "minus one"], [2147483647, "max"], [-2147483648, "min"],
        [123456, None], [None, "null"]]),
                    table("OnlyFixed", [long("A"), long("B")], [[1, None], [None, -2], [3, 4]])]
    memos = [
        "short",
        "中" * 600,                          # inline, but too long to compress
        "y" * 3000,                          # one long value row
        "西门子" * 3000,                     # a chain of long value pages
        "z" * 50000,                          # a long chain
        "\u0100" * 1500,                     # never compressible
    ]
    yield "memos", [table("Memos", [long("Id"), memo("Note"), memo("Second"), memo("Third")],
                          [[i, m, m[:900], m[:1100]] for i, m in enumerate(memos)])]
    rows = [["CODE-%05d" % i, i % 37 - 18, "端子%d;TERM_=X%d" % (i, i % 16) if i % 4 else None]
            for i in range(6000)]
    yield "many-pages", [table("Terminals", [text("CODE", 60), long("SEQUENCE"),
                                             memo("ATTRIBUTES")], rows)]
    wide = [text("Column number %03d with a long name" % i, 30) for i in range(150)]
    yield "wide-definition", [table("Wide", wide, [["v%d" % i for i in range(150)],
                                                   [None] * 149 + ["last"]])]
    yield "many-tables", [table("T%03d_中" % i, [text("K", 5), long("V")], [["k%d" % i, i]])
                          for i in range(300)]
    yield "library", library()
    yield "other-cad", other_cad()


def library():
    makers = [("西门子", "SIE", [("S7-300", ["DI", "DO"]), ("S7-1200", ["AI"])]),
              ("Allen-Bradley", "AB", [("1756", ["DI"])])]
    plc, simple, tables = [], [], []
    for maker, short, series in makers:
        simple.append([maker, short])
        for s, types in series:
            for t in types:
                name = "%s_%s_%s" % (short, s.replace("-", "_"), t)
                plc.append([maker, s, t, name])
                modules = [["%s-%s-%d" % (short, t, m), str(8 * m), t, "模块 %d" % m, "24V DC"]
                           for m in range(1, 4)]
                terminals = [[mod[0], n, "X%d" % n, "输入 %d" % n, None if n % 2 else "详细说明"]
                             for mod in modules for n in range(1, 9)]
                tables.append(table(name, [text(c, 60) for c in
                                           ["CODE", "POINTS", "TYPE", "DESCRIPTION", "RATING"]],
                                    modules))
                tables.append(table(name + "_data",
                                    [text("CODE", 60), long("SEQUENCE"), text("TermValue", 60),
                                     text("TERMDESC", 60), memo("DETAILTERMDESC")], terminals))
    return [table("PLC_MANUFACTURER",
                  [text(c, 60) for c in ["MANUFACTURER", "SERIES", "TYPE", "TABLE_NAME"]], plc),
            table("MANUFACTURER_Simple", [text("MANUFACTURER", 60), text("MFG", 60)],
                  simple)] + tables


def other_cad():
    """The other CAD's PLC database: terminal rows carry their values in ATTRIBUTES."""
    plc = [["Allen-Bradley", "1756", "DI", "AB-1756-DI"], ["欧姆龙", "CJ1", "AI", "OM_CJ1_AI"]]
    tables = [table("PLC_MANUFACTURER",
                    [text(c, 60) for c in ["MANUFACTURER", "SERIES", "TYPE", "TABLE_NAME"]], plc)]
    for _, _, t, name in plc:
        modules = [["%s-%02d" % (t, m), str(m * 8), t, "模块 %d" % m, ""] for m in range(1, 3)]
        tables.append(table(name, [text(c, 60) for c in
                                   ["CODE", "POINTS", "TYPE", "DESCRIPTION", "RATING"]], modules))
        attributes = [[mod[0], n, None if n == 3 else "TERM_=%d;TERMDESC_=输入 %d;" % (n, n)]
                      for mod in modules for n in range(1, int(mod[1]) + 1)]
        tables.append(table(name + "_data", [text("Code", 60), long("SEQUENCE"),
                                             memo("ATTRIBUTES")], attributes))
    return tables


def check_refusals():
    """Bad descriptions are refused with their place named, and no file is left."""
    description = os.path.join(WORKDIR, "bad.json")
    out = os.path.join(WORKDIR, "bad.mdb")
    for text, expected in [('{"tables": [\n  {"name": "T", "columns": []},]}',
                            "bad.json: line 2, column 32: unexpected character"),
                           ('{"tables": [{"name": "T", "columns": [{"name": "A", "type": "text",'
                            ' "length": 2}], "rows": [["abc"]]}]}',
                            'table "T", row 1, column "A": the text has 3 characters')]:
        with open(description, "w", encoding="utf-8") as f:
            f.write(text)
        result = subprocess.run([JETWRITE, description, out], capture_output=True, text=True)
        if result.returncode != 1 or expected not in result.stderr or os.path.exists(out):
            fail("refusals", "%r gave %d: %s" % (text, result.returncode, result.stderr))
    result = subprocess.run([JETWRITE, description], capture_output=True, text=True)
    if result.returncode != 2 or "usage: jetwrite" not in result.stderr:
        fail("refusals", "a missing argument gave %d: %s" % (result.returncode, result.stderr))


def run(args):
    result = subprocess.run(args, capture_output=True)
    if result.returncode != 0:
        raise RuntimeError("%s failed: %s" % (args[0], result.stderr.decode(errors="replace")))
    return result.stdout.decode("utf-8")


def fail(case, what):
    failures.append("%s: %s" % (case, what))


SCHEMA_TYPES = {"text": r"Text \((\d+)\)", "memo": r"Memo/Hyperlink \(255\)",
                "long": r"Long Integer"}


def check_schema(case, path, tables):
    schema = run(["mdb-schema", path, "access"])
    blocks = re.findall(r"CREATE TABLE \[(.*?)\]\s*\((.*?)\n\);", schema, re.S)
    if [b[0] for b in blocks] != [t["name"] for t in tables]:
        fail(case, "mdb-schema lists tables %s" % [b[0] for b in blocks])
        return
    for (name, body), t in zip(blocks, tables):
        columns = re.findall(r"\t\[(.*?)\]\t+(.*?),?\s*$", body, re.M)
        if [c[0] for c in columns] != [c["name"] for c in t["columns"]]:
            fail(case, "%s: mdb-schema gives columns %s" % (name, [c[0] for c in columns]))
            continue
        for (cname, ctype), c in zip(columns, t["columns"]):
            m = re.fullmatch(SCHEMA_TYPES[c["type"]], ctype.strip())
            if not m or (c["type"] == "text" and int(m.group(1)) != c.get("length", 255)):
                fail(case, "%s.%s: mdb-schema gives type %r for %s" % (name, cname, ctype,
                                                                       c["type"]))


def check_rows(case, path, t):
    out = run(["mdb-export", path, t["name"]])
    got = list(csv.reader(out.splitlines(keepends=True)))
    if not got or got[0] != [c["name"] for c in t["columns"]]:
        fail(case, "%s: mdb-export header %s" % (t["name"], got[:1]))
        return
    want = [["" if v is None else str(v) for v in row] for row in t.get("rows", [])]
    if len(got) - 1 != len(want):
        fail(case, "%s: %d rows read back, %d written" % (t["name"], len(got) - 1, len(want)))
    for i, (g, w) in enumerate(zip(got[1:], want)):
        if g != w:
            fail(case, "%s row %d: read %r, wrote %r" % (t["name"], i + 1,
                                                       [x[:40] for x in g], [x[:40] for x in w]))
            break


def check(case, tables, options):
    description = os.path.join(WORKDIR, case + ".json")
    path = os.path.join(WORKDIR, case + "".join(options) + ".mdb")
    with open(description, "w", encoding="utf-8") as f:
        json.dump({"tables": tables}, f, ensure_ascii=False)
    run([JETWRITE] + options + [description, path])
    listed = run(["mdb-tables", "-1", path]).splitlines()
    if listed != [t["name"] for t in tables]:
        fail(case, "mdb-tables lists %s" % listed[:10])
    check_schema(case, path, tables)
    for t in tables:
        check_rows(case, path, t)


def main():
    os.makedirs(WORKDIR, exist_ok=True)
    for case, tables in cases():
        variants = [[]]
        if case in ("nulls", "texts", "memos", "many-pages"):
            variants.append(["--plain-text", "--indirect-maps"])
        for options in variants:
            try:
                check(case, tables, options)
            except RuntimeError as e:
                fail(case, str(e))
    check_refusals()
    for line in failures:
        print(line)
    print("%d failures" % len(failures))
    return 1 if failures else 0


sys.exit(main())
