#!/usr/bin/env bash
# Builds and runs consumer.cpp against a DESTDIR install through pkg-config
# alone: one compiler invocation with `pkg-config --cflags --libs`, the way a
# Makefile user would.
#
#   pkg_config_consumer.sh <stage> <prefix> <pkgconfig dir> <work dir> <c++> [extra flags...]
#
# <stage> is the DESTDIR the library was installed into, <prefix> the install
# prefix, <pkgconfig dir> where zt-core-ex.pc lies below the prefix.
set -euo pipefail
stage=$1 prefix=$2 pcdir=$3 work=$4 cxx=$5
shift 5
here=$(cd "$(dirname "$0")" && pwd)

export PKG_CONFIG_SYSROOT_DIR=$stage
case $pcdir in
  /*) export PKG_CONFIG_PATH=$stage$pcdir ;;
  *) export PKG_CONFIG_PATH=$stage$prefix/$pcdir ;;
esac
# Nothing from the machine's own pkg-config directories may stand in.
export PKG_CONFIG_LIBDIR=$PKG_CONFIG_PATH

pkg-config --validate zt-core-ex
version=$(pkg-config --modversion zt-core-ex)
libdir=$(pkg-config --variable=libdir zt-core-ex)
includedir=$(pkg-config --variable=includedir zt-core-ex)
echo "zt-core-ex ${version}: libdir ${libdir}, includedir ${includedir}"

# The paths must lead into the staged tree, not to some other install.
for dir in "$libdir" "$includedir"; do
  real=$(cd "$dir" && pwd -P)
  case $real in
    "$(cd "$stage" && pwd -P)"/*) ;;
    *) echo "pkg-config points outside the DESTDIR tree: $dir"; exit 1 ;;
  esac
done
[[ -f $includedir/ZtCoreEx/ZtCoreEx.h ]] || { echo "ZtCoreEx.h not under $includedir"; exit 1; }

rm -rf "$work"
mkdir -p "$work"
# shellcheck disable=SC2046  # the flags are meant to split
"$cxx" -std=c++17 "$here/consumer.cpp" -o "$work/consumer" \
  $(pkg-config --cflags --libs zt-core-ex) -Wl,-rpath,"$libdir" "$@"
"$work/consumer"
