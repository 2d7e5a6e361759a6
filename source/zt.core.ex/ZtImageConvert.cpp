// The conversion entry points of CZtImage and the first stage of selection.
// The cells and the second stage are in ZtConvertCell.h.

#include <cstdint>
#include <cstring>

#include "ZtConvertDispatch.h"
#include "ZtImage.h"

#if defined(__x86_64__) && __has_include(<sys/platform/x86.h>)
// The header is written for C; C++ spells its _Bool as bool.
#define _Bool bool
#include <sys/platform/x86.h>
#undef _Bool
#define ZT_CONVERT_FEATURES_FROM_LIBC 1
#elif defined(__x86_64__)
#include <cpuid.h>
#define ZT_CONVERT_FEATURES_FROM_LIBC 0
#endif
#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

namespace Zt {
namespace Convert {

#if defined(__x86_64__) && ZT_CONVERT_FEATURES_FROM_LIBC

// The C library has read the processor's features when the program started
// and keeps them with the operating system's support already checked; asking
// it costs a few nanoseconds, while a cpuid instruction can take microseconds
// inside a virtual machine.
bool Avx512Usable() {
  return CPU_FEATURE_ACTIVE(AVX512F) && CPU_FEATURE_ACTIVE(AVX512DQ) &&
         CPU_FEATURE_ACTIVE(AVX512BW) && CPU_FEATURE_ACTIVE(AVX512VL) && CPU_FEATURE_ACTIVE(FMA);
}
bool Avx2Usable() { return CPU_FEATURE_ACTIVE(AVX2) && CPU_FEATURE_ACTIVE(FMA); }
constexpr std::uint32_t kWidePathMinimum = 64;

#elif defined(__x86_64__)

// Asks the processor itself: the feature bits of cpuid leaf 7 (EBX) when
// it has fused multiply-add and the operating system saves the registers
// named by `xcr0Bits`; 0 otherwise.
static unsigned int Leaf7WithFma(unsigned int xcr0Bits) {
  unsigned int eax = 0;
  unsigned int ebx = 0;
  unsigned int ecx = 0;
  unsigned int edx = 0;
  if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0 || (ecx & bit_OSXSAVE) == 0 ||
      (ecx & bit_FMA) == 0) {
    return 0;
  }
  unsigned int xcr0 = 0;
  unsigned int xcr0High = 0;
  __asm__("xgetbv" : "=a"(xcr0), "=d"(xcr0High) : "c"(0));
  if ((xcr0 & xcr0Bits) != xcr0Bits || __get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) == 0) {
    return 0;
  }
  return ebx;
}

// The four AVX-512 subsets, with the vector and mask registers saved (XCR0
// bits 1, 2, 5, 6 and 7).
bool Avx512Usable() {
  const unsigned int needed = bit_AVX512F | bit_AVX512DQ | bit_AVX512BW | bit_AVX512VL;
  return (Leaf7WithFma(0xE6u) & needed) == needed;
}

// AVX2, with the vector registers saved (XCR0 bits 1 and 2).
bool Avx2Usable() { return (Leaf7WithFma(0x6u) & bit_AVX2) != 0; }

// The processor is only asked when the conversion is large enough to repay
// the question.
constexpr std::uint32_t kWidePathMinimum = 65536;

#else

bool Avx512Usable() { return false; }
bool Avx2Usable() { return false; }
constexpr std::uint32_t kWidePathMinimum = 0;

#endif

EPath ChoosePath(std::uint32_t count) {
  if (count < kWidePathMinimum) return EPath::Baseline;
  if (Avx512Usable()) return EPath::Avx512;
  return Avx2Usable() ? EPath::Avx2 : EPath::Baseline;
}

bool PathUsable(EPath path) {
  switch (path) {
    case EPath::Baseline: return true;
    case EPath::Avx2: return Avx2Usable();
    case EPath::Avx512: return Avx512Usable();
  }
  return false;
}

