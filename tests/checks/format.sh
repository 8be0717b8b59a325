#!/bin/bash
# Every C++ file that belongs to the project is laid out as .clang-format says; the first differences are shown.
# Outside a git checkout every C++ file counts.
set -u
cd "$(dirname "$0")/../.."
if files=$(git ls-files -co --exclude-standard '*.h' '*.cpp' 2>/dev/null); then :; else
    files=$(find . -path ./build -prune -o \( -name '*.h' -o -name '*.cpp' \) -print)
fi
[ -n "$files" ] || { echo 'format: no C++ file found' >&2; exit 1; }
clang-format-19 --dry-run -Werror $(for file in $files; do [ -e "$file" ] && echo "$file"; done)
