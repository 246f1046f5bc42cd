#!/usr/bin/env bash
# clang-tidy over the library's own folders.
set -u -o pipefail
cd "$(dirname "$0")/.."
. scripts/common.sh
build linux-release tarvix
git ls-files 'src/*.cpp' |
    xargs -P "$(nproc)" -n 4 clang-tidy --quiet -p build/linux-release 2>/dev/null | grep -E 'warning:|error:' && exit 1
exit 0
