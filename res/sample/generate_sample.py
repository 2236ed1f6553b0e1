#!/usr/bin/env python3
"""Writes QvPLC.sql, the readable source of the bundled sample component library.

The makers, series and part numbers are invented. The modules follow the usual PLC I/O
families: digital inputs and outputs, relay outputs, analog inputs and outputs and mixed
modules, 8 to 64 channels, with supply and common terminals where such modules have them.
Run it again after changing it and commit both files:
    python3 res/sample/generate_sample.py > res/sample/QvPLC.sql
"""

import sys

LINES = []


def emit(sql):
    assert "'" not in sql.replace("','", "").replace("('", "").replace("')", "").replace(
        ",'", "").replace("',", ""), sql
    LINES.append(sql)


def q(*values):
    return ",".join("'" + v + "'" if isinstance(v, str) else str(v) for v in values)


def table_name(m, r, t):
    return (m + "_" + r + "_" + t).strip().replace(" ", "_").replace("-", "_")


# --- terminal layouts -----------------------------------------------------------------

def digital_in(n, group=8, addr="I"):
    rows, term = [], 1
    for g in range(0, n, group):
        for ch in range(g, min(g + group, n)):
            rows.append((str(term), f"{addr}{ch // 8}.{ch % 8}", f"数字量输入通道{ch}"))
            term += 1
        rows.append((str(term), f"{g // group + 1}M", f"输入组{g // group + 1}公共端(0V)"))
        term += 1
    return rows


def digital_out(n, group=8):
    rows, term = [], 1
    for g in range(0, n, group):
        k = g // group + 1
        rows.append((str(term), f"{k}L+", f"输出组{k}电源 24VDC"))
        term += 1
        for ch in range(g, min(g + group, n)):
            rows.append((str(term), f"Q{ch // 8}.{ch % 8}", f"晶体管输出通道{ch}"))
            term += 1
        rows.append((str(term), f"{k}M", f"输出组{k}电源 0V"))
        term += 1
    return rows


def relay_out(n, group=4):
    rows, term = [], 1
    for g in range(0, n, group):
        k = g // group + 1
        rows.append((str(term), f"C{k}", f"继电器组{k}公共端"))
        term += 1
        for ch in range(g, min(g + group, n)):
            rows.append((str(term), f"Q{ch // 8}.{ch % 8}", f"继电器输出通道{ch}，常开触点"))
            term += 1
    rows.append((str(term), "L+", "线圈电源 24VDC"))
    rows.append((str(term + 1), "M", "线圈电源 0V"))
    return rows


def analog_in(n, signal):
    rows = [("1", "L+", "模块电源 24VDC"), ("2", "M", "模块电源 0V")]
    term = 3
    for ch in range(n):
        rows.append((str(term), f"V{ch}+", f"模拟量输入通道{ch}电压+ ({signal})"))
        rows.append((str(term + 1), f"I{ch}+", f"模拟量输入通道{ch}电流+ ({signal})"))
        rows.append((str(term + 2), f"COM{ch}", f"模拟量输入通道{ch}公共端"))
        term += 3
    return rows


def rtd_in(n):
    rows = [("1", "L+", "模块电源 24VDC"), ("2", "M", "模块电源 0V")]
    term = 3
    for ch in range(n):
        for suffix, desc in (("A", "激励+"), ("B", "测量+"), ("b", "测量-")):
            rows.append((str(term), f"{suffix}{ch}", f"热电阻通道{ch}{desc}"))
            term += 1
    return rows


def analog_out(n, signal):
    rows = [("1", "L+", "模块电源 24VDC"), ("2", "M", "模块电源 0V")]
    term = 3
    for ch in range(n):
        rows.append((str(term), f"QV{ch}", f"模拟量输出通道{ch}电压 ({signal})"))
        rows.append((str(term + 1), f"QI{ch}", f"模拟量输出通道{ch}电流 ({signal})"))
        rows.append((str(term + 2), f"MANA{ch}", f"模拟量输出通道{ch}参考地"))
        term += 3
    return rows


