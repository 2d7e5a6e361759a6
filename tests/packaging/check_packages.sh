#!/usr/bin/env bash
# check_packages.sh <build dir> <work dir> [<c++>]: CPack's tarball; with a compiler, the Debian ones.
source "$(dirname "$0")/common.sh"
build=$1 work=$2 cxx=${3:-}
rm -rf "$work" && mkdir -p "$work/tgz"
cpack --config "$build/CPackConfig.cmake" -B "$work" >"$work/cpack.log" 2>&1 || abort "$(cat "$work/cpack.log")"
tgz=$(find "$work" -maxdepth 1 -name 'zt-core-ex-*.tar.gz' | head -1)
[[ -n $tgz ]] && tar -xzf "$tgz" -C "$work/tgz" || abort "no tarball in $work: $(ls "$work")"
pc=$(find "$work/tgz" -name zt-core-ex.pc | head -1)
pc_tree "$(basename "$tgz")" "$work/tgz" "$(dirname "${pc:-/none/.pc}")" "$work/pc-consumer" "$cxx"
tool=$(find "$work/tgz" -path '*/bin/zt-convert' | head -1)  # found by its relative run path
[[ -z $tool ]] || "$tool" --help >/dev/null || fail "$tool does not run from where it was unpacked"
[[ -n $cxx ]] || finish "$(basename "$tgz") as expected"

libdir=usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH) doc=/usr/share/doc
deb() { find "$work" -maxdepth 1 -name "$1_*.deb" | head -1; }
runtime=$(deb libzt-core-ex1) development=$(deb libzt-core-ex-dev) tools=$(deb zt-core-ex-tools)
[[ -n $runtime && -n $development && -n $tools ]] || abort "a package is missing in $work: $(ls "$work")"
version=$(dpkg-deb -f "$runtime" Version)
contains() {  # <package file> <path...>: each path is in that package
  local listing path
  listing=$(dpkg-deb -c "$1" | awk '{ print $6 }' | sed 's|^\./|/|')
  for path in "${@:2}"; do grep -qxF -- "$path" <<<"$listing" || fail "$(basename "$1") lacks $path"; done
}
contains "$runtime" /$libdir/libZt.{Core.Ex,Core,Interop.Runtime30}.so.1 $doc/libzt-core-ex1/copyright
contains "$development" /usr/include/ZtCoreEx/ZtCoreEx.h /$libdir/libZt.Core.Ex.so \
  /$libdir/cmake/ZtCoreEx/ZtCoreExConfig.cmake /$libdir/pkgconfig/zt-core-ex.pc $doc/libzt-core-ex-dev/copyright
contains "$tools" /usr/bin/zt-convert /usr/share/man/man1/zt-convert.1.gz \
  /usr/share/bash-completion/completions/zt-convert $doc/zt-core-ex-tools/copyright
# Nothing in a package belongs to another one, and no library outside the multiarch directory.
dpkg-deb -c "$runtime" | grep -qE '/usr/include/|\.so$|/bin/' && fail "the run-time package holds development files"
dpkg-deb -c "$tools" | grep -q '\.so' && fail "the tools package holds libraries"
{ dpkg-deb -c "$runtime"; dpkg-deb -c "$development"; dpkg-deb -c "$tools"; } | grep -E '\.so' |
  grep -vq "/$libdir/" && fail "a package holds a library outside /$libdir"
# The others have the run-time package's version and depend on exactly that version of it.
dev=$(dpkg-deb -f "$development" Version Depends) tooling=$(dpkg-deb -f "$tools" Version Depends)
want="Version: $version"$'\n'"Depends: "*"libzt-core-ex1 (= $version)"
[[ $dev == $want* ]] || fail "libzt-core-ex-dev is not $version or lacks its dependency: $dev"
[[ $tooling == $want* && $tooling == *libpng* && $tooling == *'libc6 (>='* ]] ||
  fail "zt-core-ex-tools is not $version or lacks its computed dependencies: $tooling"
[[ $(dpkg-deb -I "$runtime" shlibs 2>/dev/null) == *"libZt.Core.Ex 1 libzt-core-ex1"* ]] || fail "no shlibs file"
# Its errors fail, a missing ldconfig trigger among them; the README says why each warning stays.
lintian --fail-on error --suppress-tags initial-upload-closes-no-bugs "$runtime" "$development" "$tools" ||
  fail "lintian reports errors"

root=$work/root  # unpacked together (no file in two packages); the tool has no run path and runs
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates" && touch "$root/var/lib/dpkg/status"
dpkg --root="$root" --log=/dev/null --force-not-root --force-depends --unpack "$runtime" "$development" \
  "$tools" >"$work/dpkg.log" 2>&1 || abort "$(cat "$work/dpkg.log")"
[[ -L $root/$libdir/libZt.Core.Ex.so && -f $root/$libdir/libZt.Core.Ex.so.1.0.0 ]] || fail "libraries not in /$libdir"
readelf -d "$root/usr/bin/zt-convert" | grep -qE 'RPATH|RUNPATH' && fail "zt-convert carries a run path"
LD_LIBRARY_PATH=$root/$libdir "$root/usr/bin/zt-convert" --version || fail "the unpacked zt-convert does not run"
ctest --build-and-test "$here/consumer" "$work/consumer" --build-generator Ninja --build-options \
  -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_PREFIX_PATH="$root/usr" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF \
  --test-command consumer >"$work/consumer.log" 2>&1 || fail "no consumer against the packages: $(cat "$work/consumer.log")"
grep -q "$root/$libdir/cmake/ZtCoreEx" "$work/consumer/CMakeCache.txt" || fail "the consumer found another ZtCoreEx"
finish "$(basename "$tgz") and $(cd "$work" && ls ./*.deb | tr '\n' ' ')as expected"
