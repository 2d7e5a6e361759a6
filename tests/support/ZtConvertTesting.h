#ifndef ZT_TESTS_CONVERTTESTING_H
#define ZT_TESTS_CONVERTTESTING_H

// Running a conversion on each instruction-set path and comparing it with the
// reference, for the conversion tests.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "ZtConvertDispatch.h"
#include "ZtConvertReference.h"
#include "ZtImageFormat.h"
#include "ZtTypeLists.h"

namespace ZtTest {

using Zt::Convert::EPath;
using Bytes = std::vector<unsigned char>;

// The paths this processor can run.
inline std::vector<EPath> Paths() {
  std::vector<EPath> paths;
  for (EPath path : {EPath::Baseline, EPath::Avx2, EPath::Avx512}) {
    if (Zt::Convert::PathUsable(path)) paths.push_back(path);
  }
  return paths;
}

inline const char* PathName(EPath path) {
  switch (path) {
    case EPath::Baseline: return "baseline";
    case EPath::Avx2: return "avx2";
    case EPath::Avx512: return "avx512";
  }
  return "unknown";
}

// The paths that conversions of this test program have run on; the program
// fails at its end when a path this processor has was never run.
inline std::set<EPath>& PathsRun() {
  static std::set<EPath> run;
  return run;
}

// The engine's selection on one path, noted in PathsRun.
inline bool RunOnPath(EPath path, void* target, const void* source,
                      const Zt::CZtImageFormat& targetFormat,
                      const Zt::CZtImageFormat& sourceFormat) {
  PathsRun().insert(path);
  return Zt::Convert::ConvertOnPath(path, target, source, targetFormat, sourceFormat);
}

inline int SampleBytes(EDataType::ID type) {
  for (const auto& d : kDataTypes) {
    if (d.type == type) return d.bytes;
  }
  return 0;
}

inline int Components(EPixelType::ID type) {
  for (const auto& p : kPixelTypes) {
    if (p.type == type) return p.components;
  }
  return 0;
}

inline std::string Describe(EPixelType::ID sp, EDataType::ID sd, EPixelType::ID tp,
                            EDataType::ID td) {
  using F = Zt::CZtImageFormat;
  return std::string(F::PixelType2String(sp).ToCString()) + " " +
         F::DataType2String(sd).ToCString() + " -> " + F::PixelType2String(tp).ToCString() + " " +
         F::DataType2String(td).ToCString();
}

constexpr unsigned char kGuard = 0xA5;
constexpr std::size_t kGuardBytes = 64;

// Converts `count` pixels on one path into a buffer of guard bytes, `offset`
// bytes into it, and returns what the conversion wrote; the guard bytes
// around the target must stay as they were. Only the source's width carries
// the count: the target's size plays no part.
inline Bytes ConvertOn(EPath path, EPixelType::ID tp, EDataType::ID td, EPixelType::ID sp,
                       EDataType::ID sd, unsigned count, const void* source,
                       std::size_t offset = 0) {
  const std::size_t bytes = std::size_t(count) * std::size_t(Components(tp) * SampleBytes(td));
  Bytes target(offset + bytes + kGuardBytes, kGuard);
  EXPECT_TRUE(RunOnPath(path, target.data() + offset, source, Zt::CZtImageFormat(1, 1, tp, td),
                        Zt::CZtImageFormat(int(count), 1, sp, sd)));
  const auto touched = [&](std::size_t from, std::size_t to) {
    return std::any_of(target.begin() + long(from), target.begin() + long(to),
                       [](unsigned char b) { return b != kGuard; });
  };
  EXPECT_FALSE(touched(0, offset) || touched(offset + bytes, target.size()))
      << "wrote outside the target: " << Describe(sp, sd, tp, td);
  return Bytes(target.begin() + long(offset), target.begin() + long(offset + bytes));
}

// Whether the conversion on every path gives the reference's bytes; on a
// difference, says where.
inline ::testing::AssertionResult MatchesReference(EPixelType::ID tp, EDataType::ID td,
                                                   EPixelType::ID sp, EDataType::ID sd,
                                                   unsigned count, const void* source,
                                                   std::size_t offset = 0) {
  const Bytes expected = ZtConvertRef::ConvertImage(tp, td, sp, sd, count, source);
  for (EPath path : Paths()) {
    const Bytes actual = ConvertOn(path, tp, td, sp, sd, count, source, offset);
    const auto differ = std::mismatch(actual.begin(), actual.end(), expected.begin());
    if (differ.first != actual.end()) {
      return ::testing::AssertionFailure()
             << Describe(sp, sd, tp, td) << ", " << count << " pixels, " << PathName(path)
             << " path, offset " << offset << ": target sample "
             << (differ.first - actual.begin()) / SampleBytes(td) << " differs";
    }
  }
  return ::testing::AssertionSuccess();
}

// Deterministic pseudo-random bytes.
inline Bytes RandomBytes(std::size_t size, std::uint64_t seed) {
  Bytes bytes(size);
  std::uint64_t state = seed * 0x9E3779B97F4A7C15ull + 1;
  for (auto& b : bytes) {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    b = static_cast<unsigned char>(state >> 56);
  }
  return bytes;
}

template <class T>
void Append(Bytes& bytes, T value) {
  unsigned char raw[sizeof(T)];
  std::memcpy(raw, &value, sizeof(T));
  bytes.insert(bytes.end(), raw, raw + sizeof(T));
}

// Raw samples of one type, at least `count` of them: every sample of the 8-
// and 16-bit types, repeated; edges and random words of the 32-bit ones; for
// Float and Double also denormals, values whose results are denormal Floats,
// values near the saturation edges, random bit patterns (NaNs with payloads
// and infinities among them) and random values around the normalised range.
inline Bytes SamplesOf(EDataType::ID type, std::size_t count) {
  Bytes bytes;
  const std::size_t size = std::size_t(SampleBytes(type));
  const Bytes random = RandomBytes(count * 8, 23);
  const auto word = [&](std::size_t i) {
    std::uint64_t w;
    std::memcpy(&w, &random[i * 8], 8);
    return w;
  };
  if (size <= 2) {
    for (std::size_t i = 0; i < std::max(std::size_t(1) << (8 * size), count); ++i) {
      size == 1 ? Append(bytes, std::uint8_t(i)) : Append(bytes, std::uint16_t(i));
    }
  } else if (type == EDataType::Double) {
    for (double d : {4.9e-324, -4.9e-324, 1e-310, 1e-40, -1e-42, 1.4e-45, 7e-46, 1e-38,
                     0.9999999999, 1.0, -1.0, 1.0 / 3.0, 1e300}) {
      Append(bytes, d);
    }
    for (std::size_t i = 0; bytes.size() < count * 8; ++i) {
      const std::uint64_t w = word(i), denormal = w & 0x800FFFFFFFFFFFFFull;
      Append(bytes, w);
      Append(bytes, denormal);
      Append(bytes, denormal | (std::uint64_t(0x380 - (w >> 60)) << 52));  // near Float denormals
      Append(bytes, double(std::int64_t(w)) * 0x1p-62);
    }
  } else {
    const bool isFloat = type == EDataType::Float;
    for (std::uint32_t edge : {0u, 1u, 2u, 3u, 0x7FFFFFFEu, 0x7FFFFFFFu, 0x80000000u, 0x80000001u,
                               0xFFFFFFFEu, 0xFFFFFFFFu, 0x00FFFFFFu, 0x01000000u, 0x01000001u,
                               0xFF000000u, 0xFEFFFFFFu, 65535u, 65536u, 0x8000u}) {
      Append(bytes, edge);
      if (isFloat) Append(bytes, float(std::int32_t(edge)) * 0x1p-30f);
    }
    for (float f : {1e-45f, -1e-45f, 1e-40f, -3e-39f, 1.17549421e-38f, 1e-38f, 0.999999f, 1.0f,
                    -1.0f, 0.5f, 1.0f / 3.0f, 1e-10f}) {
      if (isFloat) Append(bytes, f);
    }
    for (std::size_t i = 0; bytes.size() < count * 4; ++i) {
      const std::uint32_t w = std::uint32_t(word(i));
      Append(bytes, w);
      if (isFloat) Append(bytes, w & 0x807FFFFFu);  // denormal
      if (isFloat) Append(bytes, float(std::int32_t(w)) * 0x1p-30f);
    }
  }
  return bytes;
}

}  // namespace ZtTest

#endif