def mixed(ni, no):
    rows = digital_in(ni)
    out = digital_out(no)
    base = len(rows)
    for term, value, desc in out:
        rows.append((str(int(term) + base), value, desc))
    return rows


# --- the library ----------------------------------------------------------------------

# (maker, short name, [(series, code prefix, [(type, [(code suffix, points, signal type,
#   description, rating, terminal rows)])])])
def digital_in_modules(prefix, sink):
    kind = "漏型" if sink else "源型"
    return [(f"{prefix}-DI{n}{'' if sink else 'P'}{v}", str(n), "DI",
             f"{n}点数字量输入,{kind}", "24VDC " + r, digital_in(n, g))
            for n, g, v, r in ((8, 8, "", "4mA"), (16, 8, "", "4mA"), (16, 16, "-H", "7mA"),
                               (32, 16, "", "4mA"), (32, 8, "-F", "4mA 高速"),
                               (64, 32, "", "3mA"), (8, 4, "-I", "7mA 隔离"))]


def digital_out_modules(prefix):
    return [(f"{prefix}-DO{n}{v}", str(n), "DO", f"{n}点晶体管输出", r, digital_out(n, g))
            for n, g, v, r in ((8, 8, "", "24VDC 0.5A"), (16, 8, "", "24VDC 0.5A"),
                               (16, 16, "-H", "24VDC 2A"), (32, 16, "", "24VDC 0.5A"),
                               (64, 32, "", "24VDC 0.1A"), (8, 4, "-P", "24VDC 2A 源型"),
                               (32, 8, "-S", "24VDC 0.5A 短路保护"))]


def relay_modules(prefix):
    return [(f"{prefix}-RO{n}{v}", str(n), "RO", f"{n}点继电器输出", r, relay_out(n, g))
            for n, g, v, r in ((8, 4, "", "230VAC 2A"), (8, 8, "-C", "230VAC 2A"),
                               (16, 4, "", "230VAC 2A"), (16, 8, "-H", "230VAC 5A"),
                               (8, 2, "-I", "230VAC 3A 隔离"), (16, 16, "-C", "125VAC 1A"),
                               (32, 8, "", "230VAC 2A"))]


def analog_in_modules(prefix):
    return [(f"{prefix}-AI{n}{v}", str(n), "AI", f"{n}通道模拟量输入,{bits}位", sig,
             analog_in(n, sig))
            for n, v, bits, sig in ((8, "", 12, "0-10V/4-20mA"), (8, "-U", 16, "±10V"),
                                    (16, "", 12, "4-20mA"), (16, "-H", 16, "0-10V/4-20mA"),
                                    (8, "-I", 16, "4-20mA 隔离"), (12, "", 14, "0-20mA"),
                                    (8, "-F", 12, "0-10V 快速"))]


def rtd_modules(prefix):
    return [(f"{prefix}-RTD{n}{v}", str(n), "AI", f"{n}通道热电阻输入", r, rtd_in(n))
            for n, v, r in ((8, "", "Pt100/Pt1000"), (8, "-N", "Ni100/Ni1000"),
                            (16, "", "Pt100"), (12, "-X", "Pt100 三线制"))]


def analog_out_modules(prefix):
    return [(f"{prefix}-AO{n}{v}", str(n), "AO", f"{n}通道模拟量输出", sig, analog_out(n, sig))
            for n, v, sig in ((8, "", "0-10V/4-20mA"), (8, "-U", "±10V"), (16, "", "4-20mA"),
                              (8, "-I", "4-20mA 隔离"), (12, "", "0-10V"),
                              (16, "-H", "0-10V/4-20mA 16位"))]


def mixed_modules(prefix):
    return [(f"{prefix}-DM{ni}{no}", str(ni + no), "DI/DO", f"{ni}入/{no}出数字量混合",
             "24VDC 0.5A", mixed(ni, no))
            for ni, no in ((8, 8), (16, 16), (16, 8), (32, 32), (24, 16))]


