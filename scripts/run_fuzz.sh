#!/usr/bin/env bash
# run_fuzz.sh TARGET SECONDS: from a copy of the seeds, which stay as they are.
set -u
target=$(readlink -f "$1")
name=$(basename "$target")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/corpus"
"$(dirname "$target")/make_seeds" "$work/corpus" "${name#fuzz_}" || exit 1
cd "$work" || exit 1
if ! "$target" -max_total_time="$2" -timeout=10 -rss_limit_mb=2048 -print_final_stats=0 corpus >log 2>&1; then
    tail -n 40 log
    exit 1
fi
grep -E '^Done|#[0-9]+.DONE' log | tail -n 1
