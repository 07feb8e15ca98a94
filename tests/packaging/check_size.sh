#!/bin/sh
# check_size.sh READELF LIBRARY: what a device loads of the plug-in may be 96 KiB beside its picture of 512 x 512
# pixels. Padding between segments, which comes and goes by pages, does not count.
set -eu
bytes=$((-512 * 512 * 4))
for size in $("$1" -lW "$2" | sed -n 's/^ *LOAD *\(0x[0-9a-f]* *\)\{3\}\(0x[0-9a-f]*\) .*/\2/p'); do
    bytes=$((bytes + size))
done
echo "$bytes bytes beside the picture"
[ "$bytes" -gt 0 ] && [ "$bytes" -le $((96 * 1024)) ]
