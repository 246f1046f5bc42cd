#!/usr/bin/env bash
# check_examples.sh linux|asan|win32|win64: runs the examples and looks at what they draw.
# linux: every mode without a display. asan: the gallery's session under the
# sanitizers. win32, win64: the same pixels and messages under Wine.
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

# wine win32|win64 PROGRAM [ARGUMENT...]
wine() {
    local target=$1
    shift
    case $target in
    win32) with_display wine32 "$@" ;;
    win64) with_display wine64_run "$@" ;;
    esac
}

check_windows_modes() { # win32|win64
    local depth mode
    for depth in 8 16 24; do
        mode=640x480x$depth
        [ -f "$shots/linux-$mode.bmp" ] || shoot_linux "$mode"
        rm -f "$shots/$1-$mode.bmp"
        if (cd "build/$1/bin" &&
            wine "$1" ./first_picture.exe --mode "$mode" --frames 20 --shot "../../shots/$1-$mode.bmp"); then
            cmp "$shots/linux-$mode.bmp" "$shots/$1-$mode.bmp" || fail "$mode: Windows and Linux differ"
        else
            fail "$mode: first_picture.exe failed"
        fi
    done
    rm -f "build/$1/bin/.pal.tab"
}

session=$top/examples/gallery/session.txt

# play NAME DEPTH PROGRAM [ARGUMENT...]: the gallery's session; its picture and its messages.
play() {
    local name=$1 depth=$2
    shift 2
    rm -f "$shots/gallery-$name-$depth.bmp"
    SDL_VIDEODRIVER=dummy "$@" --depth "$depth" --play "$session" --messages \
        --shot "$shots/gallery-$name-$depth.bmp" | tr -d '\r' >"$shots/gallery-$name-$depth.txt" ||
        fail "gallery, $name, $depth bits: failed"
}

# same_as NAME OTHER: pictures and messages of two plays.
same_as() {
    local depth kind
    for depth in 8 16 24; do
        for kind in bmp txt; do
            cmp "$shots/gallery-$1-$depth.$kind" "$shots/gallery-$2-$depth.$kind" ||
                fail "gallery at $depth bits: $1 and $2 differ"
        done
    done
}

# The folder as a program of the other system would have left it.
make_windows_folder() { # FOLDER
    local file
    mkdir -p "$1/GFX"
    for file in "$bin/gallery_files/"*.bmp "$bin/gallery_files/"*.xbf; do
        file=$(basename "$file")
        cp "$bin/gallery_files/$file" "$1/GFX/$(tr '[:lower:]' '[:upper:]' <<<"$file")"
    done
    mv "$1/GFX/DESKTOP.BMP" "$1/GFX/MOTH1.BMP" "$1/GFX/MOTH2.BMP" "$1/"
    sed -E 's/= ([a-z_0-9]+\.(bmp|xbf))/= Gfx\\\1/; s/$/\r/' "$bin/gallery_files/gallery.txt" >"$1/Gallery.Txt"
}

check_gallery() {
    local depth
    make_windows_folder "$work/windows"
    cp -r "$bin/gallery_files" "$work/packed"
    "$bin/pres" pack "$work/packed/gallery.txt" "$work/packed/gallery.res" >"$work/out" || fail "pres failed"
    for depth in 8 16 24; do
        play linux "$depth" timeout 120 "$bin/gallery"
        play windows-folder "$depth" timeout 120 "$bin/gallery" --script "$work/windows/GALLERY.TXT"
        play packed "$depth" timeout 120 "$bin/gallery" --script "$work/packed/gallery.res"
        check_gallery_messages "$depth"
    done
    same_as linux windows-folder
    same_as linux packed
    "$bin/kcbl" check "$bin/gallery_files/gallery.txt" >"$work/out" || fail "gallery.txt: $(cat "$work/out")"
    # What is recorded plays again.
    SDL_VIDEODRIVER=dummy timeout 60 "$bin/gallery" --record "$work/recorded" --frames 20 --shot "$work/a.bmp" &&
        SDL_VIDEODRIVER=dummy timeout 60 "$bin/gallery" --play "$work/recorded" --shot "$work/b.bmp" &&
        cmp "$work/a.bmp" "$work/b.bmp" || fail "gallery: a recording differs from its session"
}

# The clicks of the session, in order: window and control of each message 2.
check_gallery_messages() { # DEPTH
    local clicks
    clicks=$(sed -n 's/^2 [0-9]* //p' "$shots/gallery-linux-$1.txt" | uniq | tr '\n' ' ')
    clicks=${clicks/107 107/107}
    case $clicks in
    "101 105 107 103 109 902 502 1002 ") ;;
    *) fail "gallery at $1 bits: the clicks were $clicks" ;;
    esac
}

check_gallery_asan() {
    local depth
    bin=$top/build/linux-asan/bin
    for depth in 8 16 24; do
        ASAN_OPTIONS=detect_leaks=1 play asan "$depth" timeout 120 "$bin/gallery"
    done
    same_as linux asan
}

check_windows_gallery() { # win32|win64
    local depth
    cd "build/$1/bin" || exit 1
    rm -f gallery_files/*.bmp gallery_files/*.tab
    for depth in 8 16 24; do
        play "$1" "$depth" wine "$1" ./gallery.exe
    done
    cd "$top" || exit 1
    same_as linux "$1"
}

case "${1:-}" in
linux)
    check_modes
    check_pictures
    check_gallery
    ;;
asan) check_gallery_asan ;;
win32 | win64)
    check_windows_modes "$1"
    check_windows_gallery "$1"
    ;;
*)
    echo "usage: check_examples.sh linux|asan|win32|win64" >&2
    exit 2
    ;;
esac
exit $status
