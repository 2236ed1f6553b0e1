#!/usr/bin/env bash
# The main job on the bundled sample library, run from a finished build: list the library,
# then draw one module of it into <build>/sample.dxf and render that to <build>/sample.png.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${QV_BUILD_DIR:-build}
export ZANDRIX_LOCAL_DIR="$PWD/$build/local"
export ZANDRIX_COMMON_DIR="$PWD/$build/share/zandrix"
"$build/bin/qvplc" lib tree
# A fresh drawing each run: drawing into an existing file adds the module to it.
rm -f "$build/sample.dxf"
"$build/bin/qvplc" draw "Norvik Controls/NX 10/Digital input/NX1-DI16" \
    --tag A1 --frame 0 --slot 2 --pattern 105 --at 0,0 \
    --drawing "$build/sample.dxf" --png "$build/sample.png"
echo "drawn: $build/sample.dxf, picture: $build/sample.png"
