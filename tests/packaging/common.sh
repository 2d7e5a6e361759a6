#!/usr/bin/env bash
# The packaging checks' verdicts (fail, abort, finish); run, not sourced: bash common.sh pc_tree ...
set -uo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
status=0
fail() { echo "FAIL: $*"; status=1; }
abort() { echo "FAIL: $*"; exit 1; }
finish() { [[ $status -ne 0 ]] || echo "ok: $*"; exit $status; }

# pc_tree <what> <root> <pc dir> [<work dir> <c++> [flags...]]: that zt-core-ex.pc alone leads into
# <root> to every file a user needs; with a compiler, consumer.cpp builds from it alone and runs.
pc_tree() {
  local what=$1 root file libdir includedir
  root=$(cd "$2" && pwd -P)
  export PKG_CONFIG_PATH=$3 PKG_CONFIG_LIBDIR=$3
  pkg-config --validate zt-core-ex || { fail "$what: no valid zt-core-ex.pc in $3"; return; }
  libdir=$(pkg-config --variable=libdir zt-core-ex)
  includedir=$(pkg-config --variable=includedir zt-core-ex)
  for file in "$libdir"/libZt.{Core.Ex,Core,Interop.Runtime30}.so "$libdir/libZt.Core.Ex.so.1" \
    "$includedir/ZtCoreEx/ZtCoreEx.h" "$libdir/cmake/ZtCoreEx/ZtCoreExConfig.cmake"; do
    [[ -e $file && $(realpath "$file") == "$root"/* ]] || fail "$what: $file is missing or not in $root"
  done
  [[ -n ${5:-} ]] || return 0
  rm -rf "$4" && mkdir -p "$4"
  # shellcheck disable=SC2046  # the flags are meant to split
  "$5" -std=c++17 "$here/consumer/consumer.cpp" -o "$4/consumer" $(pkg-config --cflags --libs zt-core-ex) \
    -Wl,-rpath,"$libdir" "${@:6}" && "$4/consumer" || fail "$what: the pkg-config consumer fails"
}
[[ ${BASH_SOURCE[0]} != "$0" ]] || { "$@"; finish "$1 $2"; }
