#!/bin/bash
# sanitized.sh BUILD-FOLDER PROGRAM                 runs a test program of a sanitized build
# sanitized.sh BUILD-FOLDER PROGRAM -- COMMAND...   runs a command that starts this program
# Status 77 when the program is not built.
program=$1/bin/$2
[ -x "$program" ] || { echo "skipped: $program is not built"; exit 77; }
export ASAN_OPTIONS=detect_stack_use_after_return=1 UBSAN_OPTIONS=print_stacktrace=1 \
    TSAN_OPTIONS=second_deadlock_stack=1
if [ "${3:-}" = -- ]; then
    # No strict string checks: the toolkit's keyboard library cuts strings out of replies that end without a zero.
    export ASAN_OPTIONS=$ASAN_OPTIONS:detect_leaks=0
    exec "${@:4}"
fi
# Death tests fork; the other tests say all there is to say about threads and memory.
export ASAN_OPTIONS=$ASAN_OPTIONS:strict_string_checks=1
exec "$program" --gtest_brief=1 --gtest_filter=-*Death*.*
