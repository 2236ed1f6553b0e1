# Files are written one way and never lost: concurrent draws, modes and links, outputs that
# are inputs, odd paths (FIFO, folder, link loop, long names, missing or read-only folders),
# a long local folder, and read-only commands on a WAL library.
# Prints one line per case: "ok NAME" or "FAIL NAME: why". Always exits 0.

MODULE='Norvik Controls/NX 10/Digital input/NX1-DI8'
CASE_N=0

# A fresh local folder holding the sample library; prints its path.
local_dir() {
    CASE_N=$((CASE_N + 1))
    local dir="$QV_SCRATCH/local$CASE_N"
    mkdir -p "$dir/PLC"
    ZANDRIX_LOCAL_DIR=$dir "$QVPLC" lib init --sample >/dev/null 2>&1 ||
        cp "$QV_BUILD/local/PLC/QvPLC.db" "$dir/PLC/QvPLC.db"
    echo "$dir"
}

ok() { echo "ok $1"; }
fail() { echo "FAIL $1: $2"; }

# Runs qvplc with a time limit; the exit code in RC, standard error in ERR.
run() {
    ERR=$(timeout 20 "$QVPLC" "$@" 2>&1 >/dev/null)
    RC=$?
}

draw() {
    local drawing=$1 tag=$2
    shift 2
    run draw "$MODULE" --tag "$tag" --at 0,0 --drawing "$drawing" "$@"
}

sum() { sha256sum "$1" | cut -d' ' -f1; }

# Expects exit code $2, a message holding $3, and the file $4 (when given) unchanged ($5 is
# its old checksum).
expect_refused() {
    local name=$1 code=$2 text=$3 file=$4 before=$5
    if [ "$RC" -ne "$code" ]; then
        fail "$name" "exit $RC, expected $code ($ERR)"
    elif ! grep -qF -- "$text" <<<"$ERR"; then
        fail "$name" "message without '$text': $ERR"
    elif [ -n "$file" ] && [ "$(sum "$file")" != "$before" ]; then
        fail "$name" "$file was changed"
    else
        ok "$name"
    fi
}

