#!/usr/bin/env bash
# clang-tidy over the library's own folders.
set -u -o pipefail
cd "$(dirname "$0")/.."
. scripts/common.sh
build linux-release tarvix
if ! log=$(git ls-files 'src/*.cpp' | xargs -P "$(nproc)" -n 4 clang-tidy --quiet -p build/linux-release 2>&1); then
    grep -E 'warning:|error:' <<<"$log" || tail -n 20 <<<"$log"
    exit 1
fi
