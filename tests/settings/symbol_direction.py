"""Says in which direction a terminal symbol's lead leaves it, read independently with ezdxf.

The terminal marker is the red closed two-vertex polyline; the direction shown is the side of
the drawing's bounding box that the marker lies nearest to: 0 up, 1 down, 2 right, 3 left.
Prints "<direction> <marker count>", or "none <marker count>" without exactly one marker.
"""
import sys

import ezdxf
from ezdxf import bbox


def main(path):
    doc = ezdxf.readfile(path)
    msp = doc.modelspace()
    markers = [e for e in msp.query("LWPOLYLINE")
               if e.closed and len(e) == 2 and e.dxf.color == 1]
    if len(markers) != 1:
        print("none", len(markers))
        return 0
    points = markers[0].get_points("xy")
    mx = (points[0][0] + points[1][0]) / 2
    my = (points[0][1] + points[1][1]) / 2
    box = bbox.extents(msp)
    gaps = [box.extmax.y - my, my - box.extmin.y, box.extmax.x - mx, mx - box.extmin.x]
    print(gaps.index(min(gaps)), 1)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
