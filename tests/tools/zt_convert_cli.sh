#!/usr/bin/env bash
# zt-convert as a user runs it (exit codes, stderr, streams, fatal signals), its completion and
# the demo's pictures. Usage: zt_convert_cli.sh <zt-convert> <completion> <scratch dir> [<zt-demo>]
set -uo pipefail
shopt -s extglob
tool=$1 completion=$2 dir=$3 demo=${4:-}
rm -rf "$dir" && mkdir -p "$dir/completion/sub" "$dir/empty" && cd "$dir" || exit 1
failures=0
fail() { echo "FAIL: $*" && failures=$((failures + 1)); }

printf 'P5\n3 2\n255\n\001\002\003\004\005\377' >grey.pgm
printf 'P5\n3 2\n255\n\001\002' >cut.pgm
inputs=$(ls -A)

# expect <exit code> <stderr pattern> <arguments...>: one line on stderr, nothing beside the inputs.
expect() {
  local code=$1 pattern=$2 err status && shift 2
  err=$("$tool" "$@" 2>&1 >/dev/null)
  status=$?
  [[ $status -eq $code && $(wc -l <<<"$err") -eq 1 && $err =~ $pattern && $(ls -A) == "$inputs" ]] ||
    fail "zt-convert $*: exit $status, wanted $code; stderr '$err', wanted '$pattern'; files $(ls -A)"
}

# The messages themselves are checked in process; here what the shell sees.
expect 2 "unknown layout 'CMYK'" -l CMYK grey.pgm out.png
# An existing output is replaced only by a complete file.
"$tool" grey.pgm grey.png && cp grey.png keep.png && inputs=$(ls -A) || fail "grey.pgm to PNG"
expect 1 'cut.pgm: file is truncated' cut.pgm keep.png
cmp -s grey.png keep.png || fail "a failed run changed an existing output"

# check <description> <shell command, the tool as $1>: standard input is known by its content.
check() { sh -c "$2" sh "$tool" || fail "$1"; }
check "a pipeline through PNG and PAM keeps the pixels" '"$1" - -f png - <grey.pgm | "$1" - -f pam - | "$1" - -f pgm - | cmp -s - grey.pgm'
check "a raw block from standard input" 'tail -c 6 grey.pgm | "$1" -r "3x2, Lum, UByte" - -f pgm - | cmp -s - grey.pgm'
check "--info names standard input '-'" '"$1" --info - <grey.pgm | grep -qx -- "-: PGM 3x2, Lum, UByte; magic=P5 maxval=255"'
check "--verbose writes to stderr when the image goes to stdout" '"$1" -v grey.pgm -f pgm - 2>&1 >/dev/null | grep -q "(3x2, Lum, UByte) -> -"'

# Interrupted while it deflates 16 MB of noise, the tool dies of the signal and leaves the old
# output alone. Job control keeps the background job from ignoring SIGINT.
head -c 16777216 /dev/urandom >noise.raw
set -m
for signal in INT TERM HUP; do
  echo old >noise.png
  "$tool" -r "4096x4096, Lum, UByte" noise.raw noise.png &
  pid=$!
  while ! compgen -G '.noise.png.*' >/dev/null && kill -0 "$pid" 2>/dev/null; do :; done
  kill -s "$signal" "$pid" 2>/dev/null
  { wait "$pid"; } 2>/dev/null
  status=$? wanted=$((128 + $(kill -l "$signal"))) left=$(ls -A | grep noise.png)
  [[ $status -eq $wanted && $left == noise.png && $(<noise.png) == old ]] ||
    fail "SIG$signal while writing: exit $status, wanted $wanted; left behind: $left"
done
set +m
rm -f noise.raw noise.png

# The completion: offers <expected words> <words of the command line, the last one completed>.
cd completion && touch a.png b.PGM c.txt d.raw || exit 1
source "$completion"
offers() {
  local expected=$1 got && shift
  COMP_WORDS=(zt-convert "$@") COMP_CWORD=$# COMPREPLY=()
  _zt_convert
  got=$(printf '%s\n' "${COMPREPLY[@]}" | sort | tr '\n' ' ')
  [[ ${got% } == "$expected" ]] || fail "completing zt-convert $*: '${got% }', wanted '$expected'"
}
offers "BGR BGRA BayerBG BayerGB BayerGR BayerRG" -l B
offers "LumA" --layout LumA
offers "UByte UInt UShort" -t U
offers "pam pfm pgm png pnm ppm" -f p
offers "--verbose --version" --ve
offers "--raw-format" in.png --raw
offers "" -r ""
offers "a.png b.PGM d.raw sub" ""
offers "a.png" -v a

# The demo's options are no directory's name; its PNGs are there, and the pairs that must agree do.
if [[ -n $demo ]]; then
  cd "$dir/empty" || exit 1
  "$demo" --help | grep -q '^usage: zt-demo' || fail "zt-demo --help prints no usage"
  "$demo" --version | grep -q '^zt-demo (Zt.Core.Ex) [0-9]' || fail "zt-demo prints no version"
  "$demo" --bogus 2>/dev/null && fail "zt-demo --bogus succeeded"
  [[ -z $(ls -A) ]] || fail "zt-demo made a directory of an option"
  "$demo" "$dir/demo" >"$dir/demo.log" || fail "zt-demo: $(cat "$dir/demo.log")"
  cd "$dir/demo" || exit 1
  pngs=(chart{,-bgra,-rgb16,-lum,-luma,-lum-rgb,-from-float,-from-signed} mosaic)
  for png in "${pngs[@]}"; do [[ -s $png.png ]] || fail "missing $png.png"; done
  # same <a> <b> <layout> <type>: both files as raw pixels of that format agree.
  same() {
    "$tool" -l "$3" -t "$4" "$1" a.raw && "$tool" -l "$3" -t "$4" "$2" b.raw &&
      cmp -s a.raw b.raw || fail "$1 and $2 differ as $3 $4"
  }
  same chart.png chart-bgra.png RGBA UByte      # a swap in memory, the same picture
  same chart-lum.png chart-lum-rgb.png Lum UByte # grey repeated, then its red taken back
  same chart.png chart-rgb16.png RGB UByte      # alpha dropped before or after the 16 bits
  same chart-lum.png chart.png Lum UByte        # luminance is the red sample
  same chart.png chart-luma.png LumA UByte      # red and alpha
fi
echo "${failures} failed"
[[ $failures -eq 0 ]]
