#!/usr/bin/env bash
# check_tidy.sh [--changed]: clang-tidy over the library's own folders, or over
# what has changed there since the last commit "release: ...".
set -u -o pipefail
cd "$(dirname "$0")/.."
. scripts/common.sh
files=$(git ls-files 'src/*.cpp')
if [ "${1:-}" = --changed ]; then
    release=$(git log -1 --format=%H --grep='^release: ' 2>/dev/null)
    [ -z "$release" ] || files=$(git diff --name-only --diff-filter=d "$release" -- 'src/*.cpp')
fi
[ -n "$files" ] || exit 0
# The table of commands is all that is needed: nothing is built here.
cmake --preset linux-release >/dev/null || exit 1
if ! log=$(xargs -P "$(nproc)" -n 4 clang-tidy --quiet -p build/linux-release <<<"$files" 2>&1); then
    grep -E 'warning:|error:' <<<"$log" || tail -n 20 <<<"$log"
    exit 1
fi
