#!/usr/bin/env bash
# I/O lists and drawing sets as careless or hostile users give them: garbage, unclosed quotes,
# a folder or a FIFO for a list, numbers too large, an output folder that is a file, a
# project file with nonsense; each ends with a clear message and its exit code, never a crash.
set -u
S=$QV_SCRATCH
MODULE="Norvik Controls/NX 10/Digital input/NX1-DI16"
export LANG=C.UTF-8
unset LC_ALL LC_MESSAGES
export ZANDRIX_LOCAL_DIR=$S/local

ok() { echo "ok $1"; }
fail() { echo "FAIL $1: $2"; }
run() {
    local name=$1
    shift
    timeout 60 "$QVPLC" "$@" >"$S/$name.out" 2>"$S/$name.err"
}
# check NAME WANT TEXT: the last run ended with WANT and its stderr holds TEXT.
check() {
    local got=$4
    if [ "$got" -ne "$2" ]; then
        fail "$1" "exit code $got, expected $2; stderr: $(head -c 300 "$S/$1.err")"
    elif ! grep -qF -- "$3" "$S/$1.err"; then
        fail "$1" "stderr lacks '$3': $(head -c 300 "$S/$1.err")"
    else
        ok "$1"
    fi
}

"$QVPLC" lib init --sample >/dev/null 2>&1 || { fail batch-setup "lib init --sample"; exit 0; }

head -c 4096 /dev/urandom >"$S/garbage.csv"
run batch-garbage batch "$S/garbage.csv" --out "$S/out"
c=$?
check batch-garbage 3 "garbage.csv" $c

printf 'tag,rack,slot,module,channel,signal\nA1,0,1,"%s,1,open quote\n' "$MODULE" >"$S/quote.csv"
run batch-unclosed-quote batch "$S/quote.csv" --out "$S/out"
c=$?
check batch-unclosed-quote 3 "line 2: a quoted field is not closed" $c

mkdir -p "$S/folder.csv"
run batch-list-is-folder batch "$S/folder.csv" --out "$S/out"
c=$?
check batch-list-is-folder 3 "folder.csv" $c

mkfifo "$S/fifo.csv"
run batch-list-is-fifo batch "$S/fifo.csv" --out "$S/out"
c=$?
check batch-list-is-fifo 3 "fifo.csv" $c

printf 'tag,rack,slot,module,channel,signal\nA1,99999999999999999999,1,%s,1,x\n' "$MODULE" >"$S/big.csv"
run batch-huge-rack batch "$S/big.csv" --out "$S/out"
c=$?
check batch-huge-rack 3 "row 2, column rack" $c

printf 'tag,rack,slot,module,channel,signal\nA1,0,1,%s,1,x\n' "$MODULE" >"$S/good.csv"
: >"$S/file-not-folder"
run batch-out-is-file batch "$S/good.csv" --out "$S/file-not-folder"
c=$?
check batch-out-is-file 7 "file-not-folder: that is a file, not a folder" $c

printf 'form = binary\nstart.DI = -4\nslot.x.y = 1\n' >"$S/bad.ini"
run batch-bad-project batch "$S/good.csv" --project "$S/bad.ini" --out "$S/out"
c=$?
check batch-bad-project 3 "bad.ini: line 1, key form" $c

printf '0\nSECTION\n2\nENTITIES\n0\nLINE\n' >"$S/cut.dxf"
run check-cut-drawing check "$S/cut.dxf"
c=$?
check check-cut-drawing 3 "cut.dxf" $c
[ ! -e "$S/out/sheet-01.dxf" ] && ok batch-nothing-written || fail batch-nothing-written "a sheet was written"
