#!/usr/bin/env bash
# The portable folders include no platform header. (src/prefix.h does, for src/win alone.)
set -u
cd "$(dirname "$0")/.."
bad=$(grep -nE '#include *[<"](windows|winsock|shlobj|SDL|X11|unistd|dlfcn|sys/mman|platform/|win/)' \
    src/*.cpp src/[!p]*.h src/ansi/* src/base/* src/gui/* include/tarvix/* 2>/dev/null)
if [ -n "$bad" ]; then
    echo "Platform headers are for src/win and platform/ only:"
    echo "$bad"
    exit 1
fi
