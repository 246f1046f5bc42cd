#!/usr/bin/env bash
# check_tools.sh linux|win32: runs the tools on good and on damaged files.
set -u -o pipefail
cd "$(dirname "$0")/.."
. scripts/common.sh
. scripts/wine.sh

target=${1:?usage: check_tools.sh linux|win32}
# One display for all: what Wine starts first without one has none later either.
if [ "$target" = win32 ] && [ -z "${DISPLAY:-}" ]; then
    with_display scripts/check_tools.sh win32
    exit
fi
top=$PWD
# Under Wine only what lies below the checkout is seen under the same path.
work=$top/build/tools-$target
rm -rf "$work"
mkdir -p "$work"
cd "$work" || exit 1
status=0

fail() {
    echo "   $*"
    status=1
}

tool() { # NAME ARGUMENT...
    local name=$1
    shift
    if [ "$target" = linux ]; then
        "$top/build/linux-release/bin/$name" "$@"
    else
        wine32 "$top/build/win32/bin/$name.exe" "$@"
    fi
}

# expect CODE NAME ARGUMENT...: and one line of error, no less and no more, for code 1.
expect() {
    local wanted=$1 code
    shift
    tool "$@" >out 2>err
    code=$?
    [ $code = "$wanted" ] || fail "$*: exit code $code instead of $wanted: $(head -c 300 err)"
    [ "$wanted" != 1 ] || [ "$(wc -l <err)" = 1 ] || fail "$*: not one line of error: $(cat err)"
    [ "$wanted" != 0 ] || [ ! -s err ] || fail "$*: $(cat err)"
}

check_help() { # NAME
    expect 0 "$1" --help
    grep -q "Exit status" out || fail "$1 --help does not tell the exit status"
    expect 2 "$1"
}

check_pres() {
    check_help pres
    seq -f 'Window %g { }' 500 >plain.rc
    expect 0 pres pack plain.rc packed.rc
    [ "$(head -c 4 packed.rc)" = PRES ] || fail "pres: the file does not begin with PRES"
    [ "$(stat -c %s packed.rc)" -lt "$(($(stat -c %s plain.rc) / 3))" ] || fail "pres: the file has hardly shrunk"
    expect 0 pres unpack packed.rc back.rc
    cmp plain.rc back.rc || fail "pres: unpacked differently"
    cp back.rc kept.rc
    printf x | cat packed.rc - >long.rc
    head -c 100 packed.rc >short.rc
    : >empty.rc
    for bad in long short empty plain missing; do
        expect 1 pres unpack $bad.rc kept.rc
    done
    cmp plain.rc kept.rc || fail "pres: a failure touched the old file"
    expect 1 pres pack empty.rc kept.rc
}

pack_names_by_case() {
    mkdir -p case/A case/a
    printf 1 >case/B.txt
    printf 2 >case/b.txt
    expect 0 tvpack create case.pak -C case B.txt b.txt
    mkdir -p case/out
    printf 3 >case/out/B.TXT
    expect 0 tvpack extract case.pak --to case/out
    [ "$(cat case/out/B.txt case/out/b.txt case/out/B.TXT)" = 123 ] || fail "tvpack mixes names up: $(ls case/out)"
    printf 4 >case/A/c.txt
    printf 5 >case/a/c.txt
    expect 1 tvpack create case.pak -C case A a
    grep -q 'differ in case alone' err || fail "tvpack: $(cat err)"
}

check_tvpack() {
    local n size
    check_help tvpack
    [ "$target" = win32 ] || pack_names_by_case
    mkdir -p in/dir/deep in/empty
    for n in $(seq 1000); do
        size=$((n * 37 % 9000))
        case $((n % 4)) in
        0) head -c $size /dev/urandom >"in/file$n.bin" ;;
        1) yes "line $n" | head -c $size >"in/dir/file$n.txt" ;;
        2) head -c $size /dev/zero >"in/dir/deep/file$n.JPG" ;;
        3) seq $n $((n + size / 8)) >"in/file $n" ;;
        esac
    done
    : >in/nothing
    expect 0 tvpack create all.arc -C in .
    expect 0 tvpack list all.arc
    [ "$(tail -n 1 out | tr -d '\r' | awk '{print $3}')" = 1001 ] || fail "tvpack list: $(tail -n 1 out)"
    expect 0 tvpack extract all.arc --to out-dry --dry-run
    [ ! -e out-dry ] || fail "tvpack: a dry run made files"
    expect 0 tvpack extract all.arc --to out-all
    rmdir in/empty
    diff -r in out-all >differences || fail "tvpack: $(head -n 3 differences)"

    for size in 5 500 50000; do
        head -c $size all.arc >cut.arc
        expect 1 tvpack extract cut.arc --to "out-$size"
    done
    [ "$(find out-50000 -type f | wc -l)" -gt 5 ] || fail "tvpack: what was good before the damage is gone"
    cp all.arc kept.arc
    expect 1 tvpack create kept.arc -C in missing
    expect 1 tvpack create kept.arc ../tools-"$target"/in
    cmp all.arc kept.arc || fail "tvpack: a failure touched the old archive"
    printf '\377\377\377\377\001\0\0\0\006\0../badX' >bad.arc
    expect 1 tvpack extract bad.arc --to out-bad
    [ ! -e bad ] && [ ! -e out-bad ] || fail "tvpack: a name led out of the directory"
}

