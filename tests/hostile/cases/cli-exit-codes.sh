#!/usr/bin/env bash
# The command line as a script uses it: one exit-code table, one message form, what escapes a
# command caught at the top, lib init, unknown options, the English catalogue.
set -u
S=$QV_SCRATCH
MODULE="Norvik Controls/NX 10/Digital input/NX1-DI16"
export LANG=C.UTF-8
unset LC_ALL LC_MESSAGES

ok() { echo "ok $1"; }
fail() { echo "FAIL $1: $2"; }
# run NAME ARGS...: qvplc with stdout and stderr kept in $S/NAME.out and $S/NAME.err; $? is
# qvplc's exit code.
run() {
    local name=$1
    shift
    "$QVPLC" "$@" >"$S/$name.out" 2>"$S/$name.err"
}
expect_code() {  # CASE WANT GOT
    [ "$3" -eq "$2" ] && return 0
    fail "$1" "exit code $3, expected $2; stderr: $(head -c 300 "$S/$1.err")"
    return 1
}
has() { grep -qF -- "$2" "$S/$1.err"; }

export ZANDRIX_LOCAL_DIR=$S/local
mkdir -p "$ZANDRIX_LOCAL_DIR"

run cli-version --version
c=$?
if expect_code cli-version 0 $c; then
    if grep -qE '^qvplc [0-9]+\.[0-9]+' "$S/cli-version.out" && [ ! -s "$S/cli-version.err" ]; then
        ok cli-version
    else
        fail cli-version "stdout '$(cat "$S/cli-version.out")', stderr '$(cat "$S/cli-version.err")'"
    fi
fi

run cli-unknown-option lib tree --bogus
c=$?
if expect_code cli-unknown-option 2 $c; then
    if [ "$(head -1 "$S/cli-unknown-option.err")" = "qvplc lib: unknown option --bogus" ]; then
        ok cli-unknown-option
    else
        fail cli-unknown-option "first line: $(head -1 "$S/cli-unknown-option.err")"
    fi
fi

run cli-no-library lib tree
c=$?
if expect_code cli-no-library 3 $c; then
    has cli-no-library "make one with 'qvplc lib init'" && ok cli-no-library ||
        fail cli-no-library "the error does not say how to make a library"
fi

run cli-lib-init lib init --sample
c=$?
if expect_code cli-lib-init 0 $c; then
    cp "$ZANDRIX_LOCAL_DIR/PLC/QvPLC.db" "$S/kept.db"
    run cli-lib-init-again lib init
    c=$?
    if [ $c -ne 1 ]; then
        fail cli-lib-init "a second lib init exited with $c, expected 1"
    elif ! cmp -s "$S/kept.db" "$ZANDRIX_LOCAL_DIR/PLC/QvPLC.db"; then
        fail cli-lib-init "a second lib init changed the library"
    elif ! "$QVPLC" lib tree 2>/dev/null | grep -q '^  Norvik Controls$'; then
        fail cli-lib-init "the sample library does not list its manufacturer"
    else
        ok cli-lib-init
    fi
fi

run cli-cancelled draw "$MODULE" --tag A1 --pieces 0,0:40,0 --drawing "$S/cancelled.dxf"
c=$?
if expect_code cli-cancelled 4 $c; then
    [ ! -e "$S/cancelled.dxf" ] && ok cli-cancelled || fail cli-cancelled "a drawing was written"
fi

# Too few pieces: the error says how many the module needs, and that many are enough.
run cli-pieces-count draw "$MODULE" --tag A1 --pieces 0,0:40,0 --drawing "$S/pieces.dxf"
c=$?
needed=$(sed -n 's/^qvplc draw: .* so it needs [0-9]* more, \([0-9]*\) in all\. Give one --pieces option per piece.*$/\1/p' "$S/cli-pieces-count.err")
if expect_code cli-pieces-count 4 $c; then
    if [ -z "$needed" ]; then
        fail cli-pieces-count "no count of the pieces needed: $(head -c 300 "$S/cli-pieces-count.err")"
    else
        pieces=()
        for i in $(seq 0 $((needed - 1))); do pieces+=(--pieces "0,$((-50 * i)):40,$((-50 * i))"); done
        if "$QVPLC" draw "$MODULE" --tag A1 "${pieces[@]}" --drawing "$S/pieces.dxf" 2>/dev/null; then
            ok cli-pieces-count
        else
            fail cli-pieces-count "$needed pieces, as the error said, do not draw the module"
        fi
    fi
