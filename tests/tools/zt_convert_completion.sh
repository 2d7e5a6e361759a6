#!/usr/bin/env bash
# The bash completion of zt-convert: what it offers after each kind of word.
#
#   zt_convert_completion.sh <completion script> <scratch dir>
set -uo pipefail
shopt -s extglob
script=$1 dir=$2
rm -rf "$dir"
mkdir -p "$dir/sub"
cd "$dir" || exit 1
touch a.png b.PGM c.txt d.raw
# shellcheck source=/dev/null
source "$script"
failures=0

# offers <expected words> -- <words of the command line, the last one being completed>
offers() {
  local expected=$1
  shift 2
  COMP_WORDS=(zt-convert "$@")
  COMP_CWORD=$#
  COMPREPLY=()
  _zt_convert
  local got
  got=$(printf '%s\n' "${COMPREPLY[@]}" | sort | tr '\n' ' ')
  got=${got% }
  if [[ $got != "$expected" ]]; then
    echo "FAIL zt-convert $*: offered '$got', wanted '$expected'"
    failures=$((failures + 1))
  fi
}

offers "BGR BGRA BayerBG BayerGB BayerGR BayerRG"  -- -l B
offers "LumA"                                    -- --layout LumA
offers "UByte UInt UShort"                       -- -t U
offers "pam pfm pgm png pnm ppm"                 -- -f p
offers "--verbose --version"                     -- --ve
offers "--raw-format"                            -- in.png --raw
offers ""                                        -- -r ""
offers "a.png b.PGM d.raw sub"                   -- ""
offers "a.png"                                   -- -v a
[[ $failures -eq 0 ]] && echo "completion: all offers as expected"
[[ $failures -eq 0 ]]
