#!/bin/bash
# Drawings from other programs and hostile drawings through every command that reads one:
# comments, R12, binary, writers' slips are read; damaged and hostile files end with the
# bad-input code 3 and a message, never a hang or a crash. One line per case.
CORPUS="$QV_SRC/tests/data/dxf-corpus"
S="$QV_SCRATCH/reader"
mkdir -p "$S"
export ZANDRIX_LOCAL_DIR="$S/local"
mkdir -p "$ZANDRIX_LOCAL_DIR"

ok() { echo "ok $1"; }
fail() { echo "FAIL $1: $2"; }

# run NAME TIMEOUT CMD...: runs with a time limit, leaves exit code in $rc, stderr in $S/err
run() {
    timeout "$1" "${@:2}" >"$S/out" 2>"$S/err"
    rc=$?
}

# A comment before the first section.
{ printf '999\nhello\n'; cat "$CORPUS/ezdxf-it-small_r14.dxf"; } >"$S/commented.dxf"
run 60 "$QVPLC" dxf info "$S/commented.dxf"
if [ $rc -eq 0 ] && grep -q '^version: AC1014' "$S/out"; then ok "reader: 999 comment before the first section"
else fail "reader: 999 comment before the first section" "exit $rc: $(head -c 300 "$S/err")"; fi

# R12 converted to R14: a file of the later version.
run 60 "$QVPLC" dxf convert "$CORPUS/ezdxf-it-ASCII_R12.dxf" "$S/r12-r14.dxf" --version R14
if [ $rc -eq 0 ] && grep -q 'AC1014' "$S/r12-r14.dxf" && grep -q 'AcDbEntity' "$S/r12-r14.dxf"; then
    ok "reader: R12 drawing converted to R14"
else fail "reader: R12 drawing converted to R14" "exit $rc: $(head -c 300 "$S/err")"; fi

# Binary DXF read; cut short, refused with the byte offset.
run 60 "$QVPLC" dxf info "$CORPUS/ezdxf-it-bin_dxf_r2000.dxf"
if [ $rc -eq 0 ] && grep -q '^version: AC1015' "$S/out"; then ok "reader: binary DXF read"
else fail "reader: binary DXF read" "exit $rc: $(head -c 300 "$S/err")"; fi
head -c 5000 "$CORPUS/ezdxf-it-bin_dxf_r2000.dxf" >"$S/cut.dxf"
run 60 "$QVPLC" dxf convert "$S/cut.dxf" "$S/cut-out.dxf" --version 2010
if [ $rc -eq 3 ] && grep -q 'byte offset' "$S/err" && [ ! -e "$S/cut-out.dxf" ]; then
    ok "reader: truncated binary DXF refused with its offset"
else fail "reader: truncated binary DXF refused with its offset" "exit $rc: $(head -c 300 "$S/err")"; fi

# A handle group holding text: repaired and reported.
sed '0,/^LINE$/s//LINE\n  5\nnot-hex/' "$QV_SRC/fuzz/corpus/new_r2000.dxf" >"$S/slip.dxf"
run 60 "$QVPLC" dxf info "$S/slip.dxf"
if [ $rc -eq 0 ] && grep -q 'not-hex", which is not a handle' "$S/out"; then
    ok "reader: text in a handle group repaired and reported"
else fail "reader: text in a handle group repaired and reported" "exit $rc: $(head -c 300 "$S/err")"; fi

# Real files of other writers cut short at a third and two thirds, ASCII and binary.
mkdir -p "$S/cuts"
for f in ezdxf-it-ASCII_R12.dxf ezdxf-it-bin_dxf_r12.dxf ezdxf-it-bin_dxf_r14.dxf dxfparser-mleader.dxf; do
    size=$(stat -c %s "$CORPUS/$f")
    head -c $((size / 3)) "$CORPUS/$f" >"$S/cuts/third-$f"
    head -c $((size * 2 / 3)) "$CORPUS/$f" >"$S/cuts/two-thirds-$f"
done

# Hostile drawings through info, convert and render: exit 0 or 3, within the time limit.
for f in "$QV_SRC"/fuzz/corpus/* "$S/cut.dxf" "$S"/cuts/*; do
    name="reader: hostile $(basename "$f")"
    bad=""
    for cmd in info convert render; do
        case $cmd in
            info) run 20 "$QVPLC" dxf info "$f" ;;
            convert) run 20 "$QVPLC" dxf convert "$f" "$S/h.dxf" --version R14 ;;
            render) run 20 "$QVPLC" dxf render "$f" "$S/h.png" --width 200 ;;
        esac
        if [ $rc -ne 0 ] && [ $rc -ne 3 ]; then bad="$bad $cmd exited $rc;"; fi
        if [ $rc -eq 3 ] && [ ! -s "$S/err" ]; then bad="$bad $cmd gave no message;"; fi
    done
    if [ -z "$bad" ]; then ok "$name"; else fail "$name" "$bad $(head -c 200 "$S/err")"; fi
done
exit 0