# --- two draws into one file at once -------------------------------------------------------
case_concurrent_draws() {
    export ZANDRIX_LOCAL_DIR=$(local_dir)
    local d="$ZANDRIX_LOCAL_DIR/cabinet.dxf" lost=0 trial
    draw "$d" BASE
    for trial in $(seq 1 10); do
        timeout 60 "$QVPLC" draw "$MODULE" --tag "ALPHA$trial" --at 0,$((trial * 100)) \
            --drawing "$d" >/dev/null 2>"$QV_SCRATCH/a.err" &
        local a=$!
        timeout 60 "$QVPLC" draw "$MODULE" --tag "BRAVO$trial" --at 300,$((trial * 100)) \
            --drawing "$d" >/dev/null 2>"$QV_SCRATCH/b.err" &
        local b=$!
        wait $a; local ra=$?
        wait $b; local rb=$?
        for side in "ALPHA:$ra:a" "BRAVO:$rb:b"; do
            local tag=${side%%:*} rest=${side#*:}
            local rc=${rest%%:*} errfile="$QV_SCRATCH/${rest#*:}.err"
            if [ "$rc" -eq 0 ]; then
                grep -q "^$tag$trial\$" "$d" || lost=$((lost + 1))
            elif ! grep -qE 'changed on disk|another process' "$errfile"; then
                lost=$((lost + 1))
            fi
        done
    done
    grep -q '^BASE$' "$d" || lost=$((lost + 1))
    [ "$lost" -eq 0 ] && ok concurrent-draws-lose-nothing ||
        fail concurrent-draws-lose-nothing "$lost modules lost in 10 trials"
}

# --- what a rewritten drawing keeps -----------------------------------------------------------
case_modes_and_links() {
    export ZANDRIX_LOCAL_DIR=$(local_dir)
    local dir=$ZANDRIX_LOCAL_DIR
    draw "$dir/private.dxf" P1
    chmod 0600 "$dir/private.dxf"
    draw "$dir/private.dxf" P2
    local mode=$(stat -c %a "$dir/private.dxf")
    [ "$RC" -eq 0 ] && [ "$mode" = 600 ] && ok mode-0600-kept ||
        fail mode-0600-kept "exit $RC, mode $mode"

    if [ "$(id -u)" = 0 ]; then
        chown 4321:4321 "$dir/private.dxf"
        draw "$dir/private.dxf" P3
        local owner=$(stat -c %u:%g "$dir/private.dxf")
        [ "$RC" -eq 0 ] && [ "$owner" = 4321:4321 ] && ok owner-kept ||
            fail owner-kept "exit $RC, owner $owner"
    fi

    mkdir "$dir/real"
    draw "$dir/real/target.dxf" L1
    ln -s real/target.dxf "$dir/link.dxf"
    draw "$dir/link.dxf" L2
    if [ "$RC" -eq 0 ] && [ -L "$dir/link.dxf" ] && grep -q '^L2$' "$dir/real/target.dxf"; then
        ok symlink-stays-a-link
    else
        fail symlink-stays-a-link "exit $RC ($ERR)"
    fi

    ln "$dir/real/target.dxf" "$dir/hard.dxf"
    local before=$(sum "$dir/hard.dxf")
    draw "$dir/hard.dxf" H1
    expect_refused hard-link-refused 7 "hard links" "$dir/real/target.dxf" "$before"

    draw "$dir/ro.dxf" R1
    chmod 0444 "$dir/ro.dxf"
    before=$(sum "$dir/ro.dxf")
    draw "$dir/ro.dxf" R2
    expect_refused read-only-file-refused 7 "read-only" "$dir/ro.dxf" "$before"

    mkdir "$dir/rofolder"
    draw "$dir/rofolder/d.dxf" F1
    chmod 0555 "$dir/rofolder"
    before=$(sum "$dir/rofolder/d.dxf")
    draw "$dir/rofolder/d.dxf" F2
    expect_refused read-only-folder-refused 7 "folder is read-only" "$dir/rofolder/d.dxf" "$before"
    chmod 0755 "$dir/rofolder"

    local stray=$(find "$dir" -name '.qv~*' -o -name '*.tmp*' | head -1)
    [ -z "$stray" ] && ok no-temporary-left || fail no-temporary-left "$stray"
}

# --- an output that is also an input ----------------------------------------------------------
case_same_input_and_output() {
    export ZANDRIX_LOCAL_DIR=$(local_dir)
    local dir=$ZANDRIX_LOCAL_DIR
    cd "$dir" || return
    draw D.dxf S1
    local before=$(sum D.dxf)
    draw D.dxf S2 --png D.dxf
    expect_refused png-is-the-drawing 2 "also an input" D.dxf "$before"
    draw D.dxf S2 --png ./D.dxf
    expect_refused png-is-the-drawing-spelled-otherwise 2 "also an input" D.dxf "$before"
    ln -s D.dxf alias.png
    draw D.dxf S2 --png alias.png
    expect_refused png-is-the-drawing-through-a-link 2 "also an input" D.dxf "$before"
    draw new.dxf S3 --png ./new.dxf
    [ "$RC" -eq 2 ] && [ ! -e new.dxf ] && ok png-is-the-new-drawing ||
        fail png-is-the-new-drawing "exit $RC, new.dxf $( [ -e new.dxf ] && echo written)"
    local lib=$(sum PLC/QvPLC.db)
    draw D.dxf S2 --png PLC/QvPLC.db
    expect_refused png-is-the-library 2 "also an input" PLC/QvPLC.db "$lib"
    # The terminal symbol the settings draw with, in a common folder of this case's own.
    cp -r "$QV_SHARE" common
    local symbol=common/SYMB2LIB/SYMB2_S_KTR5.dxf sym=$(sum common/SYMB2LIB/SYMB2_S_KTR5.dxf)
    ZANDRIX_COMMON_DIR=$PWD/common draw D.dxf S2 --png "$symbol"
    expect_refused png-is-the-terminal-symbol 2 "also an input" "$symbol" "$sym"
    run dxf convert D.dxf ./D.dxf --version 2010
    expect_refused convert-onto-its-input 2 "also an input" D.dxf "$before"
    run dxf render D.dxf alias.png
    expect_refused render-onto-its-input 2 "also an input" D.dxf "$before"
    cp PLC/QvPLC.db lib.mdb
    local mdb=$(sum lib.mdb)
    run lib migrate lib.mdb --library ./lib.mdb --force
    expect_refused migrate-onto-its-source 2 "also an input" lib.mdb "$mdb"
    cd - >/dev/null
}

# --- odd paths ----------------------------------------------------------------------------------
case_odd_paths() {
    export ZANDRIX_LOCAL_DIR=$(local_dir)
    local dir=$ZANDRIX_LOCAL_DIR
    mkfifo "$dir/pipe.dxf"
    run dxf info "$dir/pipe.dxf"
    expect_refused fifo-drawing-read 3 "FIFO"
    draw "$dir/pipe.dxf" X
    expect_refused fifo-drawing-drawn-into 3 "FIFO"
    run lib tree --library "$dir/pipe.dxf"
    [ "$RC" -ne 124 ] && [ "$RC" -ne 0 ] && grep -qF FIFO <<<"$ERR" && ok fifo-library ||
        fail fifo-library "exit $RC ($ERR)"
    mkdir -p "$dir/LocalData"
    mkfifo "$dir/LocalData/PlcDrawSetting.dat"
    run settings set termSpacing=12
    [ "$RC" -ne 124 ] && [ "$RC" -ne 0 ] && grep -qF FIFO <<<"$ERR" && ok fifo-settings ||
        fail fifo-settings "exit $RC ($ERR)"
    rm "$dir/LocalData/PlcDrawSetting.dat"

    mkdir "$dir/folder.dxf"
    draw "$dir/folder.dxf" X
    expect_refused folder-as-drawing 3 "folder"

    ln -s loop2 "$dir/loop1"
    ln -s loop1 "$dir/loop2"
    run dxf info "$dir/loop1"
    expect_refused symlink-loop-read 3 "link"
    draw "$dir/loop1" X
    expect_refused symlink-loop-drawn-into 3 "link loop"

    local long=$(printf 'n%.0s' $(seq 1 300))
    draw "$dir/$long.dxf" X
    expect_refused name-of-300-characters 7 "too long"

    draw "$dir/nowhere/d.dxf" X
    [ "$RC" -eq 3 ] && [ ! -e "$dir/nowhere" ] && grep -qF "does not exist" <<<"$ERR" &&
        ok missing-folder-not-created || fail missing-folder-not-created "exit $RC ($ERR)"
    draw "$dir/first.dxf" X --png "$dir/nowhere/p.png"
    [ "$RC" -eq 3 ] && [ ! -e "$dir/first.dxf" ] && ok missing-picture-folder-refused-first ||
        fail missing-picture-folder-refused-first "exit $RC ($ERR)"

    if [ "$(id -u)" = 0 ] && command -v setpriv >/dev/null; then
        mkdir -m 0700 "$dir/closed"
        chmod 0777 "$dir"
        ERR=$(timeout 20 setpriv --reuid=65534 --regid=65534 --clear-groups \
            "$QVPLC" draw "$MODULE" --tag X --at 0,0 --drawing "$dir/closed/d.dxf" 2>&1 >/dev/null)
        RC=$?
        expect_refused folder-without-permission 7 "permission denied"
    fi
}

case_long_local_dir() {
    local base=$(local_dir) long
    long=$base/$(printf 'x%.0s' $(seq 1 250))/$(printf 'y%.0s' $(seq 1 250))
    long=$long/$(printf 'z%.0s' $(seq 1 250))/$(printf 'w%.0s' $(seq 1 250))
    long=$long$long$long$long
    export ZANDRIX_LOCAL_DIR=$long
    # Whatever a command can still do, it ends with an exit code of its own and, when it
    # fails, says why; it never aborts.
    local cmd
    for cmd in "lib tree" "settings show" "settings set termSpacing=12" "draw"; do
        if [ "$cmd" = draw ]; then
            draw "$base/d.dxf" X
        else
            run $cmd
        fi
        if [ "$RC" -ge 124 ] || { [ "$RC" -ne 0 ] && [ -z "$ERR" ]; }; then
            fail "long-local-dir: $cmd" "exit $RC ($ERR)"
        else
            ok "long-local-dir: $cmd"
        fi
    done
    run settings set termSpacing=12
    expect_refused "long-local-dir: settings set says why" 7 "too long"
}

# --- read-only commands on a WAL library ------------------------------------------------------
case_wal_library() {
    export ZANDRIX_LOCAL_DIR=$(local_dir)
    local lib="$ZANDRIX_LOCAL_DIR/PLC/QvPLC.db"
    sqlite3 "$lib" 'PRAGMA journal_mode=WAL;' >/dev/null
    local before=$(sum "$lib") cmd
    for cmd in tree show draw; do
        case $cmd in
            tree) run lib tree ;;
            show) run lib show "$MODULE" ;;
            draw) draw "$ZANDRIX_LOCAL_DIR/d.dxf" W ;;
        esac
        local mode=$(sqlite3 "$lib" 'PRAGMA journal_mode;')
        if [ "$RC" -ne 0 ]; then
            fail "wal-library-kept-by-$cmd" "exit $RC ($ERR)"
        elif [ "$(sum "$lib")" != "$before" ] || [ "$mode" != wal ]; then
            fail "wal-library-kept-by-$cmd" "journal mode $mode, bytes changed"
        else
            ok "wal-library-kept-by-$cmd"
        fi
    done
}

