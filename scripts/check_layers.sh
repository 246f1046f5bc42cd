#!/usr/bin/env bash
# Who may include whom. A room uses only rooms that stand above it here, and of
# those only its neighbours; the platform's headers are for src/win and
# platform/. A source names the headers that it uses, also those that
# src/prefix.h has included already.
set -u
cd "$(dirname "$0")/.."

# ROOM: its neighbours.
rooms='
core:
coders: core
files: core coders
kcbl: core
pictures: core coders
screens: core files pictures
input: core pictures screens
gui: core pictures screens input
gui/resources: core coders kcbl pictures screens input gui
win: core pictures screens input gui
'

# ROOM: its public headers. What the umbrellas gather has a room of its own.
headers='
core: avl byteorder error file globals llist memory memorytrack misc msgsys objpool rect start strings systemdirs
core: systemfiles systemshell timer types version wholefile
coders: base64 bitfile crc crypt lzss rle
files: archive cachedlog xiff
kcbl: kcbl
pictures: bitmap jpeg palette pictype
screens: alpha font screen sprite
input: keyboard mouse replay
gui: button checkbox control frame groupbox radiobutton static titlebar url winctrl window
gui/resources: dialog resdata resgrammar
win: dibscreen
umbrella: host system tarvix
'

# HEADER: names that stand for its use.
names='
string.h (mem(cpy|set|move|cmp|chr)|str(len|cpy|ncpy|cmp|ncmp|chr|rchr|str|cat|ncat|spn|cspn|pbrk)) *[(]
stdio.h FILE
stdio.h (fopen|fclose|fread|fwrite|fseek|ftell|fflush|v?snprintf|fprintf|fputs|fgets|sscanf|fputc|fgetc) *[(]
stdlib.h (strto(l|ul|d|ll|ull)|atoi|atof|atol|qsort|abort|exit|getenv) *[(]
stdint.h (u?int(8|16|32|64)|u?intptr)_t|SIZE_MAX
stdarg.h va_(list|start|end|arg|copy)
errno.h errno
limits.h (U?(INT|LONG)_(MAX|MIN)|CHAR_BIT|PATH_MAX)
algorithm std::(min|max|sort|fill|fill_n|clamp|reverse|copy|find|lower_bound|upper_bound|equal)
utility std::(swap|exchange|move|pair)
type_traits std::(is_[a-z_]+|conditional_t|enable_if_t)
win/win32.h (LRESULT|WPARAM|LPARAM|HANDLE|DWORD|HBITMAP|MSG|BITMAPINFO|RECT|FILETIME|IShellLinkA|INT_PTR|HMENU|HPALETTE)
'

git ls-files -co --exclude-standard 'src/*.cpp' 'src/*.h' 'src/*.inl' 'include/tarvix/*.h' 'platform/*.cpp' 'platform/*.h' |
    while read -r file; do [ -f "$file" ] && printf '%s\n' "$file"; done |
    ROOMS=$rooms HEADERS=$headers NAMES=$names awk '
    function fail(text) { print file ":" line ": " text; bad = 1 }
    # gui/resources stands in a room of its own inside another one.
    function room_of(path) {
        sub(/\/[^\/]*$/, "", path)
        while (path != "" && !(path in order) && sub(/\/[^\/]*$/, "", path)) continue
        return path
    }
    function look_include(to,    there) {
        if (to ~ /^tarvix\//) {
            sub(/^tarvix\//, "", to)
            sub(/\.h$/, "", to)
            if (!(to in home)) { fail("tarvix/" to ".h has no room in scripts/check_layers.sh"); return }
            there = home[to]
            if (there == "umbrella" && home_of_file != "umbrella")
                fail("tarvix/" to ".h is an umbrella for hosts")
        } else if (to ~ /^(windows|winsock|shlobj|shellapi|objbase|mmsystem|SDL|X11|unistd|dlfcn|netdb|dirent|direct|io\.h|sys\/mman)/) {
            if (here != "win" && here != "platform" || file ~ /^include/) fail(to " is a header of the platform")
            return
        } else if (to ~ /^platform\//) {
            if (here != "platform" && file != "src/win/win32.h") fail(to " is for src/win/win32.h alone")
            return
        } else if (to ~ /\//) {
            there = room_of(to)
            if (!(there in order)) return
        } else
            return
        if (here == "platform") {
            if (to != "types") fail("platform/ stands apart and knows tarvix/types.h alone")
        } else if (there != here && there != "umbrella" && home_of_file != "umbrella" && !((here, there) in allowed))
            fail(here " may not use " there)
    }
    function end_file(    i) {
        if (file ~ /^src.*[.](cpp|h)$/)
            for (i = 1; i <= name_count; ++i)
                if (used[i] && !(name_header[i] in has) && !(name_header[i] in lent))
                    { line = used[i]; fail("uses what " name_header[i] " declares and does not include it") }
    }
    BEGIN {
        count = split(ENVIRON["ROOMS"], rows, "\n")
        for (r = 1; r <= count; ++r) {
            if (rows[r] == "") continue
            split(rows[r], parts, ": *")
            n = split(parts[2], near, " ")
            for (i = 1; i <= n; ++i) {
                if (!(near[i] in order)) { print "scripts/check_layers.sh: " near[i] " stands below " parts[1]; bad = 1 }
                allowed[parts[1], near[i]] = 1
            }
            order[parts[1]] = r
        }
        count = split(ENVIRON["HEADERS"], rows, "\n")
        for (r = 1; r <= count; ++r) {
            if (rows[r] == "") continue
            split(rows[r], parts, ": *")
            n = split(parts[2], list, " ")
            for (i = 1; i <= n; ++i) home[list[i]] = parts[1]
        }
        count = split(ENVIRON["NAMES"], rows, "\n")
        for (r = 1; r <= count; ++r) {
            if (rows[r] == "") continue
            name_header[++name_count] = substr(rows[r], 1, index(rows[r], " ") - 1)
            name_pattern[name_count] = "(^|[^A-Za-z0-9_.>:])(" substr(rows[r], index(rows[r], " ") + 1) ")"
            if (rows[r] !~ /\[\(\]$/) name_pattern[name_count] = name_pattern[name_count] "([^A-Za-z0-9_]|$)"
        }
    }
    {
        file = $0
        line = 0
        split("", has); split("", used); split("", lent)
        home_of_file = ""
        here = file
        if (file ~ /^src\//) { sub(/^src\//, "", here); here = room_of(here) }
        else if (file ~ /^platform\//) here = "platform"
        else {
            sub(/^include\/tarvix\//, "", here)
            sub(/\.h$/, "", here)
            if (!(here in home)) fail("the header has no room in scripts/check_layers.sh")
            here = home_of_file = home[here]
        }
        if (file == "src/prefix.h") next
        if (file ~ /^src\// && !(here in order)) fail("the folder is no room of scripts/check_layers.sh")
        first = ""
        while ((getline text < file) > 0) {
            ++line
            if (text ~ /^ *# *include/) {
                to = text
                sub(/^[^<"]*[<"]/, "", to)
                sub(/[>"].*/, "", to)
                has[to] = 1
                # What the own header includes need not be said twice.
                if (first == "" && to ~ /^tarvix\//) {
                    first = "include/" to
                    while ((getline own < first) > 0)
                        if (own ~ /^#include/) { sub(/^[^<"]*[<"]/, "", own); sub(/[>"].*/, "", own); lent[own] = 1 }
                    close(first)
                }
                look_include(to)
                continue
            }
            sub(/\/\/.*/, "", text)
            gsub(/"([^"\\]|\\.)*"/, "", text)
            for (i = 1; i <= name_count; ++i)
                if (!used[i] && text ~ name_pattern[i]) used[i] = line
        }
        close(file)
        end_file()
    }
    END { exit bad }'
status=$?

# The drawing of the rooms says the same.
drawn=$(sed -n 's/^    \(.*\) --> \(.*\)$/\1 \2/p' docs/architecture.md | sort)
told=$(while IFS=: read -r room near; do for to in $near; do echo "$room $to"; done; done <<<"$rooms" | sort)
if [ "$drawn" != "$told" ]; then
    echo "docs/architecture.md draws the rooms differently (< drawn, > told here):"
    diff <(echo "$drawn") <(echo "$told")
    exit 1
fi
[ $status = 0 ] && exit 0
echo "These includes break the order of the rooms (docs/architecture.md)."
exit 1
