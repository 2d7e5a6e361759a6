#ifndef ZT_TESTS_CONVERTTESTING_H
#define ZT_TESTS_CONVERTTESTING_H

// Conversions on each instruction-set path, guarded and against the reference.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "ZtConvertDispatch.h"
#include "ZtConvertReference.h"
#include "ZtImageFormat.h"
#include "ZtTypeLists.h"

namespace ZtTest {

using Zt::Convert::ConvertOnPath;
using Zt::Convert::EPath;
using Bytes = std::vector<unsigned char>;

// The paths this processor can run.
inline std::vector<EPath> Paths() {
  std::vector<EPath> paths;
  for (EPath path : {EPath::Baseline, EPath::Avx2, EPath::Avx512})
    if (Zt::Convert::PathUsable(path)) paths.push_back(path);
  return paths;
}

inline const char* PathName(EPath path) {
  return path == EPath::Baseline ? "baseline" : path == EPath::Avx2 ? "avx2" : "avx512";
}

inline int SampleBytes(EDataType::ID type) {
  int bytes = 0;
  ZtConvertRef::WithSampleType(type, [&](auto s) { bytes = int(sizeof(s)); });
  return bytes;
}

inline int Components(EPixelType::ID type) {
  const int layout = ZtConvertRef::LayoutIndex(type);
  return layout < 0 ? 0 : ZtConvertRef::kSourceSamples[layout];
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

// The conversion in hand, for failure messages.
inline char g_running[256];

// At least `bytes` usable between two protected pages: {begin, size}, kept for later calls.
using SRegion = std::pair<unsigned char*, std::size_t>;
inline const SRegion& Fit(SRegion& region, std::size_t bytes) {
  auto& [begin, size] = region;
  if (size >= bytes) return region;
  const std::size_t page = std::size_t(sysconf(_SC_PAGESIZE));
  if (begin != nullptr) munmap(begin - page, size + 2 * page);
  size = (std::max(bytes, std::size_t(1) << 20) + page - 1) / page * page;
  void* p = mmap(nullptr, size + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (p == MAP_FAILED) throw std::bad_alloc();
  begin = static_cast<unsigned char*>(p) + page;
  if (mprotect(begin, size, PROT_READ | PROT_WRITE) != 0) throw std::bad_alloc();
  return region;
}

// One path's conversion between protected pages (only used source samples readable); null on a
// fault.
inline const unsigned char* RunGuarded(EPath path, EPixelType::ID tp, EDataType::ID td,
                                       EPixelType::ID sp, EDataType::ID sd, unsigned count,
                                       const void* source, bool atFront, std::size_t offset = 0) {
  static SRegion sources{}, targets{};
  const auto& m =
      ZtConvertRef::kTable[ZtConvertRef::LayoutIndex(sp)][ZtConvertRef::LayoutIndex(tp)];
  int first = 4, last = -1;
  for (int k = 0; k < m.targetSamples; ++k)
    if (m.from[k] != ZtConvertRef::F)
      first = std::min(first, m.from[k]), last = std::max(last, m.from[k]);
  const std::size_t size = std::size_t(SampleBytes(sd));
  const std::size_t skipFront = std::size_t(first) * size;
  const std::size_t readable = count == 0 ? 0
                                          : (count - 1) * std::size_t(Components(sp)) * size +
                                                std::size_t(last + 1) * size - skipFront;
  const SRegion& from = Fit(sources, readable);
  unsigned char* readableBegin = from.first + (atFront ? 0 : from.second - readable);
  if (source != nullptr && readable != 0)
    std::memcpy(readableBegin, static_cast<const unsigned char*>(source) + skipFront, readable);
  // Before the readable stretch by the first pixel's unused samples; an address, like a caller's.
  const void* run =
      reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(readableBegin) - skipFront);
  const std::size_t bytes = count * std::size_t(Components(tp) * SampleBytes(td));
  const std::size_t front = atFront ? offset : kGuardBytes, back = atFront ? kGuardBytes : 0;
  const SRegion& to = Fit(targets, offset + bytes + kGuardBytes);
  unsigned char* target = to.first + (atFront ? offset : to.second - bytes);
  std::memset(target - front, kGuard, front);
  std::memset(target + bytes, kGuard, back);
  std::snprintf(g_running, sizeof g_running, "%s, %u pixels, %s path, runs at the %s, offset %zu",
                Describe(sp, sd, tp, td).c_str(), count, PathName(path), atFront ? "front" : "back",
                offset);
  if (!ConvertOnPath(path, target, run, Zt::CZtImageFormat(1, 1, tp, td),
                     Zt::CZtImageFormat(int(count), 1, sp, sd))) {
    ADD_FAILURE() << "refused: " << g_running;
    return nullptr;
  }
  const auto touched = [](const unsigned char* at, std::size_t n) {
    return std::any_of(at, at + n, [](unsigned char b) { return b != kGuard; });
  };
  if (touched(target - front, front) || touched(target + bytes, back)) {
    ADD_FAILURE() << "wrote outside the target run: " << g_running;
    return nullptr;
  }
  return target;
}

// Whether the guarded conversion of `count` pixels on every path gives `expected`'s first bytes.
inline ::testing::AssertionResult MatchesReference(const Bytes& expected, EPixelType::ID tp,
                                                   EDataType::ID td, EPixelType::ID sp,
                                                   EDataType::ID sd, unsigned count,
                                                   const void* source, bool atFront,
                                                   std::size_t offset = 0) {
  const std::size_t bytes = count * std::size_t(Components(tp) * SampleBytes(td));
  for (EPath path : Paths()) {
    const unsigned char* actual = RunGuarded(path, tp, td, sp, sd, count, source, atFront, offset);
    if (actual == nullptr) return ::testing::AssertionFailure() << "see above";
    if (std::memcmp(actual, expected.data(), bytes) != 0)
      return ::testing::AssertionFailure() << "differs from the reference: " << g_running;
  }
  return ::testing::AssertionSuccess();
}

// Deterministic pseudo-random bytes.
inline Bytes RandomBytes(std::size_t size, std::uint64_t seed) {
  std::mt19937_64 engine(seed);
  Bytes bytes(size);
  for (auto& b : bytes) b = static_cast<unsigned char>(engine() >> 56);
  return bytes;
}

template <class T>
void Append(Bytes& bytes, T value) {
  unsigned char raw[sizeof(T)];
  std::memcpy(raw, &value, sizeof(T));
  bytes.insert(bytes.end(), raw, raw + sizeof(T));
}

// At least `count` samples: all 8/16-bit values; else edges, denormals, specials, random words.
inline Bytes SamplesOf(EDataType::ID type, std::size_t count) {
  Bytes bytes;
  const std::size_t size = std::size_t(SampleBytes(type));
  std::mt19937_64 word(23);
  if (size <= 2) {
    for (std::size_t i = 0; i < std::max(std::size_t(1) << (8 * size), count); ++i)
      size == 1 ? Append(bytes, std::uint8_t(i)) : Append(bytes, std::uint16_t(i));
  } else if (type == EDataType::Double) {
    for (double d : {4.9e-324, -4.9e-324, 1e-310, 1e-40, -1e-42, 1.4e-45, 7e-46, 1e-38, 0.0,
                     0.9999999999, 0x1.fffffffffffffp-1, 0x1.0000000000001p0, -0x1.0000000000001p0,
                     1.0, -1.0, 1.0 / 3.0, 1e300}) {
      Append(bytes, d);
    }
    for (float f : {-0.0f, INFINITY, -INFINITY, NAN}) Append(bytes, double(f));
    while (bytes.size() < count * 8) {
      const std::uint64_t w = word(), denormal = w & 0x800FFFFFFFFFFFFFull;
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
                    -1.0f, 0.5f, 1.0f / 3.0f, 1e-10f, -0.0f, INFINITY, -INFINITY, NAN})
      if (isFloat) Append(bytes, f);
    while (bytes.size() < count * 4) {
      const std::uint32_t w = std::uint32_t(word());
      Append(bytes, w);
      if (isFloat) Append(bytes, w & 0x807FFFFFu);  // denormal
      if (isFloat) Append(bytes, float(std::int32_t(w)) * 0x1p-30f);
    }
  }
  return bytes;
}

}  // namespace ZtTest

#endif
