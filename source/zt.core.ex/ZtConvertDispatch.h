#ifndef ZT_CORE_EX_ZTCONVERTDISPATCH_H
#define ZT_CORE_EX_ZTCONVERTDISPATCH_H

// Selection of a conversion: the closed lists of types as switches that hand
// a compile-time constant to generic code, and the instruction-set path.
//
// Internal: not exported and never included by a public header.

#include <cstdint>
#include <type_traits>

#include "ZtImageFormat.h"
#include "ZtInterop.h"

namespace Zt {
namespace Convert {

// The code a conversion runs on. Every path gives the same bits.
enum class EPath { Baseline, Avx2, Avx512 };

template <EDataType::ID D>
using TDataTypeConstant = std::integral_constant<EDataType::ID, D>;
template <EPixelType::ID P>
using TPixelTypeConstant = std::integral_constant<EPixelType::ID, P>;

// Calls f with the data type as a constant; false for any other value.
template <class F>
bool WithDataType(EDataType::ID type, F&& f) {
  switch (type) {
    case EDataType::Byte: return f(TDataTypeConstant<EDataType::Byte>{});
    case EDataType::UByte: return f(TDataTypeConstant<EDataType::UByte>{});
    case EDataType::Short: return f(TDataTypeConstant<EDataType::Short>{});
    case EDataType::UShort: return f(TDataTypeConstant<EDataType::UShort>{});
    case EDataType::Int: return f(TDataTypeConstant<EDataType::Int>{});
    case EDataType::UInt: return f(TDataTypeConstant<EDataType::UInt>{});
    case EDataType::Float: return f(TDataTypeConstant<EDataType::Float>{});
    case EDataType::Double: return f(TDataTypeConstant<EDataType::Double>{});
  }
  return false;
}

// The six layouts a conversion writes; false for the Bayer types and any
// other value.
template <class F>
bool WithTargetPixelType(EPixelType::ID type, F&& f) {
  switch (type) {
    case EPixelType::RGB: return f(TPixelTypeConstant<EPixelType::RGB>{});
    case EPixelType::RGBA: return f(TPixelTypeConstant<EPixelType::RGBA>{});
    case EPixelType::Lum: return f(TPixelTypeConstant<EPixelType::Lum>{});
    case EPixelType::LumA: return f(TPixelTypeConstant<EPixelType::LumA>{});
    case EPixelType::BGR: return f(TPixelTypeConstant<EPixelType::BGR>{});
    case EPixelType::BGRA: return f(TPixelTypeConstant<EPixelType::BGRA>{});
    default: return false;
  }
}

// The ten layouts a conversion reads. The four Bayer types are read as
// luminance and share its conversions; false for any other value.
template <class F>
bool WithSourcePixelType(EPixelType::ID type, F&& f) {
  switch (type) {
    case EPixelType::BayerRG:
    case EPixelType::BayerBG:
    case EPixelType::BayerGR:
    case EPixelType::BayerGB:
    case EPixelType::Lum: return f(TPixelTypeConstant<EPixelType::Lum>{});
    default: return WithTargetPixelType(type, f);
  }
}

// Stage one for one target data type: selects the second stage by the target
// pixel type and runs it. One instance per data type, each in a translation
// unit of its own (ZtConvertCells.cpp).
template <EDataType::ID TD>
bool ConvertTo(void* target, const void* source, EPixelType::ID targetPixelType,
               const CZtImageFormat& sourceFormat, EPath path);

// The whole selection on a given path: target types first, then source types.
// False for a target or source type that no conversion handles. The cells run
// in the rule's floating-point environment (round to nearest, no flushing of
// denormals, no traps), whatever the caller has set; the caller's settings
// are back in place when this returns.
bool ConvertOnPath(EPath path, void* target, const void* source, const CZtImageFormat& targetFormat,
                   const CZtImageFormat& sourceFormat);

// Whether this processor can run the path.
bool PathUsable(EPath path);

// Whether this processor and its operating system run AVX-512 code with
// fused multiply-add.
bool Avx512Usable();

// Whether they run AVX2 code with fused multiply-add (x86-64-v3).
bool Avx2Usable();

// The path for a conversion of `count` pixels: the widest usable one, and the
// baseline below a count where the wide path cannot pay for the test.
EPath ChoosePath(std::uint32_t count);

}  // namespace Convert
}  // namespace Zt

#endif
