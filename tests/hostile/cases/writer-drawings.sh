# Hostile cases of the drawing writer: block references that expand without end, values no
# reader takes back, attributes through a round trip, and an application under two spellings.
# One line per case: "ok NAME" or "FAIL NAME: why". Always exits 0.

ok() { echo "ok $1"; }
fail() { echo "FAIL $1: $2"; }

# A local folder with the sample library, as a new user has it.
local_dir() {
    local dir="$QV_SCRATCH/$1"
    mkdir -p "$dir/PLC"
    if ! ZANDRIX_LOCAL_DIR="$dir" "$QVPLC" lib init --sample >/dev/null 2>&1; then
        cp "$QV_BUILD/local/PLC/QvPLC.db" "$dir/PLC/QvPLC.db"
    fi
    echo "$dir"
}

module="Norvik Controls/NX 10/Digital input/NX1-DI8"

# 1. Three references of a block to itself: rendering is refused at once, within bounded time
#    and memory, naming the block, and no picture is left behind.
case_self_nested() {
    local name=writer-self-nested-blocks-render
    local out="$QV_SCRATCH/nested.png" err="$QV_SCRATCH/nested.err"
    (ulimit -v 2000000; timeout 60 "$QVPLC" dxf render \
        "$QV_SRC/fuzz/corpus/regression-self-nested-blocks.dxf" "$out") 2>"$err" >/dev/null
    local rc=$?
    if [ $rc -eq 124 ]; then fail $name "still running after 60 s"; return; fi
    if [ $rc -eq 0 ]; then fail $name "rendered (exit 0)"; return; fi
    if ! grep -q 'block "SYMB" contains itself' "$err"; then
        fail $name "exit $rc without naming the block: $(head -c 200 "$err")"; return
    fi
    if [ -e "$out" ]; then fail $name "a picture was left behind"; return; fi
    ok $name
}

# 2. A module at 1e300: nothing is written, an existing drawing keeps every byte, and the
#    error says what is out of range.
case_far_coordinates() {
    local name=writer-coordinates-1e300-refused
    local dir; dir=$(local_dir far)
    local drawing="$dir/far.dxf" err="$dir/far.err"
    if ! ZANDRIX_LOCAL_DIR="$dir" "$QVPLC" draw "$module" --tag A1 --at 0,0 \
        --drawing "$drawing" >/dev/null 2>"$err"; then
        fail $name "the first draw failed: $(head -c 200 "$err")"; return
    fi
    local before; before=$(sha256sum <"$drawing")
    ZANDRIX_LOCAL_DIR="$dir" "$QVPLC" draw "$module" --tag A2 --at 1e300,0 \
        --drawing "$drawing" >/dev/null 2>"$err"
    local rc=$?
    if [ $rc -eq 0 ]; then fail $name "exit 0"; return; fi
    if [ "$(sha256sum <"$drawing")" != "$before" ]; then fail $name "the drawing changed"; return; fi
    if ! grep -qiE '1e\+?300|range' "$err"; then
        fail $name "exit $rc without a clear reason: $(head -c 200 "$err")"; return
    fi
    if ! "$QVPLC" dxf info "$drawing" >/dev/null 2>&1; then
        fail $name "the kept drawing no longer reads"; return
    fi
    ok $name
}

# 3. Attributes after a reference and after a reference with rows and columns survive
#    conversion to R14 and back to 2010.
case_attributes() {
    local name=writer-attributes-round-trip
    local src="$QV_SCRATCH/attribs.dxf"
    # Pairs of group code and value, one pair a line.
    tr ' ' '\n' >"$src" <<'DXF'
0 SECTION 2 HEADER 9 $ACADVER 1 AC1015 0 ENDSEC 0 SECTION 2 BLOCKS
0 BLOCK 8 0 2 TERM 70 2 10 0.0 20 0.0 30 0.0 3 TERM
0 ATTDEF 8 0 10 0.0 20 0.0 30 0.0 40 2.5 1 ? 3 number 2 NO 70 0
0 ENDBLK 8 0 0 ENDSEC 0 SECTION 2 ENTITIES
0 INSERT 8 0 66 1 2 TERM 10 5.0 20 5.0 30 0.0
0 ATTRIB 8 0 10 5.0 20 5.0 30 0.0 40 2.5 1 plain-one 2 NO 70 0
0 SEQEND 8 0
0 INSERT 8 0 100 AcDbMInsertBlock 66 1 2 TERM 10 50.0 20 5.0 30 0.0 70 3 71 2 44 10.0 45 20.0
0 ATTRIB 8 0 10 50.0 20 5.0 30 0.0 40 2.5 1 grid-one 2 NO 70 0
0 SEQEND 8 0
0 ENDSEC 0 EOF
DXF
    local r14="$QV_SCRATCH/attribs-r14.dxf" back="$QV_SCRATCH/attribs-2010.dxf"
    if ! "$QVPLC" dxf convert "$src" "$r14" --version R14 >/dev/null 2>"$QV_SCRATCH/a.err" ||
        ! "$QVPLC" dxf convert "$r14" "$back" --version 2010 >/dev/null 2>>"$QV_SCRATCH/a.err"; then
        fail $name "conversion failed: $(head -c 200 "$QV_SCRATCH/a.err")"; return
    fi
    for f in "$r14" "$back"; do
        for want in plain-one grid-one AcDbMInsertBlock; do
            if ! grep -q "^$want\$" "$f"; then fail $name "$want lost in $(basename "$f")"; return; fi
        done
        if [ "$(grep -c '^SEQEND$' "$f")" -ne 2 ] || [ "$(grep -c '^ATTRIB$' "$f")" -ne 2 ]; then
            fail $name "$(basename "$f") does not hold two ATTRIBs each with its SEQEND"; return
        fi
    done
    ok $name
}

# 4. A drawing saved as R14 and drawn into again: the version change is said on standard
#    error, and each application is registered once whatever its R14 spelling.
case_app_spellings() {
    local name=writer-one-application-per-spelling
    local dir; dir=$(local_dir apps)
    local drawing="$dir/apps.dxf" err="$dir/apps.err"
    if ! ZANDRIX_LOCAL_DIR="$dir" "$QVPLC" draw "$module" --tag A1 --at 0,0 --save-format 8 \
        --drawing "$drawing" >/dev/null 2>"$err" ||
        ! ZANDRIX_LOCAL_DIR="$dir" "$QVPLC" draw "$module" --tag A2 --at 200,0 \
            --drawing "$drawing" >/dev/null 2>"$err"; then
        fail $name "drawing failed: $(head -c 200 "$err")"; return
    fi
    if ! grep -q 'R14 (AC1014).*2010 (AC1024)' "$err"; then
        fail $name "the version change was not told: $(head -c 200 "$err")"; return
    fi
    # APPID records' names, as R14 would spell them, must all differ.
    local dups
    dups=$(awk 'prev=="APPID"{app=1} {gsub(/\r/,"")} app && prevcode=="  2"{print toupper($0); app=0}
                {prev=$0; prevcode=$0}' "$drawing" | tr ' ' '_' | sort | uniq -d)
    if [ -n "$dups" ]; then fail $name "registered twice: $dups"; return; fi
    if ! grep -q '^QV__GROUPPARTXRECT_TEXT$' "$drawing"; then
        fail $name "the application drawn as R14 is gone"; return
    fi
    ok $name
}

case_self_nested
case_far_coordinates
case_attributes
case_app_spellings
exit 0
