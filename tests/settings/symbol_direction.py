"""Says in which direction a terminal symbol's lead leaves it, read independently with ezdxf.

The terminal marker is the red closed two-vertex polyline at the free end of the terminal; the
rest of the visible drawing (entities on layers that are on) lies behind it. The direction
shown is the main axis of the way from the centre of that rest's bounding box to the marker:
0 up, 1 down, 2 right, 3 left. For each file named prints "<direction> <marker count> <file>",
or "none <count> <file>" without exactly one marker.
"""
import sys

import ezdxf
from ezdxf import bbox


def shown(path):
    doc = ezdxf.readfile(path)
    msp = doc.modelspace()
    markers = [e for e in msp.query("LWPOLYLINE")
               if e.closed and len(e) == 2 and e.dxf.color == 1]
    if len(markers) != 1:
        return "none %d" % len(markers)
    points = markers[0].get_points("xy")
    mx = (points[0][0] + points[1][0]) / 2
    my = (points[0][1] + points[1][1]) / 2
    hidden = {layer.dxf.name.upper() for layer in doc.layers if layer.dxf.color < 0}
    rest = [e for e in msp if e is not markers[0] and e.dxf.layer.upper() not in hidden]
    box = bbox.extents(rest)
    if not box.has_data:
        return "none 1"
    dx = mx - box.center.x
    dy = my - box.center.y
    if abs(dx) >= abs(dy):
        return "%d 1" % (2 if dx >= 0 else 3)
    return "%d 1" % (0 if dy >= 0 else 1)


def main(paths):
    for path in paths:
        print(shown(path), path)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