namespace {

// The floating-point environment of the rule: IEEE round to nearest, ties to
// even; denormal inputs and results kept as they are; no exception traps.
// A caller may have set anything else (a rounding mode, flush-to-zero and
// denormals-are-zero, as audio and graphics code often do), and the results
// must not depend on it. The cells run with these settings, and the caller's
// control settings come back afterwards; status flags raised by the
// arithmetic stay raised, as after any arithmetic.
//
// The switch happens here, around calls into the cells' own translation
// units: a compiler may move floating-point work across a control-register
// write inside one function, but not across a call it cannot see into.
#if defined(__x86_64__)
// MXCSR: status flags in bits 0-5, denormals-are-zero in bit 6, exception
// masks in bits 7-12, rounding control in bits 13-14, flush-to-zero in bit 15.
using TControl = unsigned int;
constexpr TControl kStatusFlags = 0x3Fu;
constexpr TControl kRuleControl = 0x1F80u;  // all exceptions masked, to nearest
inline TControl ReadControl() { return _mm_getcsr(); }
inline void WriteControl(TControl control) { _mm_setcsr(control); }
#elif defined(__aarch64__)
// FPCR: all zero is round to nearest, no flush-to-zero, NaNs propagated (no
// default NaN) and no trapped exceptions; the status flags live in FPSR.
using TControl = std::uint64_t;
constexpr TControl kStatusFlags = 0;
constexpr TControl kRuleControl = 0;
inline TControl ReadControl() {
  TControl control;
  __asm__ __volatile__("mrs %0, fpcr" : "=r"(control) : : "memory");
  return control;
}
inline void WriteControl(TControl control) {
  __asm__ __volatile__("msr fpcr, %0" : : "r"(control) : "memory");
}
#else
// Elsewhere the caller's environment is taken as it is.
using TControl = unsigned int;
constexpr TControl kStatusFlags = 0;
constexpr TControl kRuleControl = 0;
inline TControl ReadControl() { return 0; }
inline void WriteControl(TControl) {}
#endif

// Runs the conversion in the rule's environment; each register access is
// skipped when the caller's settings are the rule's already.
template <class F>
bool InRuleEnvironment(F&& convert) {
  const TControl caller = ReadControl();
  const bool change = (caller & ~kStatusFlags) != kRuleControl;
  if (change) {
    WriteControl(kRuleControl | (caller & kStatusFlags));
  }
  const bool result = convert();
  if (change) {
    WriteControl((caller & ~kStatusFlags) | (ReadControl() & kStatusFlags));
  }
  return result;
}

}  // namespace

bool ConvertOnPath(EPath path, void* target, const void* source, const CZtImageFormat& targetFormat,
                   const CZtImageFormat& sourceFormat) {
  return WithDataType(targetFormat.DataType, [&](auto td) {
    return InRuleEnvironment([&] {
      return ConvertTo<decltype(td)::value>(target, source, targetFormat.PixelType, sourceFormat,
                                            path);
    });
  });
}

}  // namespace Convert

namespace {

// The short cut for equal types: one copy of the source's byte count, in
// 32-bit arithmetic like every image size. An unknown type has a byte count
// of 0, so nothing is copied and the answer is still true.
bool CopyWhenSameType(void* target, const void* source, const CZtImageFormat& sourceFormat,
                      EPixelType::ID pixelType, EDataType::ID dataType) {
  if (pixelType != sourceFormat.PixelType || dataType != sourceFormat.DataType) {
    return false;
  }
  const unsigned int bytes = sourceFormat.GetByteCount();
  if (bytes != 0) {
    std::memcpy(target, source, bytes);
  }
  return true;
}

}  // namespace

bool CZtImage::ConvertType(CZtImage& target, EPixelType::ID pixelType,
                           EDataType::ID dataType) const {
  // The static form with create asks this image and target the very same
  // virtual operations in the same order.
  return ConvertType(&target, this, pixelType, dataType, true);
}

bool CZtImage::ConvertType(IImage* target, const IImage* source, EPixelType::ID pixelType,
                           EDataType::ID dataType, bool create) {
  if (!source->IsValid()) {
    return false;
  }
  int width = 0;
  int height = 0;
  EPixelType::ID sourcePixelType{};
  EDataType::ID sourceDataType{};
  source->GetSize(width, height);
  source->GetType(sourcePixelType, sourceDataType);
  // Always created anew, even when target already has this format; without
  // create, nothing is asked of target but its memory.
  if (create && !target->Create(width, height, pixelType, dataType)) {
    return false;
  }
  const CZtImageFormat sourceFormat(width, height, sourcePixelType, sourceDataType);
  const CZtImageFormat targetFormat(width, height, pixelType, dataType);
  // Taken after Create: when target is source, both name the new block.
  const void* sourceData = source->GetDataPtr();
  void* destination = target->GetDataPtr();
  if (CopyWhenSameType(destination, sourceData, sourceFormat, pixelType, dataType)) {
    return true;
  }
  return _ConvertTrgSwitch(destination, sourceData, targetFormat, sourceFormat);
}

bool CZtImage::ConvertMemory(void* target, const void* source, const CZtImageFormat& targetFormat,
                             const CZtImageFormat& sourceFormat) {
  if (targetFormat == sourceFormat) {
    return CopyWhenSameType(target, source, sourceFormat, targetFormat.PixelType,
                            targetFormat.DataType);
  }
  return _ConvertTrgSwitch(target, source, targetFormat, sourceFormat);
}

bool CZtImage::_ConvertTrgSwitch(void* target, const void* source,
                                 const CZtImageFormat& targetFormat,
                                 const CZtImageFormat& sourceFormat) {
  const std::uint32_t count = static_cast<std::uint32_t>(sourceFormat.Height) *
                              static_cast<std::uint32_t>(sourceFormat.Width);
  return Convert::ConvertOnPath(Convert::ChoosePath(count), target, source, targetFormat,
                                sourceFormat);
}

}  // namespace Zt
