#!/bin/sh
# Formats all C and C++ sources; with --check only names the files that are not formatted, and the lines that
# clang-format cannot put right.
set -eu
cd "$(dirname "$0")/.."
sources=$(find bench examples fuzz host include src tests tools -name '*.[ch]' -o -name '*.cpp' 2>/dev/null | sort)

# hold PATTERN ADVICE FILE...: gives the advice for every line with the pattern.
held=true
hold() {
    pattern=$1 advice=$2
    shift 2
    if found=$(grep -nHE "$pattern" "$@"); then
        echo "$found" | sed "s|^\([^:]*:[0-9]*\):[[:space:]]*|\1: $advice: |"
        held=false
    fi
}

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
        held=false
    fi
    place='\**(\([^()]*\)|[[:alpha:]_])[][[:alnum:]_.>-]*(\+\+|--)'
    # shellcheck disable=SC2046,SC2086
    {
        hold "(^|[;{)]|else)[[:space:]]*$place;|for \(.*;.*[;,] ${place}[,)]" 'write ++x or --x where the value is unused' $sources
        hold '^[[:space:]]*#[[:space:]]*pragma once' 'write an include guard, FOLDER_NAME_H' $sources
        hold '^(template <.*> )?((inline|constexpr) )*static ' 'write an unnamed namespace in place of static' \
            $(echo "$sources" | grep 'cpp$')
        hold '^TEST(_[FP])?\(' 'write tests in a file that is named ..._test.cpp' \
            $(echo "$sources" | grep '^tests/.*cpp$' | grep -v '_test\.cpp$')
    }
    $held
    ;;
*)
    echo "usage: $0 [--check]" >&2
    exit 2
    ;;
esac
