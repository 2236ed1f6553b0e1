"""Writes, with ezdxf, a drawing holding entities and objects the drawing database does not
model (hatch, spline, dimension with style overrides, multileader, image with its definition,
ellipse, old-style polyline, mesh of extra tags), plus modelled ones with unusual tags
(thickness, lineweight, linetype), a reference with rows, columns and an attribute, and an
MTEXT with columns.

Usage: make_foreign.py OUT.dxf VERSION   (VERSION as ezdxf names it: R2000, R2010, ...)
"""
import sys

import ezdxf
from ezdxf.math import Vec2
from ezdxf.render import mleader


def main():
    out, version = sys.argv[1], sys.argv[2]
    doc = ezdxf.new(version, setup=True)
    msp = doc.modelspace()
    doc.appids.new("QV_FOREIGN")
    doc.layers.add("PARTS", color=3)
    hatch = msp.add_hatch(color=2)
    hatch.paths.add_polyline_path([(0, 0), (10, 0), (10, 10), (0, 10)])
    msp.add_spline([(0, 0), (3, 5), (6, -2), (10, 4)])
    dim = msp.add_linear_dim(base=(0, 20), p1=(0, 0), p2=(10, 0))
    dim.render()
    image_def = doc.add_image_def(filename="plc.png", size_in_pixel=(64, 32))
    msp.add_image(image_def, insert=(20, 0), size_in_units=(6.4, 3.2))
    msp.add_ellipse((0, 30), major_axis=(5, 0), ratio=0.5)
    msp.add_polyline2d([(0, 40), (5, 45), (10, 40)])
    line = msp.add_line((0, 50), (10, 55), dxfattribs={"layer": "PARTS", "thickness": 2.5, "lineweight": 35,
                                                         "linetype": "DASHED"})
    line.set_xdata("QV_FOREIGN", [(1000, "kept"), (1040, 2.25), (1070, 7), (1071, 70000),
                                  (1010, (1.0, 2.0, 3.0)), (1005, hatch.dxf.handle)])
    msp.add_text("外来 text", dxfattribs={"height": 3, "layer": "PARTS"}).set_placement(
        (0, 60), align=ezdxf.enums.TextEntityAlignment.MIDDLE_CENTER)
    block = doc.blocks.new("FOREIGN_BLOCK")
    block.add_circle((0, 0), 2)
    block.add_attdef("TAG", (0, 3), dxfattribs={"height": 1.5})
    ref = msp.add_blockref("FOREIGN_BLOCK", (30, 30), dxfattribs={"rotation": 30})
    ref.add_attrib("TAG", "value", (30, 33))
    grid = msp.add_blockref("FOREIGN_BLOCK", (60, 30))
    grid.grid(size=(3, 2), spacing=(7, 4))
    grid.add_attrib("TAG", "in a grid", (60, 33))
    overridden = msp.add_linear_dim(base=(0, 80), p1=(0, 70), p2=(10, 70),
                                    override={"dimtxt": 4.5, "dimclrt": 3})
    overridden.render()
    leader = msp.add_multileader_mtext("Standard")
    leader.set_content("leader text")
    leader.add_leader_line(mleader.ConnectionSide.left, [(40, 60)])
    leader.build(Vec2(45, 65))
    msp.add_mtext_static_columns(["first column", "second column"], width=20, gutter_width=2,
                                 height=30, dxfattribs={"insert": (0, 100)})
    xdict = doc.rootdict.get_required_dict("QV_DWG_DICITIONARY")
    xrec = doc.objects.add_xrecord(xdict.dxf.handle)
    xrec.reset([(1, "C:/plc/location"), (40, 1.5)])
    xdict["QV_LOCATION_XRECORD"] = xrec
    doc.saveas(out)


if __name__ == "__main__":
    main()