# Scripts of all forms that a person may write, some of them odd.
make_scripts() { # COUNT
    awk -v count="$1" '
        function upto(n) { return int(rand() * n) }
        function mark() { return " #" ++marks }
        function value() {
            n = upto(9)
            if (n < 3) return "word" upto(100)
            if (n < 5) return "\"" substr("a = b; c, {d} ", 1, upto(15)) (upto(2) ? "\\\"\\\\" : "") "\""
            if (n == 5) return "{1, " upto(50) ", \"x y\"}"
            if (n == 6) return "{{1}, {2}}"
            if (n == 7) return "\"first\"\n    \"second\""
            return "-" upto(1000)
        }
        BEGIN {
            srand(11)
            for (file = 0; file < count; ++file) {
                name = "script" file ".txt"
                depth = 0
                for (lines = upto(30); lines > 0; --lines) {
                    n = upto(12)
                    if (n == 0) { print "; \" = {" mark() >name }
                    else if (n == 1) { print "   " >name }
                    else if (n == 2) { print "{ = Chunk, c" upto(9) ", x" >name; ++depth }
                    else if (n == 3 && depth) { print "  } the rest ;" mark() >name; --depth }
                    else if (n == 4) { print " [ = Notes, ASCIIDATA\n  any \" text;\n ] ;" mark() >name }
                    else if (n == 5) { print "Key" lines " = " value() ", ;" mark() "\n\n " value() >name }
                    else if (n == 6) { print "Flag ;" mark() >name }
                    else { print "Key" lines "=" value() " ,\t" value() (upto(2) ? "   ;" mark() : "") >name }
                }
                print "end" >name
                close(name)
            }
        }'
}

