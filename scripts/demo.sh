#!/bin/sh
# Renders every sample model in every shading model into demo/.
set -eu
cd "$(dirname "$0")/.."
tool=build/release/bin/model3d
mkdir -p demo
count=0
for model in assets/*/*.obj; do
    name=$(basename "$model" .obj)
    for shading in gouraud blinn-phong flat; do
        picture=demo/$name-$shading.png
        "$tool" render "$model" -o "$picture" --size 640x480 --set shading_model="$shading"
        count=$((count + 1))
    done
done
echo "$count pictures of the sample models are in $PWD/demo:"
ls demo/*.png
