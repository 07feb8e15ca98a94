#!/bin/sh
# check_install.sh CMAKE BUILD_FOLDER C_COMPILER LIBDIR
# Installs into a scratch prefix, moves that elsewhere, and uses it as a stranger would: the tool, a C
# program built through pkg-config, the same through find_package.
set -eu
cmake=$1 build=$2 compiler=$3 libdir=$4
here=$(cd "$(dirname "$0")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

"$cmake" --install "$build" --prefix "$scratch/first" >"$scratch/log" || { cat "$scratch/log"; exit 1; }
prefix="$scratch/moved here"
mv "$scratch/first" "$prefix"
cd "$scratch"

echo "== tool"
sample=$(find "$prefix/share/model3d/samples" -name '*.obj' | sort | head -n 1)
"$prefix/bin/model3d" render "$sample" -o picture.png --size 32x32
[ -s picture.png ]

echo "== pkg-config"
PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig"
export PKG_CONFIG_PATH
plugin=$(pkg-config --variable=plugin model3d)
# pkg-config escapes the blank in the path for the shell.
eval "$compiler" -std=c11 -Wall -Wextra -Werror "$(pkg-config --cflags model3d)" \
    "'$here/consumer/consumer.c'" -o by-pkg-config "$(pkg-config --libs model3d)"
LD_LIBRARY_PATH="$prefix/$libdir" ./by-pkg-config "$(eval echo "$plugin")"

echo "== find_package"
"$cmake" -S "$here/consumer" -B by-cmake -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_C_COMPILER="$compiler" >log ||
    { cat log; exit 1; }
"$cmake" --build by-cmake >log || { cat log; exit 1; }
by-cmake/consumer "$(cat by-cmake/plugin-path)"