check_kcbl() {
    local file
    check_help kcbl
    printf '; sample\nTitle = "Hi, you", 3   ; note\nSizes = { 1, 2}, YES\n{ = Panel, main\n    Width = 640 ; px\n}\n' >good.txt
    printf 'a\r\n{ = x\r\n  b = "cut\r\n  c = 1}, 2\r\n}\r\n}\r\nd = \001\r\n{ = open\r\n' >bad.txt
    expect 0 kcbl check good.txt
    expect 1 kcbl check good.txt bad.txt
    grep -o '^bad.txt:[0-9:]*' out | tr -d '\r' | tr '\n' ' ' >places
    [ "$(cat places)" = "bad.txt:3:7: bad.txt:4:9: bad.txt:6:1: bad.txt:7:5: bad.txt:8:1: " ] || fail "kcbl check: $(cat places)"
    grep -q '^      b = "cut' out || fail "kcbl check does not show the line"
    grep -q "4 faults in 1 of 2 files" err || fail "kcbl check: $(cat err)"
    # Places behind what is easily miscounted: ends of lines, an escaped quote, commas in an array, a comment
    # behind a comma.
    printf '; script\r\n{ = Colors\r\nD = "a\\", 2", mauve\r\nE = { 1, 2 }, mauve\r\n' >places.rc
    printf 'F = "1 2 3 4", ; one\r\n    mauve\r\n}\r\n' >>places.rc
    expect 1 kcbl check places.rc
    grep '^places.rc:' out | tr -d '\r' | cut -d: -f 2- | tr '\n' ';' >places
    [ "$(cat places)" = '3:5: unknown colour "a", 2";3:15: unknown colour "mauve";4:5: unknown colour "{...}";4:15: unknown colour "mauve";6:5: unknown colour "mauve";' ] ||
        fail "kcbl check: $(cat places)"
    if [ "$target" = linux ]; then
        # Behind a link, with the mode that it had, beside a file that has the name in between.
        printf 'B   =  1\n' >real.txt
        chmod 640 real.txt
        ln -sf real.txt link.txt
        printf 'kept' >real.txt.part
        expect 0 kcbl fmt link.txt
        [ -L link.txt ] && [ "$(stat -c %a real.txt)" = 640 ] && [ "$(cat real.txt.part)" = kept ] ||
            fail "kcbl fmt: $(ls -l link.txt real.txt real.txt.part)"
    fi
    expect 1 kcbl check missing.txt
    expect 2 kcbl fmt --widht 3 good.txt

    expect 0 kcbl get good.txt Panel,main/Width
    [ "$(tr -d '\r' <out | tr '\n' '|')" = "640|; px|" ] || fail "kcbl get: $(cat out)"
    expect 0 kcbl get good.txt 'sizes[0][1]'
    [ "$(tr -d '\r' <out)" = 2 ] || fail "kcbl get: $(cat out)"
    for file in Panel/Height Plane/Width 'Title[3]' 'Sizes[0][2]'; do
        expect 1 kcbl get good.txt "$file"
    done
    expect 1 kcbl get bad.txt a
    expect 0 kcbl json good.txt
    [ "$(tr -d ' \r\n' <out)" = '[{"keyword":";sample"},{"keyword":"Title","strings":["Hi,you","3"],"comment":";note"},{"keyword":"Sizes","strings":[["1","2"],"YES"]},{"keyword":"{","strings":["Panel","main"],"items":[{"keyword":"Width","strings":["640"],"comment":";px"}]}]' ] ||
        fail "kcbl json: $(cat out)"

    cp good.txt mine.txt
    expect 1 kcbl fmt --check mine.txt
    cmp good.txt mine.txt || fail "kcbl fmt --check wrote"
    expect 0 kcbl fmt mine.txt
    printf '; sample\nTitle = "Hi, you", 3\t\t; note\nSizes = { 1, 2}, YES\n{ = Panel, main\n    Width = 640\t\t; px\n}\n' |
        cmp - mine.txt || fail "kcbl fmt writes something else"
    cp bad.txt kept.txt
    expect 1 kcbl fmt kept.txt
    cmp bad.txt kept.txt || fail "kcbl fmt touched a file with a fault"
    printf 'a = "x=y", "; z", "q;"\n' >quotes.txt
    cp quotes.txt before.txt
    expect 0 kcbl fmt quotes.txt
    cmp quotes.txt before.txt || fail "kcbl fmt changed a value: $(cat quotes.txt)"

    # Wine starts slowly, and all files go by one command.
    make_scripts 200
    grep -o '#[0-9]*' script*.txt | sort >comments.before
    expect 0 kcbl fmt script*.txt
    grep -o '#[0-9]*' script*.txt | sort | diff comments.before - >lost || fail "kcbl fmt lost comments: $(head -n 3 lost)"
    expect 0 kcbl check script*.txt
    expect 0 kcbl fmt --check script*.txt
    expect 0 kcbl fmt --width 30 script*.txt
    expect 0 kcbl fmt --check --width 30 script*.txt
    expect 0 kcbl fmt script*.txt
    expect 0 kcbl fmt --check script*.txt
}

check_xbfmake() {
    local fonts=/usr/share/fonts/truetype/dejavu size font bad
    # FreeType is not among what the Windows tools are built with.
    [ "$target" = linux ] || return 0
    check_help xbfmake
    for font in DejaVuSans DejaVuSans-Bold; do
        for size in 11 12 16; do
            expect 0 xbfmake $fonts/$font.ttf plain.xbf --size $size --preview plain.bmp
            expect 0 xbfmake $fonts/$font.ttf outline.xbf --size $size --outline --spacing 3
            expect 0 xbfmake $fonts/$font.ttf shadow.xbf --size $size --shadow
            "$top/scripts/check_xbf.py" $fonts/$font.ttf $size plain.xbf 0 outline.xbf 3 outline shadow.xbf 0 shadow >out ||
                fail "xbfmake, $font $size: $(head -n 3 out)"
        done
    done
    # The picture shows the letters, and it is the text that makes it.
    [ "$(identify -format '%w' plain.bmp)" -gt 200 ] && [ "$(identify -format '%k' plain.bmp)" = 6 ] ||
        fail "xbfmake: $(identify -format '%w %h %k' plain.bmp)"
    expect 0 xbfmake $fonts/DejaVuSans.ttf plain.xbf --size 12 --preview short.bmp --text "Äi"
    [ "$(identify -format '%w' short.bmp)" -lt 50 ] || fail "xbfmake --text: $(identify -format '%w' short.bmp)"
    expect 0 xbfmake $fonts/DejaVuSans.ttf grey.xbf --size 12 --grey --range 65-70,48
    grep -q '7 characters' out || fail "xbfmake --range: $(cat out)"

    # One letter of 3 by 2 pixels, as its rows say, with four bits and with one bit a pixel.
    local rows bits first second
    for rows in "4 F0F0 0F00" "1 A0 40"; do
        read -r bits first second <<<"$rows"
        printf '%s\n' "STARTFONT 2.1" "FONT tiny" "SIZE 8 75 75 $bits" "FONTBOUNDINGBOX 4 8 0 -2" "STARTPROPERTIES 2" \
            "FONT_ASCENT 6" "FONT_DESCENT 2" ENDPROPERTIES "CHARS 1" "STARTCHAR A" "ENCODING 65" "SWIDTH 500 0" \
            "DWIDTH 5 0" "BBX 3 2 1 0" BITMAP "$first" "$second" ENDCHAR ENDFONT >tiny.bdf
        expect 0 xbfmake tiny.bdf tiny.xbf --size 8 --preview tiny.bmp --text A
        convert tiny.bmp -crop 5x2+8+8 -fill black +opaque white -colorspace gray -depth 8 gray:- | od -An -tu1 |
            tr -d ' \n' >out
        [ "$(cat out)" = "0255025500025500" ] || fail "xbfmake, BDF with $bits bits: $(cat out)"
    done

    cp tiny.xbf kept.xbf
    head -c 20000 $fonts/DejaVuSans.ttf >cut.ttf
    : >empty.ttf
    for bad in missing.ttf cut.ttf empty.ttf "tiny.bdf --range 66"; do
        expect 1 xbfmake $bad kept.xbf --size 8
    done
    expect 1 xbfmake tiny.bdf kept.xbf --size 9
    grep -q 'only these sizes: 8' err || fail "xbfmake: $(cat err)"
    expect 1 xbfmake tiny.bdf missing/out.xbf --size 8
    cmp tiny.xbf kept.xbf || fail "xbfmake: a failure touched the old file"
    for bad in "--size 3" "--size x" "--size 8 --range 70-65" "--size 8 --range 1,300" "--size 8 --bold" "--size" "--size 8 more"; do
        expect 2 xbfmake tiny.bdf kept.xbf $bad
    done
}

