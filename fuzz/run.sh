#!/bin/sh
# Runs the fuzz targets built in FOLDER, each for SECONDS, with the command line on top of its source. What
# they learn stays in FOLDER/fuzz/corpus; what they find goes into tests/crashers once it is fixed.
#
#   fuzz/run.sh FOLDER SECONDS [TARGET...]
#
# A file of a few kilobytes may take 64 MiB. The time limit is for hangs: the clock goes on while a busy machine
# does something else; the replay, without sanitizers, counts processor time.
set -eu
folder=$1 seconds=$2
shift 2
cd "$(dirname "$0")/.."
# shellcheck disable=SC2046
[ $# -gt 0 ] || set -- $(cd "$folder/bin" && ls fuzz_* | sed 's/^fuzz_//')
# Freed memory that is held back is not the target's.
export ASAN_OPTIONS=allocator_may_return_null=1:quarantine_size_mb=16
limits="-max_len=8192 -rss_limit_mb=256 -malloc_limit_mb=64 -timeout=10 -max_total_time=$seconds"
for target in "$@"; do
    corpus=$folder/fuzz/corpus/$target findings=$folder/fuzz/findings/$target
    mkdir -p "$corpus" "$findings"
    line=$(sed -n "s|^//   fuzz_|$folder/bin/fuzz_|p" "fuzz/$target.cpp" |
        sed "s|CORPUS|$corpus|; s|SEEDS|$folder/fuzz/seeds|g")
    echo "$line"
    # shellcheck disable=SC2086
    if ! $line $limits -close_fd_mask=1 -print_final_stats=1 "-artifact_prefix=$findings/" >"$findings/log" 2>&1; then
        tail -n 60 "$findings/log"
        exit 1
    fi
    grep -E 'DONE|stat::(number_of|peak_rss)' "$findings/log"
done
