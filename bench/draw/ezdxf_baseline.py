"""Baseline for bench_draw: writes the entities listed in a description file with ezdxf.

Usage: ezdxf_baseline.py DESCRIPTION OUT.dxf REPEAT

The description (written by bench_draw from its own drawing) lists layers, applications,
block definitions and model-space entities with their extended data, one per line,
tab-separated. Reading it is not timed; creating the document, its entities and links and
saving it is, REPEAT times, in processor time. Prints the median seconds of one run.
"""
import sys
import time

import ezdxf


def parse(path):
    records = []
    with open(path, encoding="utf-8") as f:
        for line in f:
            records.append(line.rstrip("\n").split("\t"))
    return records


def build(records, out):
    doc = ezdxf.new("R2010")
    msp = doc.modelspace()
    layout = msp
    made = {}
    links = []
    for r in records:
        kind = r[0]
        if kind == "LAYER":
            if r[1] not in doc.layers:
                doc.layers.add(r[1])
        elif kind == "APPID":
            if r[1] not in doc.appids:
                doc.appids.new(r[1])
        elif kind == "BLOCK":
            layout = doc.blocks.new(r[1]) if r[1] not in doc.blocks else doc.blocks.get(r[1])
        elif kind == "ENDBLOCK":
            layout = msp
        elif kind == "LINE":
            made[r[1]] = layout.add_line((float(r[2]), float(r[3])), (float(r[4]), float(r[5])),
                                         dxfattribs={"color": int(r[6]), "layer": r[7]})
        elif kind == "CIRCLE":
            made[r[1]] = layout.add_circle((float(r[2]), float(r[3])), float(r[4]),
                                           dxfattribs={"color": int(r[5]), "layer": r[6]})
        elif kind == "POINT":
            made[r[1]] = layout.add_point((float(r[2]), float(r[3])), dxfattribs={"layer": r[4]})
        elif kind == "LWPOLY":
            values = [float(v) for v in r[6:]]
            points = [(values[i], values[i + 1], 0, 0, values[i + 2])
                      for i in range(0, len(values), 3)]
            made[r[1]] = layout.add_lwpolyline(points, format="xyseb", close=r[2] == "1",
                                               dxfattribs={"color": int(r[3]), "layer": r[4]})
        elif kind == "TEXT":
            t = layout.add_text(r[13], dxfattribs={
                "insert": (float(r[2]), float(r[3])), "align_point": (float(r[4]), float(r[5])),
                "height": float(r[6]), "rotation": float(r[7]), "width": float(r[8]),
                "halign": int(r[9]), "valign": int(r[10]), "color": int(r[11]), "layer": r[12]})
            made[r[1]] = t
        elif kind == "MTEXT":
            made[r[1]] = layout.add_mtext(r[9], dxfattribs={
                "insert": (float(r[2]), float(r[3])), "char_height": float(r[4]),
                "rotation": float(r[5]), "attachment_point": int(r[6]), "color": int(r[7]),
                "layer": r[8]})
        elif kind == "INSERT":
            made[r[1]] = layout.add_blockref(r[2], (float(r[3]), float(r[4])), dxfattribs={
                "xscale": float(r[5]), "yscale": float(r[6]), "rotation": float(r[7])})
        elif kind == "XDATA":
            links.append(r)
    groups = {}
    for r in links:
        entity = made[r[1]]
        code = int(r[3])
        value = (made[r[4]].dxf.handle if r[4] in made else "0") if code == 1005 else r[4]
        groups.setdefault((r[1], r[2]), (entity, []))[1].append((code, value))
    for (_, app), (entity, items) in groups.items():
        entity.set_xdata(app, items)
    doc.saveas(out)


def main():
    records = parse(sys.argv[1])
    repeat = int(sys.argv[3])
    times = []
    for _ in range(repeat):
        start = time.process_time()
        build(records, sys.argv[2])
        times.append(time.process_time() - start)
    times.sort()
    print("%.6f" % times[len(times) // 2])


main()