# A resource script with every word, and one with a fault on most lines.
make_resources() {
    mkdir -p res/gfx
    printf 'BM' >res/gfx/pic.bmp
    printf 'XIFF' >res/font.xbf
    cat >res/good.rc <<'T'
; script of the tool's check
{ = Defines ; names
    W = 1, ; a note that is dropped
        "more"
    A = 2
    B = 3
}
{ = Strings
    S = 1, "text"
}
{ = values
    V = 1, -2
}
{ = Palette
    P = Gfx\\PIC.bmp
}
{ = Fonts
    F = font.xbf
}
{ = Bitmaps
    X = gfx/pic.bmp, 0, 0, -1, -1
    { = gfx/pic.bmp
        Y = 1, 1, 2, 2 ; note
    }
}
{ = Animations
    M = gfx/pic.bmp, 20, 0, 0, 2, 2, 4, 0, 1
}
{ = Colors
    R = red, "1 2 3 4", "1,2,3,4", white, black, grey, blue, green
    T = R
}
{ = Defaults
    Font = F
    Caret = X
    Check = Y
    Close = X, Y, X, Y
    Drop = X, X, X, X
    ArrowUp = X, X, X, X
    ArrowDown = X, X, X, X
    Titlebar = R, R, R, R
    Frame = R, R, R, R
    Button = R, R, R, R
    Static = R, R, R, R
}
{ = Data
    anything = goes
}
{ = Window, W
    Create = "A title", 0, 0, 100, 100, XWIN_TITLEBAR|XWIN_FRAME
    TitlebarFlags = CNTRL_HASBITMAP
    TitlebarBitmap = X, X, X, X
    FrameFlags = "CNTRL_TILED | CNTRL_HASBITMAP"
    FrameBitmap = X, X, X, X
    Colors = R, R, R, R
    CreateStatic = A, "text", 0, 0, 9, 9, 0
    { = Static, A
        Create = "", 1, 2, 3, 4, 0
        Bitmap = X, X, X, X
        TextBufferSize = 80
        Font = F
        TextColor = "255 0 0 0"
        Colors = R, R, R, R
        Alpha = 50
    }
    { = Button, A
        Create = OK, 0, 0, 9, 9, XKEY_ENTER, CNTRL_TABSTOP
    }
    { = Groupbox, A
        Create = Group, 0, 0, 9, 9, 0
        { = Radio, B
            Create = one, 0, 0, 9, 9, 5, NULL, 0
            { = Caption
                Flags = CNTRL_TRANSPARENT
                TextColor = R
            }
        }
    }
    { = Checkbox, A
        Create = one, 0, 0, 9, 9, 0, 0, 0
    }
    { = Scrolltext, A
        Create = "", 0, 0, 9, 9, 1, 0
        Text = "one"
            "two"
        Delay = 20
    }
    { = URL, A
        Create = here, "https://example.org", 0, 0, 9, 9, 0, 0
    }
}
T
    cat >res/bad.rc <<'T'
; script
Loose = 1
{ = Define
}
{ = Defines
    W = one
    W = 2
    ThisNameHasThirtyTwoCharactersOK = 3
}
{ = Fonts
    F = "no font.xbf"
}
{ = Bitmaps
    X = gfx/pic.bmp, 0, 0, 0, 5
    Y = gfx/pic.png, 0, 0, -1
}
{ = Animations
    M = gfx/pic.bmp, 20, 0, 0, 2, 2, 70000, 0, 1
}
{ = Colors
    R = red, mauve
    T = 1 2 3 4
    U = red ; a note
}
{ = Defaults
    Front = F
    Close = X, Y, Z, X
    Frame = red, U, R, R
}
{ = Window, V
    TitlebarFlags = CNTRL_TILED
    Colour = R
    { = Knob, W
    }
    { = Button
        Create = "a title", 0, 0, nine, 9, "XKEY_A|XKEY_NINE", CNTRL_TABSTOP|CNTRL_TOBSTOP
        Create = "", 0, 0, 9, 9
        TextColor = "1 2 3"
        Text = no
    }
    { = Groupbox, W
        Create = Group, 0, 0, 9, 9, 0
        { = Button, W
        }
    }
    { = Checkbox, W
        Create = one, 0, 0, 9, 9, 0, 0, 0
        AnimLine = XGUI_RELEASED, one, 10, 20, Non, 0, 0, two
        { = Caption
        }
        { = Title
        }
    }
}
T
}

