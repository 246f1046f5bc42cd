#!/usr/bin/env bash
# Does what docs/guide.md says, as it is written there: saves the boxes that have
# a file name above them, runs those for the shell, and compares what it prints.
set -eu -o pipefail
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/home"
awk -v out="$work/steps" '
    /^```/ {
        if (open) {
            if (file != "") print "GUIDE_END" >out
            open = 0; file = ""
            next
        }
        open = 1
        if ($0 == "```sh") file = ""
        else if (file != "") print "cat >" file " <<\"GUIDE_END\"" >out
        else open = 2
        next
    }
    open == 1 { print >out }
    !open && /^`[^`]*`$/ { file = substr($0, 2, length($0) - 2) }
' docs/guide.md
expected=$(sed -n 's/^It prints `\(.*\)`$/\1/p' docs/guide.md)
[ -n "$expected" ] || { echo "The guide says nothing of what is printed."; exit 1; }
HOME=$work/home bash -eu "$work/steps" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
printed=$(tail -n 1 "$work/log")
[ "$printed" = "$expected" ] || { tail "$work/log"; echo "\"$expected\" was to be printed."; exit 1; }
