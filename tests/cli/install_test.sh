#!/usr/bin/env bash
# cmake --install into a scratch DESTDIR, then checks what a user gets: the program, its
# resources, the English catalogue, a well-formed manual page and bash completion, and the
# installed program working on the sample with resources found beside it (the installed tree
# is moved first, so no path of the build or of the install prefix can stand in).
set -u
build=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

DESTDIR="$scratch/dest" cmake --install "$build" --prefix /opt/qvplc >"$scratch/install.log" 2>&1 ||
    { cat "$scratch/install.log"; echo "FAIL: cmake --install"; exit 1; }
mv "$scratch/dest/opt/qvplc" "$scratch/moved"
root="$scratch/moved"

for f in bin/qvplc share/zandrix/SYMB2LIB/SYMB2_S_KTR5.dxf share/zandrix/Data/PLCType_A.dxf \
         share/zandrix/sample/QvPLC.sql share/locale/en/LC_MESSAGES/qvplc.mo \
         share/man/man1/qvplc.1 share/bash-completion/completions/qvplc; do
    [ -s "$root/$f" ] || fail "$f is not installed"
done

# The desktop program and its plug-in library, in the library folder it looks in.
[ -x "$root/bin/qvplc-desktop" ] || fail "bin/qvplc-desktop is not installed"
ls "$root"/lib*/qvplc/qvplc_plugin.so "$root"/lib/*/qvplc/qvplc_plugin.so 2>/dev/null | grep -q . ||
    fail "the plug-in qvplc_plugin.so is not installed"

# The manual page: made from --help, so it lists the groups, every command and the exit
# codes; groff reads it without a warning.
man1="$root/share/man/man1/qvplc.1"
if [ -s "$man1" ]; then
    grep -q '^\.TH QVPLC "1"' "$man1" || fail "the manual page has no .TH header"
    for word in 'lib init' 'Exit codes' 'ZANDRIX_LOCAL_DIR' 'ENVIRONMENT' '.SS "qvplc draw"' \
                '.SS "qvplc dxf render"' '\-\-pieces' '(完整绘制)' '.SS "qvplc lib term reorder"' \
                '.SS "qvplc lib edit"' '.SS "qvplc batch"' '.SS "qvplc check"' '\-\-keep\-going'; do
        grep -qF -- "$word" "$man1" || fail "the manual page does not mention '$word'"
    done
    if command -v groff >/dev/null; then
        warnings=$(groff -k -man -Tutf8 -ww -z "$man1" 2>&1)
        [ -z "$warnings" ] || fail "groff warns about the manual page: $warnings"
    fi
fi

# Completion: the file loads in bash and completes groups, commands and a command's options.
completion="$root/share/bash-completion/completions/qvplc"
complete_words() {
    bash -c 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _qvplc;
             printf "%s\n" "${COMPREPLY[@]}"' _ "$completion" "$@"
}
bash -n "$completion" || fail "the completion file does not parse"
[ "$(complete_words "$root/bin/qvplc" li)" = lib ] || fail "completion of 'li' is not 'lib'"
[ "$(complete_words "$root/bin/qvplc" lib in)" = init ] || fail "completion of 'lib in'"
complete_words "$root/bin/qvplc" lib init --sa | grep -qx -- --sample ||
    fail "completion of 'lib init --sa' misses --sample"
[ "$(complete_words "$root/bin/qvplc" lib term reo)" = reorder ] ||
    fail "completion of 'lib term reo' is not 'reorder'"
complete_words "$root/bin/qvplc" lib term insert M/S/T/C --bef | grep -qx -- --before ||
    fail "completion of 'lib term insert ... --bef' misses --before"
complete_words "$root/bin/qvplc" draw --piec | grep -qx -- --pieces ||
    fail "completion of 'draw --piec' misses --pieces"
[ "$(complete_words "$root/bin/qvplc" bat)" = batch ] || fail "completion of 'bat' is not 'batch'"
complete_words "$root/bin/qvplc" batch io.csv --upd | grep -qx -- --update ||
    fail "completion of 'batch io.csv --upd' misses --update"

# The installed program on the sample, with nothing but the local folder given.
local_dir="$scratch/local"
run() { env -u ZANDRIX_COMMON_DIR -u LC_ALL -u LC_MESSAGES ZANDRIX_LOCAL_DIR="$local_dir" "$@"; }
run "$root/bin/qvplc" --version | grep -q '^qvplc [0-9]' || fail "--version"
run "$root/bin/qvplc" lib init --sample >/dev/null || fail "lib init --sample"
run "$root/bin/qvplc" draw "Norvik Controls/NX 10/Digital input/NX1-DI16" --tag A1 --at 0,0 \
    --drawing "$scratch/sample.dxf" 2>"$scratch/err" || { cat "$scratch/err"; fail "draw"; }
grep -q 'SYMB2_S_KTR' "$scratch/sample.dxf" 2>/dev/null || fail "the drawing holds no terminal symbol"
run "$root/bin/qvplc" settings show | grep -q "termSymbolPath = $root/share/zandrix/SYMB2LIB/" ||
    fail "the symbols are not taken from the installed share/zandrix"
LANG=en_US.UTF-8 run "$root/bin/qvplc" lib tree --library "$scratch/none.db" 2>&1 |
    grep -q '(Error: the PLC component library file' || fail "the installed catalogue is not used"

[ $failures -eq 0 ] && echo "install: all checks passed"
exit $((failures > 0))