check_kcbl_resources() {
    make_resources
    expect 0 kcbl check res/good.rc
    [ ! -s out ] || fail "kcbl check finds in a good script: $(head -n 5 out)"
    expect 1 kcbl check res/bad.rc
    grep '^res/bad.rc:' out | tr -d '\r' | sed 's/^res.bad.rc://' >faults
    cat >wanted <<'T'
2:1: warning: "Loose" stands outside of all sections
3:5: warning: unknown section "Define"
6:9: "one" is no number
7:5: warning: "W" is there already, and the first one counts
8:5: a name has at most 31 characters
11:9: the file "no font.xbf" is missing
14:28: this is no size of a picture
15:5: "Y" takes 5 strings and has 4
15:9: "gfx/pic.png" is no name of a picture: they are bmp and jpg files
15:9: the file "gfx/pic.png" is missing
18:38: an animation has 1 to 65536 frames
21:14: unknown colour "mauve"
22:9: a colour is four numbers in one pair of quotes, as "255 128 0 0"
23:13: a comment behind the shades of a colour is read as a shade
26:5: warning: unknown word "Front" in the defaults
27:19: unknown bitmap "Z"
28:13: a control needs a colour of eight shades; "red" has 1
28:18: a control needs a colour of eight shades; "U" has 1
28:21: a control needs a colour of eight shades; "R" has 2
28:24: a control needs a colour of eight shades; "R" has 2
30:1: a window needs "Create"
30:13: unknown id "V"
32:5: warning: unknown word "Colour" in a window
33:9: unknown control "Knob"
35:5: the name is missing behind "Button"
36:35: "nine" is no number
36:52: unknown key "XKEY_NINE"
36:78: unknown flag "CNTRL_TOBSTOP"
37:9: warning: "Create" takes 7 strings and has 5
37:9: warning: only the first "Create" is read
38:21: a colour is four numbers in one pair of quotes, as "255 128 0 0"
39:9: warning: unknown word "Text" in a Button
43:9: a Groupbox takes only Radio
48:9: warning: unknown word "AnimLine" in a Checkbox
49:9: warning: a caption needs a width of the box, string 5 of "Create"
51:9: warning: unknown chunk "Title" in a Checkbox
T
    diff faults wanted >differences || fail "kcbl check of a resource script: $(head -n 20 differences)"
    grep -q '^            ^$' out || fail "kcbl check does not mark the place"
    # Names of the other system, found without regard to case; and no file beside another folder's script.
    cp res/good.rc moved.rc
    expect 1 kcbl check moved.rc
    [ "$(grep -c 'is missing' out)" = 5 ] || fail "kcbl check: $(grep 'is missing' out)"
    expect 0 kcbl check --files res moved.rc
    expect 2 kcbl check --files res
    # Controls in each other and a long script: neither is too much.
    awk 'BEGIN {
        print "; script\n{ = Defines\nA = 1\n}\n{ = Window, A\nCreate = t, 0, 0, 1, 1, 0"
        for (n = 0; n < 30000; ++n) print "{ = Groupbox, A\nCreate = t, 0, 0, 1, 1, 0"
    }' >deep.rc
    expect 1 kcbl check deep.rc
    grep -q 'takes only Radio' out || fail "kcbl check: $(head -n 2 out)"
}

