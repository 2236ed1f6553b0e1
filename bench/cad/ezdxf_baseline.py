"""The baseline of bench_cad: ezdxf builds, writes and reads the same drawing.

Usage: ezdxf_baseline.py COUNT DIR
Prints "ezdxf write <wall seconds> <cpu seconds>" and the same for "ezdxf read": on a
shared machine the processor time is the steadier figure.
"""
import os
import sys
import time

import ezdxf


def main():
    count, folder = int(sys.argv[1]), sys.argv[2]
    doc = ezdxf.new("R2010")
    doc.appids.new("QV_SYMB2_LABEL")
    msp = doc.modelspace()
    previous = "0"
    for i in range(count):
        if i % 2:
            e = msp.add_text(f"X{i}", dxfattribs={"height": 2.0, "insert": (i, 0)})
        else:
            e = msp.add_line((i, 0), (i, 10))
        e.set_xdata("QV_SYMB2_LABEL", [(1000, "1"), (1005, previous), (1040, i * 0.5)])
        previous = e.dxf.handle
    path = os.path.join(folder, "ezdxf_bench.dxf")
    start, cpu = time.perf_counter(), time.process_time()
    doc.saveas(path)
    print(f"ezdxf write {time.perf_counter() - start:.4f} {time.process_time() - cpu:.4f}")
    start, cpu = time.perf_counter(), time.process_time()
    back = ezdxf.readfile(path)
    print(f"ezdxf read {time.perf_counter() - start:.4f} {time.process_time() - cpu:.4f}")
    assert len(back.modelspace()) == count


if __name__ == "__main__":
    main()
