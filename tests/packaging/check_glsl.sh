#!/bin/sh
# check_glsl.sh VALIDATOR FOLDER: every generated shader must be valid GLSL ES 1.00, as it is without a
# version line, and stay within what that language promises on every device: loops with constant
# bounds, arrays indexed by constants and loop counters.
set -eu
validator=$1
cd "$2"
limits=$(mktemp --suffix=.conf)
trap 'rm -f "$limits"' EXIT
"$validator" -c | sed -E 's/^(nonInductiveForLoops|whileLoops|doWhileLoops|general\w+) 1/\1 0/' >"$limits"
for kind in vert frag; do
    set -- *."$kind"
    if [ ! -f "$1" ]; then
        echo "$PWD: no $kind shader" >&2
        exit 1
    fi
    for shader in "$@"; do
        "$validator" "$limits" "$shader"
    done
done