# The grammar's own scripts, one word each: tests/gui/resources shows what the library makes of them.
check_grammar() {
    local file verdict what step=1 wrong=0
    mkdir -p grammar
    "$top/build/linux-release/bin/grammar_cases" grammar || fail "grammar_cases: no scripts"
    [ "$(wc -l <grammar/list)" -gt 500 ] || fail "grammar_cases: $(wc -l <grammar/list) scripts"
    cd grammar || return
    printf 'BM' >pic.bmp
    printf 'XIFF' >font.xbf
    expect 1 kcbl check $(cut -d ' ' -f 1 list)
    # What each file is by its lines: good without one, a warning when all are warnings.
    tr -d '\r' <out | awk '
        FILENAME == "-" {
            if (match($0, /^[0-9]+[.]rc:/)) {
                file = substr($0, 1, RLENGTH - 1)
                if ($0 !~ /^[^ ]*: warning: /) found[file] = "bad"
                else if (!(file in found)) found[file] = "warning"
            }
            next
        }
        { verdict = $1 in found ? found[$1] : "good" }
        verdict != $2 { print "kcbl check: " verdict ": " $0 }' - list >differing
    [ ! -s differing ] || fail "$(wc -l <differing) verdicts differ: $(head -n 3 differing)"
    file=$(grep -m 1 ' warning ' list | cut -d ' ' -f 1)
    expect 0 kcbl check "$file"
    expect 1 kcbl check --strict "$file"
    # The viewer takes one script at a time, which is slow under Wine.
    if [ "$target" = win32 ]; then
        step=40
        echo "   grammar: tvview --check of every ${step}th script"
    fi
    while read -r file verdict what; do
        tool tvview --check "$file" >out 2>err </dev/null
        case $verdict:$?:$(grep -c '^[0-9]*[.]rc:[0-9:]* warning: ' out):$(grep -c '^[0-9]*[.]rc:' out) in
        good:0:0:0 | warning:0:[1-9]*:[1-9]* | bad:1:*:[1-9]*) ;;
        *) [ $((++wrong)) -gt 3 ] || fail "tvview --check, $what: not $verdict: $(head -n 3 out)" ;;
        esac
    done < <(awk -v step=$step 'NR % step == 0' list)
    cd ..
    expect 0 kcbl words
    cp "$top/docs/resources.md" page.md
    expect 0 kcbl words page.md
    cmp "$top/docs/resources.md" page.md ||
        fail "docs/resources.md has other words than the library: kcbl words docs/resources.md writes them"
    printf 'no marks\n' >marks.md
    expect 1 kcbl words marks.md
}

# same WHAT FILE FILE: the same pixels.
same() {
    local differing
    differing=$(compare -metric AE "$2" "$3" null: 2>&1)
    [ "$differing" = 0 ] || fail "tvimg, $1: pixels that differ: $differing"
}

# near WHAT FILE FILE: not the same, and no farther apart than the loss of bits lets expect.
near() {
    local distance
    distance=$(compare -metric RMSE "$2" "$3" null: 2>&1 | sed 's/.*(\(.*\))/\1/')
    awk -v d="$distance" 'BEGIN { exit !(d > 0 && d < 0.04) }' || fail "tvimg, $1: $distance apart"
}

check_tvimg() {
    local depth
    check_help tvimg
    convert -size 333x222 -seed 7 plasma:red-blue -attenuate 0.3 +noise Gaussian -depth 8 in.ppm 2>/dev/null
    cjpeg -quality 90 in.ppm >in.jpg
    djpeg -dct int -nosmooth -bmp in.jpg >theirs.bmp
    expect 0 tvimg info in.jpg
    [ "$(tr -d '\r' <out | tr -s ' \n' ' ')" = "format JPEG size 333 x 222 pixels depth 24 bits palette none " ] ||
        fail "tvimg info: $(cat out)"
    expect 0 tvimg convert in.jpg out24.bmp
    same "JPEG" theirs.bmp out24.bmp
    expect 0 tvimg convert theirs.bmp again.bmp
    cmp out24.bmp again.bmp || fail "tvimg: a BMP file does not stay as it is"
    for depth in 16 8; do
        expect 0 tvimg convert in.jpg "out$depth.bmp" --depth $depth
        expect 0 tvimg convert in.jpg "dither$depth.bmp" --depth $depth --dither
        [ "$(identify -format '%w %h' "out$depth.bmp")" = "333 222" ] || fail "tvimg: $(identify "out$depth.bmp")"
        near "$depth bits" theirs.bmp "out$depth.bmp"
        near "$depth bits, dithered" theirs.bmp "dither$depth.bmp"
        ! cmp -s "out$depth.bmp" "dither$depth.bmp" || fail "tvimg: --dither does nothing at $depth bits"
        # From there on nothing is lost.
        expect 0 tvimg convert "out$depth.bmp" back.bmp --depth 24
        expect 0 tvimg convert "out$depth.bmp" kept.bmp
        cmp "out$depth.bmp" kept.bmp || fail "tvimg: $depth bits do not stay as they are"
    done
    same "8 bits" out8.bmp back.bmp
    expect 0 tvimg info out8.bmp
    grep -q '256 colours, [1-9]' out || fail "tvimg info: $(cat out)"
    [ ! -e .pal.tab ] || fail "tvimg leaves a table behind"
    if [ "$target" = linux ]; then
        sha256sum out*.bmp dither*.bmp >"$top/build/tvimg-linux.sums"
    elif [ -f "$top/build/tvimg-linux.sums" ]; then
        sha256sum --quiet -c "$top/build/tvimg-linux.sums" || fail "tvimg: Windows and Linux differ"
    else
        echo "   tvimg: not compared with Linux, whose pictures are not there"
    fi

    cjpeg -progressive in.ppm >progressive.jpg
    head -c 300 in.jpg >short.jpg
    cp theirs.bmp picture.txt
    cp out8.bmp kept.bmp
    for bad in progressive.jpg short.jpg missing.jpg picture.txt; do
        expect 1 tvimg convert $bad kept.bmp
        expect 1 tvimg info $bad
    done
    expect 1 tvimg info progressive.jpg
    grep -q 'only support baseline' err || fail "tvimg: $(cat err)"
    cmp out8.bmp kept.bmp || fail "tvimg: a failure touched the old file"
    mkdir -p folder.bmp/inside
    expect 1 tvimg convert in.jpg folder.bmp
    expect 2 tvimg convert in.jpg out.png
    expect 2 tvimg convert in.jpg out.bmp --depth 12
    expect 2 tvimg convert in.jpg out.bmp more.bmp
    expect 2 tvimg convert in.jpg out.bmp --palette x.pal
    head -c 2000 in.jpg >cut.jpg
    expect 0 tvimg convert cut.jpg out.bmp
}

