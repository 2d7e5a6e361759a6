#!/usr/bin/env bash
# Checks a built Zt.Core.Ex's exported symbols and that loading it runs nothing of ours.
source "$(dirname "$0")/common.sh"
symbols=$(nm -D -C --defined-only "$1")
# Internal classes: members (the name, template arguments, "::"), vtables, type_info, VTTs hidden.
for name in CZtMemBase 'CZtMem<' CZtMemObj CZtArrayBase CZtArray2DBase CZtMatrixBase 'CZtMatrix<' \
  CZtValuePrecision CZtParMap CZtParEntry CZtParValue 'CZtSafePtr<' CZtSafePtrRepo \
  CZtParameterException CZtParInvalidNameException CZtParAccessReadException \
  CZtParAccessWriteException CZtParInvalidTypeException CZtParInvalidValueException; do
  leaks=$(grep -F -- "Zt::${name}" <<<"$symbols" | grep -E -- "(for |^[0-9a-f]+ [A-Za-z] )Zt::${name}")
  [[ -z $leaks ]] || fail "internal class ${name} is exported:"$'\n'"$(head -5 <<<"$leaks")"
done
# The library alone (not every client) defines the vtable and type_info of each exported class.
for name in CZtArrayDouble CZtArrayInt CZtArrayUChar CZtArrayUInt CZtArrayUShort CZtArray2DDouble \
  CZtArray2DInt CZtArrayString CZtImage CZtImageMoniker CZtMetricCalibResult \
  CZtMetricCalibAddImageResult; do
  for what in vtable typeinfo; do grep -qE -- "^[0-9a-f]+ [A-Za-z] ${what} for Zt::${name}\$" <<<"$symbols" ||
    fail "the ${what} of Zt::${name} is not exported"; done
done
# No initialiser of ours runs at load: .init_array holds only the toolchain's frame_dummy (8 bytes).
init_hex=$(readelf -SW "$1" | awk '{ for (i = 1; i <= NF; ++i) if ($i == ".init_array") print $(i + 4) }')
(( 16#${init_hex:-0} <= 8 )) || fail ".init_array holds $((16#$init_hex / 8)) entries, not the toolchain's one"
finish "$(grep -c ' Zt::' <<<"$symbols") Zt symbols exported, no internal class, no static initialiser"
