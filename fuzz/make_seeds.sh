#!/bin/sh
# Writes short seeds reaching each family and route of the targets that read choices from their
# input (the file readers' seeds are committed files); rerun when such a target reads otherwise.
set -eu
cd "$(dirname "$0")/corpus"

# $1 bytes counting up from $2 in steps of $3, then the suffix $4 (octal escapes): the targets
# take their choices from the end and samples from the front.
bytes() {
  i=0
  while [ "$i" -lt "$1" ]; do
    printf "\\$(printf %o $((($2 + i * $3) % 256)))"
    i=$((i + 1))
  done
  printf "$4"
}

for route in 0 1 2 3 4 5; do
  bytes 48 $((route * 37)) 29 "\\00$route\\021\\003\\002\\005\\001\\004\\003\\007\\010\\00$route" \
    > zt_fuzz_convert/route-$route
done
for family in 0 1 2 3 4 5 6 7; do
  bytes 160 $((family * 11)) 7 "\\$(printf %o $family)" > zt_fuzz_arrays/family-$family
done
# target, name, then the bytes: a count, start and step with a suffix, or text
while read -r d name n start step suffix; do
  case $n in
    [0-9]*) bytes "$n" "$start" "$step" "$suffix" ;;
    *) printf "$n" ;;
  esac > "$d/$name"
done <<'SEEDS'
zt_fuzz_metadata mixed 200 3 5
zt_fuzz_metadata counting 200 1 3
zt_fuzz_metadata names aabbab\001\000\002\001\000\001\003\002\000\000\001\000
zt_fuzz_read_raw lum-ubyte 24 1 7 \003\002\001
zt_fuzz_read_raw bayer-ushort 48 5 11 \001\004\003
zt_fuzz_read_raw rgba-float 64 9 13 \001\001\006
zt_fuzz_read_raw uneven 17 2 3 \002\000\007
zt_fuzz_array_string_split fields ,a,,b
zt_fuzz_array_string_split delimiters-only ,,
zt_fuzz_array_string_split trailing ;a;b;
zt_fuzz_array_string_split blanks \040x\040\040y
zt_fuzz_array_string_split nul-ends-text ,a\000,b
zt_fuzz_array_string_split high-bytes \377\303\251\377\377
SEEDS
