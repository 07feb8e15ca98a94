#!/bin/sh
# Renders every picture that assets/demo.txt lists, in every shading model, into demo/.
set -eu
cd "$(dirname "$0")/.."
tool=${MODEL3D_TOOL:-build/release/bin/model3d}
mkdir -p demo

count=0
while read -r name file options || [ "$name" ]; do
    case $name in '' | '#'*) continue ;; esac
    for shading in gouraud blinn-phong flat; do
        picture=demo/$name-$shading.png
        # shellcheck disable=SC2086 # the options are words without blanks or wildcards
        if ! "$tool" render "assets/$file" -o "$picture" $options --set shading_model="$shading" </dev/null; then
            echo "demo: $picture was not made: rendering assets/$file failed" >&2
            exit 1
        fi
        count=$((count + 1))
    done
done <assets/demo.txt
echo "$count pictures of the samples are in $PWD/demo:"
ls demo/*.png
