#!/usr/bin/env bash
# Checks a built Zt.Core.Ex:
#  1. its dynamic symbol table exposes none of the internal classes;
#  2. the vtable and type information of each exported polymorphic class
#     are exported;
#  3. it carries no static-initialisation code of its own (loading it runs
#     nothing of ours: the only .init_array entry is the toolchain's
#     frame_dummy, and no compiler-made initialiser function exists).
set -euo pipefail
lib="$1"
status=0

# Internal classes: members, vtables, type_info and VTTs must all stay hidden.
internal=(
  CZtMemBase 'CZtMem<' CZtMemObj CZtArrayBase CZtArray2DBase CZtMatrixBase 'CZtMatrix<'
  CZtValuePrecision CZtParMap CZtParEntry CZtParValue 'CZtSafePtr<' CZtSafePtrRepo
  CZtParameterException CZtParInvalidNameException CZtParAccessReadException
  CZtParAccessWriteException CZtParInvalidTypeException CZtParInvalidValueException
)
symbols=$(nm -D -C --defined-only "$lib")
for name in "${internal[@]}"; do
  # A symbol belongs to the class when the class name is followed by its
  # template arguments and "::", or when it is the class's vtable/type_info.
  pattern="Zt::${name}"
  leaks=$(grep -F -- "$pattern" <<<"$symbols" \
    | grep -E -- "(for |^[0-9a-f]+ [A-Za-z] )Zt::${name}" || true)
  if [[ -n "$leaks" ]]; then
    echo "internal class ${name} is exported:"
    sed 's/^/    /' <<<"$leaks" | head -5
    status=1
  fi
done

# Exported polymorphic classes: each has an out-of-line virtual member, so
# that its vtable and type information are defined, and exported, by the
# library alone rather than made again in every client.
polymorphic=(
  CZtArrayDouble CZtArrayInt CZtArrayUChar CZtArrayUInt CZtArrayUShort CZtArray2DDouble
  CZtArray2DInt CZtArrayString CZtImage CZtImageMoniker CZtMetricCalibResult
  CZtMetricCalibAddImageResult
)
for name in "${polymorphic[@]}"; do
  for what in vtable typeinfo; do
    if ! grep -qE -- "^[0-9a-f]+ [A-Za-z] ${what} for Zt::${name}\$" <<<"$symbols"; then
      echo "the ${what} of Zt::${name} is not exported"
      status=1
    fi
  done
done

if nm "$lib" 2>/dev/null | grep -E '_GLOBAL__(sub_)?I_' >/dev/null; then
  echo "static initialisers found:"
  nm "$lib" | grep -E '_GLOBAL__(sub_)?I_' | sed 's/^/    /'
  status=1
fi
init_hex=$(readelf -SW "$lib" | awk '{ for (i = 1; i <= NF; ++i) if ($i == ".init_array") print $(i + 4) }')
init_size=$(( 16#${init_hex:-0} ))
if [[ "${init_size}" -gt 8 ]]; then
  echo ".init_array holds $((init_size / 8)) entries; only the toolchain's one is allowed"
  status=1
fi
if readelf -SW "$lib" | grep -q '\.ctors'; then
  echo "a .ctors section is present"
  status=1
fi

exported=$(grep -c ' Zt::' <<<"$symbols" || true)
if [[ "$exported" -eq 0 ]]; then
  echo "no Zt symbol is exported at all"
  status=1
fi
[[ $status -eq 0 ]] && echo "ok: ${exported} Zt symbols exported, no internal class, no static initialiser"
exit $status
