#!/usr/bin/env bash
# check_exports.sh LIBRARY: every name of tests/exports.txt is exported, and
# none of those marked with a ! there.
set -u -o pipefail
cd "$(dirname "$0")/.."
library=${1:?usage: check_exports.sh LIBRARY}
[ -f "$library" ] || { echo "There is no $library."; exit 1; }

# Demangled, with arguments, one a line.
exported() {
    case $library in
    *.dll)
        # The leading underscore of 32-bit names is gone in this table.
        objdump -p "$library" |
            sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/s/^\t\[.*\] *\([^ ]*\)$/\1/p' | sed 's/^__Z/_Z/' | c++filt
        ;;
    *) nm -DCg --defined-only "$library" | sed -E 's/^[0-9a-f]+ . //' ;;
    esac
}

exported | sort -u | sed 's/(.*//; s/\[abi:[^]]*\]//g' | sort | uniq -c |
    awk -v library="$library" '
        listing { count = $1; sub(/^ *[0-9]+ /, ""); exports[$0] = count; next }
        /^(#|$)/ { next }
        {
            ++named
            wanted = 1
            if (match($0, / [0-9]+$/)) {
                wanted = substr($0, RSTART) + 0
                $0 = substr($0, 1, RSTART - 1)
            }
        }
        /^!/ {
            if (substr($0, 2) in exports) {
                print library " exports " substr($0, 2) ", which is for the library alone"
                bad = 1
            }
            next
        }
        exports[$0] + 0 < wanted { print library " exports " exports[$0] + 0 " of " wanted " " $0; bad = 1 }
        END {
            if (!named) print "tests/exports.txt names nothing"
            exit bad || !named
        }' listing=1 - listing= tests/exports.txt