fi

python3 -c "
import sqlite3, time, pathlib
c = sqlite3.connect('$ZANDRIX_LOCAL_DIR/PLC/QvPLC.db', isolation_level=None)
c.execute('BEGIN EXCLUSIVE')
pathlib.Path('$S/locked').touch()
time.sleep(60)" &
holder=$!
for _ in $(seq 100); do [ -e "$S/locked" ] && break; sleep 0.1; done
run cli-locked-library lib tree
c=$?
run cli-locked-library-draw draw "$MODULE" --tag A1 --at 0,0 --drawing "$S/locked.dxf"
c2=$?
kill $holder 2>/dev/null
wait $holder 2>/dev/null
if expect_code cli-locked-library 5 $c && expect_code cli-locked-library-draw 5 $c2; then
    has cli-locked-library "is in use by another program" && ok cli-locked-library ||
        fail cli-locked-library "the message does not say the library is in use"
fi

# Paths that used to abort the program: each gets a message with the path's reason and the
# file-system exit code.
long=$S/$(printf 'y%.0s' $(seq 300)).dxf
run cli-long-file-name draw "$MODULE" --tag A1 --at 0,0 --drawing "$long"
c=$?
if expect_code cli-long-file-name 7 $c; then
    has cli-long-file-name "too long" && ok cli-long-file-name ||
        fail cli-long-file-name "no reason given"
fi
ln -s "$S/loop-b" "$S/loop-a"
ln -s "$S/loop-a" "$S/loop-b"
run cli-symlink-loop draw "$MODULE" --tag A1 --at 0,0 --drawing "$S/loop-a/x.dxf"
c=$?
if expect_code cli-symlink-loop 3 $c; then
    has cli-symlink-loop "link loop" && ok cli-symlink-loop ||
        fail cli-symlink-loop "no reason given"
fi
ZANDRIX_LOCAL_DIR=$S/$(printf 'x%.0s' $(seq 300)) run cli-long-local-dir lib tree
c=$?
if [ $c -eq 134 ] || [ $c -eq 70 ]; then
    fail cli-long-local-dir "exit code $c: the program aborted or failed inside"
elif ! grep -q '^qvplc lib: ' "$S/cli-long-local-dir.err"; then
    fail cli-long-local-dir "no message: $(head -c 300 "$S/cli-long-local-dir.err")"
else
    ok cli-long-local-dir
fi

# Standard output holds results only; every line on standard error has the one prefix form.
bad_lines=$(cat "$S"/*.err | grep -vE "^(qvplc (lib|draw|dxf|settings): .+|usage: .+|Try 'qvplc .+)$")
quiet_failures=$(for f in "$S"/cli-no-library.out "$S"/cli-cancelled.out "$S"/cli-locked-library.out; do
    [ -s "$f" ] && echo "$f"; done)
if [ -n "$bad_lines" ]; then
    fail cli-message-form "lines without the prefix: $(head -3 <<<"$bad_lines")"
elif [ -n "$quiet_failures" ]; then
    fail cli-message-form "failing commands wrote to standard output: $quiet_failures"
else
    ok cli-message-form
fi

LANG=en_US.UTF-8 run cli-english lib tree --library "$S/none.db"
has cli-english "错误：PLC元件数据库文件$S/none.db不存在！ (Error: the PLC component library file $S/none.db does not exist!)" &&
    ok cli-english || fail cli-english "no English translation: $(head -c 300 "$S/cli-english.err")"
exit 0
