"""Writes a terminal symbol with ezdxf: a square terminal, a lead to (x, y) and the red dot
marker at the lead's end. Usage: make_symbol.py OUT.dxf X Y"""
import sys

import ezdxf


def main(out, x, y):
    doc = ezdxf.new("R2010")
    msp = doc.modelspace()
    msp.add_lwpolyline([(-1, -1), (1, -1), (1, 1), (-1, 1)], close=True)
    msp.add_line((0, 0), (x, y))
    dot = msp.add_lwpolyline([(x - 0.2, y, 0, 0, 1.0), (x + 0.2, y, 0, 0, 1.0)],
                             format="xyseb", close=True)
    dot.dxf.color = 1
    doc.saveas(out)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], float(sys.argv[2]), float(sys.argv[3])))
