#!/usr/bin/env bash
# Replays every hostile case: runs each tests/hostile/cases/*.sh in name order, each in a fresh
# scratch folder, with the built program and its resources in the environment:
#   QVPLC      the built qvplc          QV_SRC     the source tree
#   QV_BUILD   the build tree           QV_SCRATCH the case file's own empty folder
#   QV_SHARE   the build's share/zandrix, also given as ZANDRIX_COMMON_DIR
# A case file prints "ok NAME" or "FAIL NAME: why" per case. This prints them, then
# "hostile: N passed, N failed", and fails when any case failed or a case file broke.
#   run.sh [BUILD_DIR] [PATTERN]   (default: build/ of the source tree, every case file)
set -u
src=$(cd "$(dirname "$0")/../.." && pwd)
build=$(cd "${1:-$src/build}" && pwd) || exit 2
pattern=${2:-*}
export QVPLC="$build/bin/qvplc" QV_SRC="$src" QV_BUILD="$build"
export QV_SHARE="$build/share/zandrix" ZANDRIX_COMMON_DIR="$build/share/zandrix"
[ -x "$QVPLC" ] || { echo "hostile: $QVPLC is not built" >&2; exit 2; }

passed=0
failed=0
for file in "$src"/tests/hostile/cases/$pattern.sh; do
    [ -e "$file" ] || continue
    name=$(basename "$file" .sh)
    scratch=$(mktemp -d "${TMPDIR:-/tmp}/hostile-$name.XXXXXX")
    output=$(cd "$scratch" && QV_SCRATCH="$scratch" bash "$file" 2>"$scratch.stderr")
    status=$?
    while IFS= read -r line; do
        case $line in
            ok\ *) passed=$((passed + 1)); echo "$line" ;;
            FAIL\ *) failed=$((failed + 1)); echo "$line" ;;
            *) [ -n "$line" ] && echo "  ($name) $line" ;;
        esac
    done <<<"$output"
    if [ $status -ne 0 ]; then
        failed=$((failed + 1))
        echo "FAIL $name: the case file itself exited with $status"
        sed 's/^/  /' "$scratch.stderr" | tail -5
    fi
    chmod -R u+rwX "$scratch" 2>/dev/null
    rm -rf "$scratch" "$scratch.stderr"
done
echo "hostile: $passed passed, $failed failed"
[ $failed -eq 0 ]