# --- two settings changes at once ---------------------------------------------------------------
case_concurrent_settings() {
    export ZANDRIX_LOCAL_DIR=$(local_dir)
    local lost=0 trial
    for trial in $(seq 1 5); do
        timeout 60 "$QVPLC" settings set "termSpacing=1$trial" >/dev/null 2>&1 &
        local a=$!
        timeout 60 "$QVPLC" settings set "detailModelType=$((trial % 2))" >/dev/null 2>&1 &
        local b=$!
        wait $a; wait $b
        local shown=$("$QVPLC" settings show 2>/dev/null)
        grep -q "^termSpacing = 1$trial " <<<"$shown" || lost=$((lost + 1))
        grep -q "^detailModelType = $((trial % 2)) " <<<"$shown" || lost=$((lost + 1))
    done
    [ "$lost" -eq 0 ] && ok concurrent-settings-lose-nothing ||
        fail concurrent-settings-lose-nothing "$lost changes lost in 5 trials"
}

# --- a draw killed at any moment -----------------------------------------------------------------
case_killed_draw() {
    export ZANDRIX_LOCAL_DIR=$(local_dir)
    local d="$ZANDRIX_LOCAL_DIR/killed.dxf" bad="" delay i
    for i in $(seq 1 12); do
        draw "$d" "K$i"
    done
    for delay in 0.02 0.05 0.08 0.1 0.15 0.2 0.3; do
        "$QVPLC" draw "$MODULE" --tag KILLED --at 0,-500 --drawing "$d" >/dev/null 2>&1 &
        local pid=$!
        sleep "$delay"
        kill -9 "$pid" 2>/dev/null
        wait "$pid" 2>/dev/null
        timeout 20 "$QVPLC" dxf info "$d" >/dev/null 2>&1 || bad="$bad unreadable after ${delay}s;"
        grep -q '^K12$' "$d" || bad="$bad K12 lost after ${delay}s;"
    done
    local stray=$(find "$ZANDRIX_LOCAL_DIR" -name '.qv~*' | head -1)
    [ -n "$stray" ] && bad="$bad left $stray;"
    [ -z "$bad" ] && ok killed-draw-leaves-the-drawing-and-nothing-else ||
        fail killed-draw-leaves-the-drawing-and-nothing-else "$bad"
}

case_concurrent_draws
case_killed_draw
case_modes_and_links
case_same_input_and_output
case_odd_paths
case_long_local_dir
case_wal_library
case_concurrent_settings
exit 0
