#!/bin/sh
# Installs the Debian packages that the project needs and that are missing; quick when none are.
#
#   scripts/install-deps.sh            native build, tests, formatting and lint
#   scripts/install-deps.sh targets    also the i386 and ARMv7 toolchains and libraries
#   scripts/install-deps.sh bench      also what the benchmarks compare with
#   scripts/install-deps.sh assimp     also that peer of make bench-peers
#   scripts/install-deps.sh f3d        also that one, and a display without a screen for it
#   scripts/install-deps.sh fuzz       also the compiler with the fuzzer
set -eu

native='build-essential cmake ninja-build pkg-config git python3
    libpng-dev libjpeg62-turbo-dev libcli11-dev nlohmann-json3-dev libmeshoptimizer-dev
    libegl-dev libgles-dev libegl1 libgles2 libegl-mesa0 libgl1-mesa-dri
    libgtest-dev glslang-tools clang-format clang-tidy valgrind'
targets='g++-i686-linux-gnu g++-arm-linux-gnueabihf qemu-user googletest
    libegl1:i386 libgles2:i386 libegl-mesa0:i386 libgl1-mesa-dri:i386 libasan8:i386 libubsan1:i386
    libegl1:armhf libgles2:armhf libegl-mesa0:armhf libgl1-mesa-dri:armhf'
bench='libtinyobjloader-dev'
assimp='libassimp-dev'
f3d='f3d xvfb'
fuzz='clang libclang-rt-dev'

wanted=$native
foreign=
for argument in "$@"; do
    case $argument in
    targets)
        wanted="$wanted $targets"
        foreign='i386 armhf'
        ;;
    bench) wanted="$wanted $bench" ;;
    assimp) wanted="$wanted $assimp" ;;
    f3d) wanted="$wanted $f3d" ;;
    fuzz) wanted="$wanted $fuzz" ;;
    *)
        echo "usage: $0 [targets] [bench] [assimp] [f3d] [fuzz]" >&2
        exit 2
        ;;
    esac
done

if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    echo "$0: no apt here. Install what these Debian packages hold, then run cmake yourself (presets: CMakePresets.json):" >&2
    echo "$wanted" | tr -s ' \n' ' ' | fold -s -w 100 >&2
    exit 1
fi

native_architecture=$(dpkg --print-architecture)
installed=$(dpkg-query -W -f '${db:Status-Status} ${Package}:${Architecture} \n' | sed -n 's/^installed//p')
missing=
for package in $wanted; do
    case $package in
    *:*) names=$package ;;
    *) names="$package:$native_architecture $package:all" ;;
    esac
    found=
    for name in $names; do
        case $installed in
        *" $name "*) found=1 ;;
        esac
    done
    [ -n "$found" ] || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

if [ "$(id -u)" = 0 ]; then
    root=
elif command -v sudo >/dev/null; then
    root=sudo
else
    echo "$0: missing packages, and neither root nor sudo to install them with:$missing" >&2
    exit 1
fi
apt() { $root env DEBIAN_FRONTEND=noninteractive apt-get -q -o Dpkg::Use-Pty=0 "$@"; }

echo "Installing:$missing"
for architecture in $foreign; do
    dpkg --print-foreign-architectures | grep -qx "$architecture" || $root dpkg --add-architecture "$architecture"
done

# An index that cannot be had now may be one we do not need: go on, the install will tell.
apt update || echo "$0: some package lists could not be updated" >&2
# shellcheck disable=SC2086
if apt install -y --no-install-recommends $missing; then
    exit 0
fi
# A library must have the same version on every architecture. Where the package lists disagree, as when
# the security list of only one architecture could be had, the release itself has a matching set.
. /etc/os-release
echo "$0: trying again with the packages of $VERSION_CODENAME itself; some may get an older version" >&2
pin=$(mktemp)
trap 'rm -f "$pin"' EXIT
printf 'Package: *\nPin: release n=%s\nPin-Priority: 1001\n' "$VERSION_CODENAME" >"$pin"
chmod a+r "$pin"
# shellcheck disable=SC2086
apt -o Dir::Etc::Preferences="$pin" install -y --no-install-recommends --allow-downgrades $missing
