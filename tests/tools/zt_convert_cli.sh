#!/usr/bin/env bash
# zt-convert as a user runs it: exit codes, one-line messages on stderr, and
# no output file (not even a hidden temporary one) after a failure.
#
#   zt_convert_cli.sh <zt-convert> <scratch dir>
set -uo pipefail
tool=$1 dir=$2
rm -rf "$dir"
mkdir -p "$dir"
cd "$dir" || exit 1
failures=0 passed=0

printf 'P5\n3 2\n255\n\001\002\003\004\005\377' >grey.pgm
printf 'P5\n3 2\n255\n\001\002' >cut.pgm
printf 'GIF89a' >fake.png
printf 'P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE CMYK\nENDHDR\n\001\002\003\004' >cmyk.pam
inputs=$(ls -A | sort)

# expect <exit code> <stderr pattern> -- <arguments...>
expect() {
  local code=$1 pattern=$2
  shift 3
  local err status
  err=$("$tool" "$@" 2>&1 >/dev/null)
  status=$?
  local problem=""
  [[ $status -eq $code ]] || problem="exit $status, wanted $code"
  [[ $code -eq 0 || $(wc -l <<<"$err") -eq 1 ]] || problem="$problem; message is not one line"
  [[ $err =~ $pattern ]] || problem="$problem; stderr '$err' lacks '$pattern'"
  if [[ $code -ne 0 && $(ls -A | sort) != "$inputs" ]]; then
    problem="$problem; left behind: $(comm -13 <(echo "$inputs") <(ls -A | sort) | tr '\n' ' ')"
    # Clean up so the next case starts from the inputs alone.
    comm -13 <(echo "$inputs") <(ls -A | sort) | xargs -r rm -f --
  fi
  if [[ -n $problem ]]; then
    echo "FAIL zt-convert $*: ${problem#; }"
    failures=$((failures + 1))
  else
    passed=$((passed + 1))
  fi
}

expect 2 'needs an INPUT and an OUTPUT'          -- grey.pgm
expect 2 'unknown option --bogus'                -- --bogus grey.pgm out.png
expect 2 "unknown layout 'CMYK'"                 -- -l CMYK grey.pgm out.png
expect 2 "unknown file format of 'out.tiff'"     -- grey.pgm out.tiff
expect 2 "unknown file format 'tiff'"            -- -f tiff grey.pgm out.png
expect 2 'standard output needs its format'      -- grey.pgm -
expect 2 'needs its format given'                -- grey.raw out.png
expect 2 'PPM files hold RGB'                    -- -t Double grey.pgm out.ppm
expect 2 'BayerGB target is only a copy'         -- -l BayerGB grey.pgm out.raw
expect 2 'max-pixels needs a positive'           -- --max-pixels -3 grey.pgm out.png
expect 1 "cannot open 'absent.png'"              -- absent.png out.png
expect 1 'cut.pgm: file is truncated'            -- cut.pgm out.png
expect 1 'fake.png: not a PNG file \(bad magic\)' -- fake.png out.pgm
expect 1 "unsupported PAM tuple type 'CMYK'"     -- cmyk.pam out.png
expect 1 'larger than 5 pixels'                  -- --max-pixels 5 grey.pgm out.png
expect 1 "nowhere"                               -- grey.pgm nowhere/out.png

# Successful runs, and a lossless round trip through PNG and raw.
expect 0 '' -- grey.pgm grey.png
expect 0 '' -- grey.png grey.raw
expect 0 '' -- -r '3x2, Lum, UByte' grey.raw back.pgm
if ! cmp -s grey.pgm back.pgm; then
  echo "FAIL: grey.pgm did not survive PNG and raw unchanged"
  failures=$((failures + 1))
else
  passed=$((passed + 1))
fi
# An existing output is replaced only by a complete file.
cp grey.png keep.png
inputs=$(ls -A | sort)
expect 1 'cut.pgm: file is truncated' -- cut.pgm keep.png
if ! cmp -s grey.png keep.png; then
  echo "FAIL: a failed run changed an existing output"
  failures=$((failures + 1))
fi

# check <description> <command...>: a shell pipeline that must succeed.
check() {
  local what=$1
  shift
  if "$@"; then
    passed=$((passed + 1))
  else
    echo "FAIL: $what"
    failures=$((failures + 1))
  fi
}

# Pipelines: standard input is recognised by its content, standard output
# takes the format -f names; a conversion to PNG and back is lossless.
check "a pipeline through PNG and PAM keeps the pixels" \
  sh -c '"$1" - -f png - <grey.pgm | "$1" - -f pam - | "$1" - -f pgm - | cmp -s - grey.pgm' sh "$tool"
check "-f wins over the extension" \
  sh -c '"$1" -f pam grey.pgm looks-like.png && head -c 3 looks-like.png | grep -q P7 && rm looks-like.png' sh "$tool"
check "a raw block read from standard input" \
  sh -c 'tail -c 6 grey.pgm | "$1" -r "3x2, Lum, UByte" - -f pgm - | cmp -s - grey.pgm' sh "$tool"
check "--info names standard input '-'" \
  sh -c '"$1" --info - <grey.pgm | grep -qx -- "-: PGM 3x2, Lum, UByte; magic=P5 maxval=255"' sh "$tool"
check "--verbose writes to stderr when the image goes to stdout" \
  sh -c '"$1" -v grey.pgm -f pgm - 2>&1 >/dev/null | grep -q "(3x2, Lum, UByte) -> -"' sh "$tool"
check "--version prints the version" sh -c '"$1" --version | grep -q "^zt-convert (Zt.Core.Ex) [0-9]"' sh "$tool"

# Interrupted while it writes (16 MB of noise take a while to deflate), the
# tool dies of the signal, as the shell must see, and leaves no file behind.
# SIGINT is left to the unit tests: a background job of a script ignores it.
head -c 16777216 /dev/urandom >noise.raw
for signal in TERM HUP; do
  "$tool" -r "4096x4096, Lum, UByte" noise.raw noise.png &
  pid=$!
  while ! compgen -G '.noise.png.*' >/dev/null && kill -0 "$pid" 2>/dev/null; do :; done
  kill -s "$signal" "$pid" 2>/dev/null
  { wait "$pid"; } 2>/dev/null
  status=$?
  wanted=$((128 + $(kill -l "$signal")))
  left=$(compgen -G '*noise.png*' | tr '\n' ' ')
  if [[ $status -ne $wanted || -n $left ]]; then
    echo "FAIL: SIG$signal while writing: exit $status, wanted $wanted${left:+; left behind: $left}"
    failures=$((failures + 1))
    rm -f .noise.png.* noise.png
  else
    passed=$((passed + 1))
  fi
done
rm -f noise.raw

echo "${passed} passed, ${failures} failed"
[[ $failures -eq 0 ]]