# Windows with a picture, a font and a control in a control.
make_view() {
    mkdir -p view/Gfx
    convert -size 32x24 gradient:red-blue -type TrueColor BMP3:view/Gfx/face.bmp
    "$top/build/linux-release/bin/xbfmake" /usr/share/fonts/truetype/dejavu/DejaVuSans.ttf view/text.xbf --size 12 >/dev/null ||
        fail "tvview: no font could be made"
    cat >view/good.rc <<'T'
; script of the viewer's check
{ = Window, WIN_MAIN
    Create = "Main", 40, 30, 300, 200, XWIN_TITLEBAR|XWIN_FRAME|XWIN_BORDER|XWIN_CLOSE
    CreateStatic = STA_WORD, "A word", 20, 20, 200, 20, CNTRL_TRANSPARENT
    { = Button, BTN_FACE
        Create = "Face", 20, 60, 100, 40, XKEY_ENTER, CNTRL_HASBITMAP|CNTRL_TILED
        Bitmap = Face, Face, Face, Face
    }
    { = Groupbox, GRP_ALL
        Create = "All", 150, 60, 120, 80, CNTRL_EXTRUDED
        { = Radio, RAD_ONE
            Create = "One", 8, 20, 80, 16, 16, NULL, CNTRL_EXTRUDED
        }
    }
}
{ = Window, WIN_SIDE
    Create = "Side", 400, 30, 200, 100, XWIN_TITLEBAR|XWIN_FRAME
}
{ = Defines
    WIN_MAIN = 1
    WIN_SIDE = 2
    STA_WORD = 1
    BTN_FACE = 10
    GRP_ALL = 11
    RAD_ONE = 12
}
{ = Fonts
    Text = text.xbf
}
{ = Bitmaps
    Face = gfx\FACE.bmp, 0, 0, -1, -1
}
{ = Defaults
    Font = Text
}
T
    sed 's/CNTRL_TILED/CNTRL_TILT/' view/good.rc >view/bad.rc
}

# part_same GEOMETRY FILE FILE: whether a part of two pictures is equal.
part_same() {
    cmp -s <(convert "$2" -crop "$1" +repage rgb:- 2>/dev/null) <(convert "$3" -crop "$1" +repage rgb:- 2>/dev/null)
}

