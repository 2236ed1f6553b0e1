"""Writes one small drawing per entity kind with ezdxf. Usage: make_entities.py OUTDIR"""
import math
import sys

import ezdxf


def save(name, build):
    doc = ezdxf.new("R2010")
    build(doc, doc.modelspace())
    doc.saveas(f"{sys.argv[1]}/{name}.dxf")


def hatch_square(msp, color, solid=True):
    h = msp.add_hatch(color=color)
    if not solid:
        h.set_pattern_fill("ANSI31", scale=0.5)
    h.paths.add_polyline_path([(0, 0), (10, 0), (10, 10), (0, 10)], is_closed=True)
    return h


def wipeout(doc, msp):
    hatch_square(msp, 1)
    msp.add_wipeout([(4, 4), (6, 4), (6, 6), (4, 6)])


def dimension(doc, msp):
    msp.add_line((0, 0), (10, 0))
    msp.add_linear_dim(base=(0, 5), p1=(0, 0), p2=(10, 0)).render()


def round_hatch(doc, msp):
    h = msp.add_hatch(color=3)
    path = h.paths.add_edge_path()
    path.add_arc((0, 0), 4, 0, 180)
    path.add_line((-4, 0), (4, 0))


save("ellipse", lambda d, m: m.add_ellipse((1, 2), major_axis=(4, 0), ratio=0.5))
save("ellipse_arc", lambda d, m: m.add_ellipse((0, 0), major_axis=(0, 4), ratio=0.5,
                                               start_param=0, end_param=math.pi))
save("spline", lambda d, m: m.add_spline_control_frame([(0, 0), (3, 4), (6, -2), (10, 1)]))
save("nurbs", lambda d, m: m.add_rational_spline(
    [(1, 0), (1, 1), (0, 1)], [1, math.sqrt(0.5), 1], degree=2, knots=[0, 0, 0, 1, 1, 1]))
save("polyline2d", lambda d, m: m.add_polyline2d(
    [(0, 0, 0, 0, 1), (10, 0, 0, 0, 0)], format="xyseb"))
save("polyline3d", lambda d, m: m.add_polyline3d([(0, 0, 0), (5, 5, 5), (10, 0, 2)]))
save("polyface", lambda d, m: m.add_polyface().append_face([(0, 0), (4, 0), (4, 3)]))
def mesh(doc, msp):
    m = msp.add_polymesh(size=(3, 3))
    for i in range(3):
        for j in range(3):
            m.set_mesh_vertex((i, j), (i, j, 0))


save("mesh", mesh)
save("hatch_solid", lambda d, m: hatch_square(m, 1))
save("hatch_pattern", lambda d, m: hatch_square(m, 1, solid=False))
save("hatch_arc", round_hatch)
save("solid", lambda d, m: m.add_solid([(0, 0), (10, 0), (0, 10), (10, 10)], dxfattribs={"color": 1}))
save("face", lambda d, m: m.add_3dface([(0, 0, 0), (10, 0, 0), (10, 10, 0), (0, 10, 0)],
                                       dxfattribs={"invisible": 1}))
save("leader", lambda d, m: m.add_leader([(0, 0), (10, 10), (20, 10)]))
save("xline", lambda d, m: (m.add_line((0, 0), (10, 10)), m.add_xline((5, 0), (0, 1)),
                            m.add_ray((0, 5), (1, 0))))
save("wipeout", wipeout)
save("dimension", dimension)
