# Hostile values on the drawing side: options and settings-file values outside their ranges,
# a huge terminal range, symbol names that would leave SYMB2LIB, an unknown save format and
# pieces that cannot hold the module. Each case checks the exit code, the message on standard
# error and that no byte of the drawing or the settings file changed.
# Run by tests/hostile/run.sh with QVPLC, QV_SRC, QV_SCRATCH and QV_SHARE set.

MODULE='Norvik Controls/NX 10/Digital input/NX1-DI16'

# A fresh local folder with the sample library; prints its path.
new_local() {
    local dir="$QV_SCRATCH/$1"
    mkdir -p "$dir/PLC" "$dir/LocalData"
    if ! ZANDRIX_LOCAL_DIR="$dir" "$QVPLC" lib init --sample >/dev/null 2>&1 || [ ! -s "$dir/PLC/QvPLC.db" ]; then
        if [ -f "$QV_BUILD/local/PLC/QvPLC.db" ]; then
            cp "$QV_BUILD/local/PLC/QvPLC.db" "$dir/PLC/QvPLC.db"
        else
            sqlite3 "$dir/PLC/QvPLC.db" <"$QV_SRC/res/sample/QvPLC.sql" >/dev/null 2>&1
        fi
    fi
    echo "$dir"
}

# expect NAME CODE PATTERN FILE -- ARGS...: runs qvplc with ARGS; the exit code must be CODE,
# standard error must contain PATTERN (fixed text) and FILE must keep its bytes.
expect() {
    local name=$1 code=$2 pattern=$3 file=$4
    shift 5
    local before="" after="" err rc
    [ -e "$file" ] && before=$(sha256sum "$file")
    err=$(timeout 60 "$QVPLC" "$@" 2>&1 >/dev/null)
    rc=$?
    [ -e "$file" ] && after=$(sha256sum "$file")
    if [ "$rc" -ne "$code" ]; then
        echo "FAIL $name: exit $rc, expected $code: ${err//$'\n'/ }"
    elif [[ "$err" != *"$pattern"* ]]; then
        echo "FAIL $name: standard error lacks '$pattern': ${err//$'\n'/ }"
    elif [ "$before" != "$after" ]; then
        echo "FAIL $name: $file changed"
    else
        echo "ok $name"
    fi
}

export ZANDRIX_LOCAL_DIR
ZANDRIX_LOCAL_DIR=$(new_local options)
drawing="$ZANDRIX_LOCAL_DIR/cabinet.dxf"
"$QVPLC" draw "$MODULE" --tag K0 --at 0,0 --drawing "$drawing" >/dev/null 2>&1 ||
    echo "FAIL drawing-setup: the first module could not be drawn"

expect drawing-at-1e300 2 "coordinates must be finite and at most 1e100" "$drawing" -- \
    draw "$MODULE" --tag K1 --at 1e300,0 --drawing "$drawing"
expect drawing-at-nan 2 "coordinates must be finite" "$drawing" -- \
    draw "$MODULE" --tag K1 --at nan,0 --drawing "$drawing"
expect drawing-pieces-inf 2 "coordinates must be finite" "$drawing" -- \
    draw "$MODULE" --tag K1 --pieces 0,0:inf,0 --drawing "$drawing"
expect drawing-save-format-9 2 "--save-format takes 8, 12, 24, 36 or 48, not '9'" "$drawing" -- \
    draw "$MODULE" --tag K1 --at 0,0 --save-format 9 --drawing "$drawing"
expect drawing-symbol-dotdot 2 "without '/', not '../x'" "$drawing" -- \
    draw "$MODULE" --tag K1 --at 0,0 --symbol ../x --drawing "$drawing"
expect drawing-symbol-absolute 2 "not '/etc/passwd'" "$drawing" -- \
    draw "$MODULE" --tag K1 --at 0,0 --symbol /etc/passwd --drawing "$drawing"
