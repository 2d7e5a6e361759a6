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

# The file readers: small files of each format and its variants.
d=zt_fuzz_read_netpbm
mkdir -p $d
printf 'P1\n# plain bitmap\n5 2\n1 0 1 0 1\n01010\n' > $d/plain-bitmap
printf 'P4\n10 2\n\252\300\125\000' > $d/packed-bitmap
printf 'P2\n3 2\n1000\n0 500 1000\n1 2 3\n' > $d/plain-grey
printf 'P3\n2 1\n15\n15 0 7  1 2 3\n' > $d/plain-colour
printf 'P5\n3 2\n255\n\001\002\003\004\005\377' > $d/grey
printf 'P5 # comment\n2 1\n65535\n\377\376\000\001' > $d/grey-16
printf 'P6\n2 1\n100\n\000\062\144\001\002\003' > $d/colour-maxval

d=zt_fuzz_read_pam
mkdir -p $d
printf 'P7\nWIDTH 2\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n\001\002\003\004\005\006\007\010' > $d/rgba
printf 'P7\n# comment\nWIDTH 1\nHEIGHT 2\nDEPTH 2\nMAXVAL 1000\nTUPLTYPE GRAYSCALE_ALPHA\nENDHDR\n\003\350\000\000\000\001\001\364' > $d/grey-alpha-16
printf 'P7\nWIDTH 3\nHEIGHT 1\nDEPTH 1\nMAXVAL 1\nTUPLTYPE BLACKANDWHITE\nENDHDR\n\001\000\001' > $d/bitmap
printf 'P7\nWIDTH 1\nHEIGHT 1\nDEPTH 3\nMAXVAL 255\nENDHDR\n\011\012\013' > $d/no-tuple-type

d=zt_fuzz_read_pfm
mkdir -p $d
printf 'Pf\n2 1\n-1.0\n\000\000\200\077\000\000\000\077' > $d/grey-little
printf 'PF\n1 2\n1.0\n\077\200\000\000\000\000\000\000\177\300\000\000\077\000\000\000\200\000\000\000\377\200\000\000' > $d/colour-big

d=zt_fuzz_read_raw
mkdir -p $d
bytes 24 1 7 "\\003\\002\\001" > $d/lum-ubyte
bytes 48 5 11 "\\001\\004\\003" > $d/bayer-ushort
bytes 64 9 13 "\\001\\001\\006" > $d/rgba-float
bytes 17 2 3 "\\002\\000\\007" > $d/uneven

# PNG: every colour type and bit depth, a palette with transparency and an
# interlaced image, made with Debian's python3 and zlib.
d=zt_fuzz_read_png
mkdir -p $d
/usr/bin/python3 - "$d" <<'PY'
import struct, sys, zlib
out = sys.argv[1]
def chunk(kind, data):
    return struct.pack('>I', len(data)) + kind + data + struct.pack('>I', zlib.crc32(kind + data))
def png(name, width, height, depth, colour, rows, interlace=0, extra=b''):
    header = struct.pack('>IIBBBBB', width, height, depth, colour, 0, 0, interlace)
    data = b''.join(b'\0' + row for row in rows)
    with open(out + '/' + name, 'wb') as f:
        f.write(b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', header) + extra +
                chunk(b'IDAT', zlib.compress(data)) + chunk(b'IEND', b''))
png('grey-1bit', 9, 2, 1, 0, [b'\xa5\x80', b'\x5a\x00'])
png('grey-16', 2, 2, 16, 0, [b'\x00\x01\xff\xfe', b'\x12\x34\x56\x78'])
png('grey-alpha', 2, 1, 8, 4, [b'\x10\x20\x30\x40'])
png('rgb', 2, 2, 8, 2, [bytes(range(6)), bytes(range(10, 16))])
png('rgba-16', 1, 1, 16, 6, [bytes(range(8))])
png('palette-trns', 4, 1, 2, 3, [b'\x1b'], extra=chunk(b'PLTE', bytes(range(12))) + chunk(b'tRNS', b'\x00\x80'))
png('grey-trns', 2, 1, 8, 0, [b'\x05\x06'], extra=chunk(b'tRNS', b'\x00\x05'))
# One pixel interlaced: only the first pass has it.
png('interlaced', 1, 1, 8, 2, [b'\x01\x02\x03'], interlace=1)
PY
