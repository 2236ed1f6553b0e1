#!/usr/bin/env bash
# Runs every benchmark of a finished build; each prints its figures and the ratio against the
# baseline it measures in the same run.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${QV_BUILD_DIR:-build}
status=0
for b in "$build"/bench/bench_*; do
    [ -x "$b" ] || continue
    echo "== $(basename "$b")"
    "$b" || status=1
done
exit $status
