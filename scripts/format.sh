#!/bin/sh
# Formats all C and C++ sources; with --check only names the files that are not formatted.
set -eu
cd "$(dirname "$0")/.."
sources=$(find bench examples fuzz host include src tests tools -name '*.[ch]' -o -name '*.cpp' 2>/dev/null | sort)
case ${1-} in
'')
    # shellcheck disable=SC2086
    clang-format -i $sources
    ;;
--check)
    # shellcheck disable=SC2086
    if ! report=$(clang-format --dry-run -Werror $sources 2>&1); then
        echo "Not formatted (make format does it):"
        echo "$report" | sed -n 's/^\([^: ]*\):[0-9]*:[0-9]*: error:.*/  \1/p' | sort -u | grep . || echo "$report"
        exit 1
    fi
    ;;
*)
    echo "usage: $0 [--check]" >&2
    exit 2
    ;;
esac
