#ifndef ZT_TESTS_CONVERTTESTING_H
#define ZT_TESTS_CONVERTTESTING_H

// Running a conversion on each instruction-set path and comparing it with the
// reference, for the conversion tests.

#include <gtest/gtest.h>

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

inline constexpr EPath kAllPaths[] = {EPath::Baseline, EPath::Avx2, EPath::Avx512};

// The paths this processor can run.
inline std::vector<EPath> Paths() {
  std::vector<EPath> paths;
  for (EPath path : kAllPaths) {
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

// The paths that conversions of this test program have run on. A test
// environment (ZtConvertPathsRun.cpp) prints them at the end and fails the
// program when a path this processor has was never run.
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
  return std::string(Zt::CZtImageFormat::PixelType2String(sp).ToCString()) + " " +
         Zt::CZtImageFormat::DataType2String(sd).ToCString() + " -> " +
         Zt::CZtImageFormat::PixelType2String(tp).ToCString() + " " +
         Zt::CZtImageFormat::DataType2String(td).ToCString();
}

constexpr unsigned char kGuard = 0xA5;
constexpr std::size_t kGuardBytes = 64;

// Converts `count` pixels on one path into a buffer of guard bytes and
// returns what the conversion wrote; the guard bytes behind the target must
// stay as they were.
inline std::vector<unsigned char> ConvertOn(EPath path, EPixelType::ID tp, EDataType::ID td,
                                            EPixelType::ID sp, EDataType::ID sd, unsigned count,
                                            const void* source) {
  const std::size_t bytes = std::size_t(count) * std::size_t(Components(tp) * SampleBytes(td));
  std::vector<unsigned char> target(bytes + kGuardBytes, kGuard);
  // Only the width carries the count: the target's size plays no part.
  const Zt::CZtImageFormat sourceFormat(int(count), 1, sp, sd);
  const Zt::CZtImageFormat targetFormat(1, 1, tp, td);
  EXPECT_TRUE(RunOnPath(path, target.data(), source, targetFormat, sourceFormat));
  for (std::size_t i = bytes; i < target.size(); ++i) {
    if (target[i] != kGuard) {
      ADD_FAILURE() << "wrote past the target at byte " << i << ": " << Describe(sp, sd, tp, td);
      break;
    }
  }
  target.resize(bytes);
  return target;
}

// Whether the conversion on every path gives the reference's bytes; on a
// difference, says where.
inline ::testing::AssertionResult MatchesReference(EPixelType::ID tp, EDataType::ID td,
                                                   EPixelType::ID sp, EDataType::ID sd,
                                                   unsigned count, const void* source) {
  const std::vector<unsigned char> expected =
      ZtConvertRef::ConvertImage(tp, td, sp, sd, count, source);
  for (EPath path : Paths()) {
    const std::vector<unsigned char> actual = ConvertOn(path, tp, td, sp, sd, count, source);
    if (actual.size() != expected.size()) {
      return ::testing::AssertionFailure() << "size differs: " << Describe(sp, sd, tp, td);
    }
    for (std::size_t i = 0; i < expected.size(); ++i) {
      if (actual[i] != expected[i]) {
        const std::size_t sample = i / std::size_t(SampleBytes(td));
        return ::testing::AssertionFailure()
               << Describe(sp, sd, tp, td) << ", " << count << " pixels, " << PathName(path)
               << " path: target sample " << sample << " differs";
      }
    }
  }
  return ::testing::AssertionSuccess();
}

// Deterministic pseudo-random bytes.
inline std::vector<unsigned char> RandomBytes(std::size_t size, std::uint64_t seed) {
  std::vector<unsigned char> bytes(size);
  std::uint64_t state = seed * 0x9E3779B97F4A7C15ull + 1;
  for (auto& b : bytes) {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    b = static_cast<unsigned char>(state >> 56);
  }
  return bytes;
}

}  // namespace ZtTest

#endif
