#!/usr/bin/env bash
# Runs CPack on a configured build and checks both packages: each must hold
# the three libraries, the umbrella header, the CMake package and the
# pkg-config file, and once unpacked anywhere, pkg-config must lead to the
# unpacked libraries and headers.
#
#   check_packages.sh <build dir> <work dir>
set -euo pipefail
build=$1 work=$2
rm -rf "$work"
mkdir -p "$work"
cpack --config "$build/CPackConfig.cmake" -B "$work" >"$work/cpack.log" || {
  cat "$work/cpack.log"
  exit 1
}

deb=$(find "$work" -maxdepth 1 -name 'zt-core-ex_*.deb' | head -1)
tgz=$(find "$work" -maxdepth 1 -name 'zt-core-ex-*.tar.gz' | head -1)
[[ -n $deb && -n $tgz ]] || { echo "missing package in $work:"; ls "$work"; exit 1; }

status=0
check_tree() {  # <what> <unpacked root>
  local what=$1 root=$2
  local pc
  pc=$(find "$root" -name zt-core-ex.pc | head -1)
  if [[ -z $pc ]]; then
    echo "$what: no zt-core-ex.pc"
    status=1
    return
  fi
  local libdir includedir
  libdir=$(PKG_CONFIG_LIBDIR=$(dirname "$pc") pkg-config --variable=libdir zt-core-ex)
  includedir=$(PKG_CONFIG_LIBDIR=$(dirname "$pc") pkg-config --variable=includedir zt-core-ex)
  for file in "$libdir/libZt.Core.Ex.so" "$libdir/libZt.Core.so" "$libdir/libZt.Interop.Runtime30.so" \
              "$libdir/libZt.Core.Ex.so.1" "$includedir/ZtCoreEx/ZtCoreEx.h" \
              "$libdir/cmake/ZtCoreEx/ZtCoreExConfig.cmake"; do
    if [[ ! -e $file ]]; then
      echo "$what: $file is missing"
      status=1
    fi
  done
  # The tool finds the unpacked libraries by its relative run path.
  local tool
  tool=$(find "$root" -path '*/bin/zt-convert' | head -1)
  if [[ -n $tool ]] && ! "$tool" --help >/dev/null; then
    echo "$what: $tool does not run from where it was unpacked"
    status=1
  fi
  echo "$what: libdir ${libdir#"$root"}, includedir ${includedir#"$root"}${tool:+, zt-convert runs}"
}

mkdir -p "$work/deb" "$work/tgz"
dpkg-deb -x "$deb" "$work/deb"
tar -xzf "$tgz" -C "$work/tgz"
check_tree "$(basename "$deb")" "$work/deb"
check_tree "$(basename "$tgz")" "$work/tgz"

# The Debian package installs under /usr and says what it needs.
[[ -d $work/deb/usr ]] || { echo "the .deb does not install under /usr"; status=1; }
dpkg-deb -f "$deb" Package Version Depends
exit $status
