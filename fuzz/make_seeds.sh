#!/bin/sh
# Writes the seed corpora under corpus/, one directory per fuzz target: a
# few short inputs that reach each family and route, for the fuzzer to grow
# from. Rerun after changing how a target reads its input.
set -eu
cd "$(dirname "$0")/corpus"

# n bytes counting up from `start` in steps of `step`, then the suffix
# (octal escapes). The targets take their choices from the end of the input
# and sample bytes from its front.
bytes() {
  n=$1 start=$2 step=$3 suffix=$4
  i=0
  while [ "$i" -lt "$n" ]; do
    printf "\\$(printf %o $(( (start + i * step) % 256 )))"
    i=$((i + 1))
  done
  printf "$suffix"
}

d=zt_fuzz_array_string_split
mkdir -p $d
printf ',a,,b' > $d/fields
printf ',,' > $d/delimiters-only
printf ';a;b;' > $d/trailing
printf ' x  y' > $d/blanks
printf ',a\000,b' > $d/nul-ends-text
printf '\377\303\251\377\377' > $d/high-bytes

d=zt_fuzz_convert
mkdir -p $d
for route in 0 1 2 3 4 5; do
  bytes 48 $((route * 37)) 29 "\\00$route\\021\\003\\002\\005\\001\\004\\003\\007\\010\\00$route" > $d/route-$route
done

d=zt_fuzz_arrays
mkdir -p $d
for family in 0 1 2 3 4 5 6 7; do
  bytes 160 $((family * 11)) 7 "\\$(printf %o $family)" > $d/family-$family
done

d=zt_fuzz_metadata
mkdir -p $d
bytes 200 3 5 "" > $d/mixed
bytes 200 1 3 "" > $d/counting
printf 'aabbab\001\000\002\001\000\001\003\002\000\000\001\000' > $d/names
