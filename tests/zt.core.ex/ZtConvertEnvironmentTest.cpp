// Conversions give the rule's round-to-nearest results whatever floating-point
// environment the caller has set (rounding mode, flushing of denormals), on
// every path and on short and long runs, and leave the caller's settings as
// they were. valgrind does not model these settings: the memcheck runs leave
// this suite out.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "ZtConvertTesting.h"

#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

using namespace ZtTest;

namespace {

// The control register of the floating-point unit, and how each setting is
// written in it.
#if defined(__x86_64__)
using TControl = unsigned int;
TControl ReadControl() { return _mm_getcsr(); }
void WriteControl(TControl c) { _mm_setcsr(c); }
constexpr TControl kStatus = 0x3F;
constexpr TControl kDefault = 0x1F80;
constexpr TControl kRounding[] = {0u << 13, 1u << 13, 2u << 13, 3u << 13};  // near, down, up, zero
constexpr TControl kFlushes[] = {0, 0x8000, 0x40, 0x8040};                  // none, FTZ, DAZ, both
const char* const kFlushNames[] = {"", " FTZ", " DAZ", " FTZ+DAZ"};
#elif defined(__aarch64__)
using TControl = std::uint64_t;
TControl ReadControl() {
  TControl c;
  __asm__ __volatile__("mrs %0, fpcr" : "=r"(c) : : "memory");
  return c;
}
void WriteControl(TControl c) { __asm__ __volatile__("msr fpcr, %0" : : "r"(c) : "memory"); }
constexpr TControl kStatus = 0;
constexpr TControl kDefault = 0;
constexpr TControl kRounding[] = {0u << 22, 2u << 22, 1u << 22, 3u << 22};  // near, down, up, zero
constexpr TControl kFlushes[] = {0, 1u << 24, 1u << 25, 3u << 24};          // none, FZ, DN, both
const char* const kFlushNames[] = {"", " FZ", " DN", " FZ+DN"};
#endif

#if defined(__x86_64__) || defined(__aarch64__)
const char* const kRoundingNames[] = {"to nearest", "down", "up", "toward zero"};

template <class T>
void Append(std::vector<unsigned char>& bytes, T value) {
  unsigned char raw[sizeof(T)];
  std::memcpy(raw, &value, sizeof(T));
  bytes.insert(bytes.end(), raw, raw + sizeof(T));
}

// Samples of one source type, at least kSamples of them: every sample of the
// 8- and 16-bit types (their quotients round differently in every other
// mode), edges and random words of the 32-bit ones, and for Float and Double
// denormals, values whose results are denormal Floats, values near the
// saturation edges, and random bit patterns.
constexpr std::size_t kSamples = 9000;

std::vector<unsigned char> SamplesOf(EDataType::ID type) {
  std::vector<unsigned char> bytes;
  const std::size_t size = std::size_t(SampleBytes(type));
  const std::vector<unsigned char> random = RandomBytes(kSamples * 8, 23);
  if (size <= 2) {
    const std::size_t all = std::size_t(1) << (8 * size);
    for (std::size_t i = 0; bytes.size() < std::max(all, kSamples) * size; ++i) {
      if (size == 1) Append(bytes, std::uint8_t(i));
      if (size == 2) Append(bytes, std::uint16_t(i));
    }
  } else if (type == EDataType::Float) {
    const float specials[] = {1e-45f,    -1e-45f, 1e-40f, -3e-39f, 1.17549421e-38f, 1e-38f,
                              0.999999f, 1.0f,    -1.0f,  0.5f,    1.0f / 3.0f,     1e-10f};
    for (float f : specials) Append(bytes, f);
    for (std::size_t i = 0; bytes.size() < kSamples * 4; i += 4) {
      std::uint32_t w;
      std::memcpy(&w, &random[i], 4);
      if (i % 8 == 0) w &= 0x807FFFFFu;  // half of them denormal
      Append(bytes, w);
    }
  } else if (type == EDataType::Double) {
    const double specials[] = {4.9e-324, -4.9e-324,    1e-310, 1e-40, -1e-42,    1.4e-45, 7e-46,
                               1e-38,    0.9999999999, 1.0,    -1.0,  1.0 / 3.0, 1e300};
    for (double d : specials) Append(bytes, d);
    for (std::size_t i = 0; bytes.size() < kSamples * 8; i += 8) {
      std::uint64_t w;
      std::memcpy(&w, &random[i], 8);
      if (i % 16 == 0) w &= 0x800FFFFFFFFFFFFFull;  // denormal
      if (i % 16 == 8) w = (w & 0x800FFFFFFFFFFFFFull) | (std::uint64_t(0x380 - (w >> 60)) << 52);
      Append(bytes, w);  // the second kind: around the Float denormals
    }
  } else {
    for (std::uint32_t w : {0u, 1u, 2u, 3u, 0x7FFFFFFFu, 0x80000000u, 0x80000001u, 0xFFFFFFFFu}) {
      Append(bytes, w);
    }
    bytes.insert(bytes.end(), random.begin(), random.begin() + long(kSamples * 4 - bytes.size()));
  }
  return bytes;
}

struct SRun {
  EPixelType::ID from;
  EPixelType::ID to;
  unsigned pixels;
};

TEST(ConvertEnvironment, ResultsAreTheRulesUnderAnyCallerSettings) {
  for (const auto& sd : kDataTypes) {
    const std::vector<unsigned char> source = SamplesOf(sd.type);
    const unsigned samples = unsigned(source.size() / std::size_t(sd.bytes));
    // Short runs take the remainder code of every path, long ones its vector
    // loops and blocks; RGB to LumA drops samples and converts an alpha fill.
    const SRun runs[] = {{EPixelType::Lum, EPixelType::Lum, 13},
                         {EPixelType::Lum, EPixelType::Lum, samples},
                         {EPixelType::RGB, EPixelType::LumA, 5},
                         {EPixelType::RGB, EPixelType::LumA, samples / 3}};
    for (const auto& td : kDataTypes) {
      for (const SRun& run : runs) {
        const std::vector<unsigned char> expected = ZtConvertRef::ConvertImage(
            run.to, td.type, run.from, sd.type, run.pixels, source.data());
        for (EPath path : Paths()) {
          for (std::size_t r = 0; r < 4; ++r) {
            for (std::size_t f = 0; f < 4; ++f) {
              const TControl caller = kDefault | kRounding[r] | kFlushes[f];
              std::vector<unsigned char> target(expected.size());
              const Zt::CZtImageFormat sourceFormat(int(run.pixels), 1, run.from, sd.type);
              const Zt::CZtImageFormat targetFormat(int(run.pixels), 1, run.to, td.type);
              WriteControl(caller);
              const bool ok =
                  RunOnPath(path, target.data(), source.data(), targetFormat, sourceFormat);
              const TControl after = ReadControl();
              WriteControl(kDefault);
              const std::string context = Describe(run.from, sd.type, run.to, td.type) + ", " +
                                          std::to_string(run.pixels) + " pixels, " +
                                          PathName(path) + " path, rounding " + kRoundingNames[r] +
                                          kFlushNames[f];
              ASSERT_TRUE(ok) << context;
              ASSERT_EQ(caller, after & ~kStatus) << "caller's settings changed: " << context;
              ASSERT_TRUE(target == expected) << "results differ: " << context;
            }
          }
        }
      }
    }
  }
}
#endif

}  // namespace