LIBRARY = [
    ("Norvik Controls", "NVK", [
        ("NX 10", "NX1", [("Digital input", digital_in_modules("NX1", True)),
                          ("Digital output", digital_out_modules("NX1")),
                          ("Analog input", analog_in_modules("NX1")),
                          ("RTD input", rtd_modules("NX1"))]),
        ("NX 20", "NX2", [("Digital input", digital_in_modules("NX2", False)),
                          ("Relay output", relay_modules("NX2")),
                          ("Mixed I-O", mixed_modules("NX2")),
                          ("Analog output", analog_out_modules("NX2"))]),
    ]),
    ("Haldane Automation", "HLA", [
        ("HA 300", "HA3", [("DI module", digital_in_modules("HA3", True)),
                           ("DO module", digital_out_modules("HA3")),
                           ("AO module", analog_out_modules("HA3"))]),
        ("HA 500", "HA5", [("AI module", analog_in_modules("HA5")),
                           ("RTD module", rtd_modules("HA5")),
                           ("Relay module", relay_modules("HA5")),
                           ("Counter module", [])]),
        ("HA 900", "HA9", []),
    ]),
    ("Tessaro Elettronica", "TSE", [
        ("T-Line", "TL", [("Ingressi digitali", digital_in_modules("TL", False)),
                          ("Uscite digitali", digital_out_modules("TL")),
                          ("Ingressi analogici", analog_in_modules("TL"))]),
        ("T-Line Compact", "TLC", [("Misto", mixed_modules("TLC")),
                                   ("Uscite rele", relay_modules("TLC"))]),
    ]),
    ("云岫自控", "YX", [
        ("YX-100", "YX1", [("数字量输入", digital_in_modules("YX1", True)),
                           ("数字量输出", digital_out_modules("YX1")),
                           ("模拟量输入", analog_in_modules("YX1"))]),
        ("YX-200", "YX2", [("模拟量输出", analog_out_modules("YX2")),
                           ("热电阻", rtd_modules("YX2")),
                           ("混合量", mixed_modules("YX2"))]),
    ]),
    ("Pellworth Instruments", "PWI", []),
]

MODULE_TABLE = ("(CODE CHAR(60) NOT NULL,POINTS  CHAR(60),TYPE CHAR(60),DESCRIPTION CHAR(60),"
                "RATING CHAR(60),primary key(CODE))")
TERM_TABLE = ("_data(CODE CHAR(60) NOT NULL,SEQUENCE int NOT NULL,TermValue CHAR(60),"
              "TERMDESC CHAR(60),DETAILTERMDESC MEMO,primary key(CODE,SEQUENCE))")


def main():
    emit("-- The bundled sample component library, written by generate_sample.py.")
    emit("-- One Access SQL statement per line; the build runs them into PLC/QvPLC.db.")
    for maker, short, series_list in LIBRARY:
        emit("INSERT INTO MANUFACTURER_simple VALUES (" + q(maker, short) + ")")
        if not series_list:
            emit("INSERT INTO PLC_MANUFACTURER VALUES (" + q(maker, "", "", "") + ")")
        for series, _prefix, types in series_list:
            if not types:
                emit("INSERT INTO PLC_MANUFACTURER VALUES (" + q(maker, series, "", "") + ")")
            for type_name, modules in types:
                table = table_name(maker, series, type_name)
                emit("INSERT INTO PLC_MANUFACTURER VALUES (" +
                     q(maker, series, type_name, table) + ")")
                emit("Create TABLE " + table + MODULE_TABLE)
                emit("Create TABLE " + table + TERM_TABLE)
                for code, points, kind, desc, rating, rows in modules:
                    emit("INSERT INTO " + table + " VALUES (" +
                         q(code, points, kind, desc, rating) + ")")
                    for seq, (value, tdesc, detail) in enumerate(rows, 1):
                        emit("INSERT INTO " + table + "_data VALUES (" + q(code) + "," +
                             str(seq) + "," + q(value, tdesc.split(" ")[0][:20], detail) + ")")
    sys.stdout.write("\n".join(LINES) + "\n")


if __name__ == "__main__":
    main()