# The viewer sees what happens to the files while it runs.
watch_tvview() {
    local viewer
    cp view/good.rc view/live.rc
    SDL_VIDEODRIVER=dummy tool tvview view/live.rc --frames 400 --shot live.bmp >out 2>err &
    viewer=$!
    # told COUNT TEXT: waits until the text was printed so often.
    told() {
        local n
        for n in $(seq 60); do
            [ "$(grep -c -- "$2" out)" -ge "$1" ] && return
            sleep 0.1
        done
        fail "tvview does not tell: $2: $(cat out)"
    }
    told 1 'shows 2 of 2 windows'
    sed '/= Window, WIN_SIDE/,/^}/d' view/good.rc >view/live.rc
    told 1 'shows 1 of 1 windows'
    convert -size 32x24 gradient:green-white -type TrueColor BMP3:view/Gfx/face.bmp
    told 2 'shows 1 of 1 windows'
    cp view/Gfx/face.bmp green.bmp
    cp view/live.rc view/alone.rc
    sed 's/CNTRL_TILED/CNTRL_TILT/' view/alone.rc >view/live.rc
    told 1 '^view/live.rc:6:.*unknown flag "CNTRL_TILT"'
    told 1 '1 fault; the windows before stay'
    cp view/alone.rc view/live.rc
    told 3 'shows 1 of 1 windows'
    # This one is found only when the new windows are half made.
    cp view/Gfx/face.bmp green.bmp
    echo 'no picture' >view/Gfx/face.bmp
    told 1 '^view/live.rc:[0-9]*:12: gfx.FACE.bmp: .*header'
    told 2 '1 fault; the windows before stay'
    wait $viewer || fail "tvview ends with $?: $(cat err)"
    # The window that was there, in its new colours, and the fault below.
    cp green.bmp view/Gfx/face.bmp
    expect 0 tvview view/alone.rc --shot alone.bmp
    part_same 800x500+0+0 live.bmp alone.bmp || fail "tvview: a broken script does not leave the windows alone"
    ! part_same 800x100+0+500 live.bmp alone.bmp || fail "tvview: the fault is not in the picture"
}

check_tvview() {
    check_help tvview
    make_view
    expect 0 tvview --list view/good.rc
    printf '%s\n' 'WIN_MAIN 1 "Main"' '    Static STA_WORD 1' '    Button BTN_FACE 10' '    Groupbox GRP_ALL 11' \
        '        Radio RAD_ONE 12' 'WIN_SIDE 2 "Side"' >wanted
    diff <(tr -d '\r' <out) wanted >differences || fail "tvview --list: $(cat differences)"
    expect 0 tvview --list view/good.rc win_side
    [ "$(wc -l <out)" = 1 ] || fail "tvview --list of one window: $(cat out)"
    expect 0 tvview --check view/good.rc
    [ ! -s out ] || fail "tvview --check finds in a good script: $(cat out)"
    expect 0 pres pack view/good.rc view/packed.rc
    expect 0 tvview --check view/packed.rc

    expect 1 tvview --check view/bad.rc
    grep -q '^view/bad.rc:6:.*unknown flag "CNTRL_TILT"' out || fail "tvview --check: $(cat out)"
    printf 'no script at all' >view/none.rc
    head -c 100 view/packed.rc >view/short.rc
    for bad in bad none short missing; do
        expect 1 tvview --list view/$bad.rc
    done
    expect 1 tvview --list view/good.rc WIN_NONE
    expect 1 tvview --check view
    for bad in "--mode 800x600" "--mode 800x600x12" "--mode 800x600x24x" "--frames 0" "--shot" "--list --check" "--bold"; do
        expect 2 tvview view/good.rc $bad
    done

    for depth in 8 16 24; do
        expect 0 tvview view/good.rc --mode 700x500x$depth --shot view$depth.bmp
        [ "$(identify -format '%w %h' view$depth.bmp)" = "700 500" ] || fail "tvview: $(identify view$depth.bmp)"
        convert view$depth.bmp -format '%[fx:standard_deviation > 0.02]' info: | grep -qx 1 || fail "tvview: a flat picture"
    done
    [ -z "$(find . -name '*.tab')" ] || fail "tvview leaves a table behind: $(find . -name '*.tab')"
    expect 0 tvview view/packed.rc --mode 700x500x24 --shot packed.bmp
    cmp view24.bmp packed.bmp || fail "tvview: a packed script looks different"
    expect 0 tvview view/good.rc WIN_SIDE --mode 700x500x24 --shot side.bmp
    part_same 350x500+350+0 side.bmp view24.bmp || fail "tvview: a window alone looks different"
    ! part_same 350x500+0+0 side.bmp view24.bmp || fail "tvview shows a window that was not named"
    expect 1 tvview view/bad.rc --shot none.bmp
    [ ! -e none.bmp ] || fail "tvview draws a broken script"
    if [ "$target" = linux ]; then
        watch_tvview
        sha256sum view{8,16,24}.bmp side.bmp >"$top/build/tvview-linux.sums"
    elif [ -f "$top/build/tvview-linux.sums" ]; then
        sha256sum --quiet -c "$top/build/tvview-linux.sums" || fail "tvview: Windows and Linux differ"
    else
        echo "   tvview: not compared with Linux, whose pictures are not there"
    fi
}

for check in $(declare -F | sed -n 's/^declare -f \(check_\)/\1/p'); do
    [ "$check" = check_help ] || "$check"
done
cd "$top" || exit 1
[ $status != 0 ] || rm -rf "$work"
exit $status
