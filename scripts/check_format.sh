#!/usr/bin/env bash
# Every source is laid out as .clang-format says.
set -eu
cd "$(dirname "$0")/.."
git ls-files '*.cpp' '*.h' '*.inl' | xargs clang-format --dry-run --Werror
