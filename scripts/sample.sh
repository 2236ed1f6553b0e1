#!/usr/bin/env bash
# The main job on the bundled sample library, run from a finished build.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${QV_BUILD_DIR:-build}
export ZANDRIX_LOCAL_DIR="$PWD/$build/local"
export ZANDRIX_COMMON_DIR="$PWD/$build/share/zandrix"
"$build/bin/qvplc" lib tree
