#!/usr/bin/env bash
# check_examples.sh linux|win32: runs the examples and looks at what they draw.
# linux: every mode without a display. win32: the same pixels under Wine.
set -u -o pipefail
cd "$(dirname "$0")/.."
. scripts/common.sh
. scripts/wine.sh

top=$PWD
shots=$top/build/shots
bin=$top/build/linux-release/bin
# The library keeps a table in the folder that it runs in, hence a folder made here.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$shots"
status=0

fail() {
    echo "   $*"
    status=1
}

# headless PROGRAM ARGUMENT...: of the Linux build.
headless() {
    local program=$1
    shift
    (cd "$work" && SDL_VIDEODRIVER=dummy timeout 60 "$bin/$program" "$@")
}

shoot_linux() { # MODE
    headless first_picture --mode "$1" --frames 20 --shot "$shots/linux-$1.bmp"
}

check_shot() { # MODE FILE
    local size=${1%x*} width height expected
    width=${size%x*} height=${size#*x}
    # Two headers, then rows of whole longs.
    expected=$((54 + height * ((width * 3 + 3) / 4 * 4)))
    [ "$(stat -c %s "$2")" = "$expected" ] || fail "$1: the file has $(stat -c %s "$2") bytes, not $expected"
    [ "$(identify -format '%m %w %h' "BMP:$2" 2>&1)" = "BMP3 $width $height" ] ||
        fail "$1: $(identify "$2" 2>&1)"
    # A picture, and neither nearly black nor nearly white.
    convert "$2" -format '%[fx:standard_deviation > 0.02 && mean > 0.05 && mean < 0.95]' info: 2>&1 | grep -qx 1 ||
        fail "$1: the picture is flat"
}

check_modes() {
    local size depth kind mode
    for size in 640x480 800x600 1024x768; do
        for depth in 8 16 24; do
            for kind in "" D; do
                mode=${size}x$depth$kind
                rm -f "$shots/linux-$mode.bmp"
                if shoot_linux "$mode" && [ -f "$shots/linux-$mode.bmp" ]; then
                    check_shot "$mode" "$shots/linux-$mode.bmp"
                else
                    fail "$mode: first_picture failed"
                fi
            done
        done
    done
}

# A picture that cannot be shown: code 1 and one line that says so.
check_refusal() { # WHAT FILE
    local code
    headless first_picture "$2" --frames 2 --shot "$work/none.bmp" >"$work/out" 2>"$work/err"
    code=$?
    [ $code = 1 ] || fail "$1: exit code $code instead of 1"
    [ "$(wc -l <"$work/err")" = 1 ] || fail "$1: not one line of error: $(cat "$work/err")"
    [ ! -s "$work/out" ] || fail "$1: wrote $(cat "$work/out")"
    [ ! -e "$work/none.bmp" ] || fail "$1: wrote a picture all the same"
}

check_pictures() {
    check_refusal "missing picture" "$work/missing.bmp"
    convert -size 640x480 plasma:red-blue -seed 7 -type TrueColor "BMP3:$work/made.bmp" 2>/dev/null ||
        { fail "no picture could be made"; return; }
    head -c 20 "$work/made.bmp" >"$work/header.bmp"
    head -c 5000 "$work/made.bmp" >"$work/short.bmp"
    head -c 5000 /dev/zero >"$work/zero.bmp"
    check_refusal "header cut off" "$work/header.bmp"
    check_refusal "rows cut off" "$work/short.bmp"
    check_refusal "no picture at all" "$work/zero.bmp"

    headless first_picture "$work/made.bmp" --plain --frames 2 --shot "$work/shown.bmp" || fail "a plain picture failed"
    local differing
    differing=$(compare -metric AE "$work/made.bmp" "$work/shown.bmp" null: 2>&1)
    [ "$differing" = 0 ] || fail "a plain picture: pixels that differ: $differing"
}

check_win32() {
    local depth mode
    for depth in 8 16 24; do
        mode=640x480x$depth
        [ -f "$shots/linux-$mode.bmp" ] || shoot_linux "$mode"
        rm -f "$shots/win32-$mode.bmp"
        if (cd build/win32/bin &&
            with_display wine32 ./first_picture.exe --mode "$mode" --frames 20 --shot "../../shots/win32-$mode.bmp"); then
            cmp "$shots/linux-$mode.bmp" "$shots/win32-$mode.bmp" || fail "$mode: Windows and Linux differ"
        else
            fail "$mode: first_picture.exe failed"
        fi
    done
    rm -f build/win32/bin/.pal.tab
}

case "${1:-}" in
linux)
    check_modes
    check_pictures
    ;;
win32) check_win32 ;;
*)
    echo "usage: check_examples.sh linux|win32" >&2
    exit 2
    ;;
esac
exit $status
