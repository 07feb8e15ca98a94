#!/bin/sh
# clang-tidy over what is built for users and over the benchmarks, with the headers that they include.
#
#   scripts/lint.sh           bench host include src tools
#   scripts/lint.sh --all     also examples, fuzz and tests
#   scripts/lint.sh FILE...   those
#
# Configures a build of its own, for how each source is compiled, and makes nothing in it but generated sources.
set -eu
cd "$(dirname "$0")/.."
sources_in() { find "$@" -name '*.c' -o -name '*.cpp' | sort; }
# shellcheck disable=SC2046
case ${1-} in
'') set -- $(sources_in bench host include src tools) ;;
--all) set -- $(sources_in bench examples fuzz host include src tests tools) ;;
esac

build=build/lint
cmake -S . -B $build/cmake -G Ninja -DCMAKE_BUILD_TYPE=Release -DMODEL3D_BUILD_TOOLS=ON -DMODEL3D_BUILD_EXAMPLES=ON \
    -DMODEL3D_BUILD_BENCH=ON -DMODEL3D_BUILD_TESTS=ON \
    -DCMAKE_C_COMPILER_LAUNCHER= -DCMAKE_CXX_COMPILER_LAUNCHER= >/dev/null
cmake --build $build/cmake --target glsl >/dev/null
# The first way in which a source is compiled: several in one process make findings that none has alone. With
# clang's one limit of constant evaluation for g++'s two.
python3 - $build "$@" <<'PYTHON'
import json, os, re, sys

build, files = sys.argv[1], sys.argv[2:]
with open(f"{build}/cmake/compile_commands.json", encoding="utf-8") as commands:
    entries = json.load(commands)
first = {}
for entry in entries:
    flags = re.sub(r" -fconstexpr-[a-z]*-limit=\d+", " -fconstexpr-steps=100000000", entry["command"])
    first.setdefault(os.path.relpath(entry["file"]), {**entry, "command": flags})
with open(f"{build}/compile_commands.json", "w", encoding="utf-8") as out:
    json.dump(list(first.values()), out)
missing = set(map(os.path.normpath, files)) - first.keys()
for file in sorted(missing):
    print(f"{file}: not part of the build, so there is no telling how to compile it", file=sys.stderr)
sys.exit(1 if missing else 0)
PYTHON
printf '%s\n' "$@" | xargs -P "$(nproc)" -n 1 clang-tidy --quiet -p $build --extra-arg=-Wno-unknown-warning-option