# Bounded work: the range is checked against the module's rows, never expanded.
start=$(date +%s)
expect drawing-terminals-huge 1 "--terminals 1-2147483647: module NX1-DI16 has no terminal" \
    "$drawing" -- draw "$MODULE" --tag K1 --at 0,0 --terminals 1-2147483647 --drawing "$drawing"
[ $(($(date +%s) - start)) -le 10 ] || echo "FAIL drawing-terminals-huge-time: took over 10 s"
expect drawing-pieces-too-few 4 "Give one --pieces option per piece: --pieces X0,Y0:X1,Y1 --pieces" \
    "$drawing" -- draw "$MODULE" --tag K1 --pieces 0,0:40,0 --drawing "$drawing"
expect drawing-pieces-one-option 2 "each piece takes its own option" "$drawing" -- \
    draw "$MODULE" --tag K1 --pieces 0,0:40,0 60,0:100,0 --drawing "$drawing"
expect drawing-pieces-too-short 2 "it must be longer than 25" "$drawing" -- \
    draw "$MODULE" --tag K1 --pieces 0,0:25,0 --drawing "$drawing"

settings="$ZANDRIX_LOCAL_DIR/LocalData/PlcDrawSetting.dat"
printf '元件类型:1\n' >"$settings"
expect drawing-set-spacing-0 2 "termSpacing=0: termSpacing must be a real number above 0" \
    "$settings" -- settings set termSpacing=0
expect drawing-set-width-huge 2 "at most 1000000" "$settings" -- settings set typeWidth=1e309
expect drawing-set-symbol-dotdot 2 "without '/'" "$settings" -- settings set termSymbolName=../x

# A settings file holding values out of range: each is named with its file, the default is
# drawn with, and the file is left as it is.
for value in nan inf 1e309 -5 0; do
    ZANDRIX_LOCAL_DIR=$(new_local "file-$value")
    settings="$ZANDRIX_LOCAL_DIR/LocalData/PlcDrawSetting.dat"
    printf '元件类型:1\n端子A路径:SYMB2LIB/SYMB2_S_KTR5.dxf\n端子A名称:SYMB2_S_KTR5\n类型A宽度:%s\n端子间隔距离:%s\n' \
        "$value" "$value" >"$settings"
    drawing="$ZANDRIX_LOCAL_DIR/out.dxf"
    expect "drawing-file-spacing-$value" 0 "$settings: termSpacing=$value is outside its range" \
        "$settings" -- draw "$MODULE" --tag K2 --at 0,0 --drawing "$drawing"
    if [ ! -s "$drawing" ]; then
        echo "FAIL drawing-file-drawn-$value: no drawing written with the defaults"
    elif ! grep -q "typeWidth=$value is outside its range" <(
        "$QVPLC" settings show 2>&1 >/dev/null); then
        echo "FAIL drawing-file-width-$value: settings show does not name typeWidth=$value"
    else
        echo "ok drawing-file-drawn-$value"
    fi
done
# The values of a format chosen with --format are checked the same way.
ZANDRIX_LOCAL_DIR=$(new_local format-b)
settings="$ZANDRIX_LOCAL_DIR/LocalData/PlcDrawSetting.dat"
printf '元件类型:1\n端子B名称:SYMB2_S_KTR17\n类型B宽度:0\n端子B长度:1e309\n端子B方向:7\n' >"$settings"
expect drawing-format-b-width-0 0 "$settings: typeWidth=0 is outside its range" "$settings" -- \
    draw "$MODULE" --tag K3 --format 2 --at 0,0 --drawing "$ZANDRIX_LOCAL_DIR/out.dxf"
expect drawing-format-b-direction-7 0 "termDirection=7 is outside its range" "$settings" -- \
    draw "$MODULE" --tag K4 --format 2 --at 0,50 --drawing "$ZANDRIX_LOCAL_DIR/out.dxf"
exit 0
