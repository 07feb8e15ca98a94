#!/bin/sh
# check_size.sh STRIP LIBRARY: stripped, the plug-in may have 96 KiB beside its picture of 512 x 512 pixels.
set -eu
stripped=$(mktemp)
trap 'rm -f "$stripped"' EXIT
"$1" -o "$stripped" "$2"
bytes=$(($(wc -c <"$stripped") - 512 * 512 * 4))
echo "$bytes bytes beside the picture"
[ "$bytes" -gt 0 ] && [ "$bytes" -le $((96 * 1024)) ]
