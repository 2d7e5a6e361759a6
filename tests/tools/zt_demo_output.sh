#!/usr/bin/env bash
# Runs the demo into a fresh directory and checks its pictures with
# zt-convert: every PNG of the tour is there, and the pairs that must agree
# pixel for pixel do.
#
#   zt_demo_output.sh <zt-demo> <zt-convert> <scratch dir>
set -euo pipefail
demo=$1 tool=$2 dir=$3
rm -rf "$dir"
# Its options are options, not the name of a directory.
"$demo" --help | grep -q '^usage: zt-demo' || { echo "zt-demo --help prints no usage"; exit 1; }
"$demo" --version | grep -q '^zt-demo (Zt.Core.Ex) [0-9]' || { echo "zt-demo --version prints no version"; exit 1; }
if "$demo" --bogus 2>/dev/null; then echo "zt-demo --bogus succeeded"; exit 1; fi
[[ ! -e --help && ! -e --bogus ]] || { echo "zt-demo made a directory of an option"; exit 1; }
"$demo" "$dir" >"$dir.log" || { cat "$dir.log"; exit 1; }
cd "$dir"
status=0
for png in chart chart-bgra chart-rgb16 chart-lum chart-luma chart-lum-rgb chart-from-float \
           chart-from-signed mosaic; do
  [[ -s $png.png ]] || { echo "missing $png.png"; status=1; }
done

# same <a> <b> <layout> <type>: both files as raw pixels of that format agree.
same() {
  "$tool" -l "$3" -t "$4" "$1" "a.raw" && "$tool" -l "$3" -t "$4" "$2" "b.raw" || { status=1; return; }
  cmp -s a.raw b.raw || { echo "$1 and $2 differ as $3 $4"; status=1; }
}
same chart.png chart-bgra.png RGBA UByte          # a swap in memory, the same picture
same chart-lum.png chart-lum-rgb.png Lum UByte     # grey repeated, then its red taken back
same chart.png chart-rgb16.png RGB UByte         # alpha dropped before or after the 16 bits
same chart-lum.png chart.png Lum UByte             # luminance is the red sample
same chart.png chart-luma.png LumA UByte           # red and alpha
exit $status
