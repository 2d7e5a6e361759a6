// Where conversions read and write: runs against protected pages, and overlapping runs.

#include <gtest/gtest.h>

#include "ZtConvertTesting.h"

using namespace ZtTest;

namespace {

using P = EPixelType;
using D = EDataType;

P::ID Id(P::ID p) { return p; }
P::ID Id(const PixelTypeInfo& p) { return p.type; }

// Calls f(sp, sd, tp, td) for every cell from the layouts `sources`.
template <class Sources, class Fn>
void ForEachCell(const Sources& sources, Fn&& f) {
  for (const auto& sp : sources)
    for (const auto& sd : kDataTypes)
      for (EPixelType::ID tp : kTargetPixelTypes)
        for (const auto& td : kDataTypes) f(Id(sp), sd.type, tp, td.type);
}

// Every cell, runs of 0 to twice the widest vector plus one, around unrolls and blocks.
TEST(ConvertBounds, EveryCellReadsAndWritesOnlyItsRunsOnEveryPath) {
  std::vector<unsigned> counts(2 * 64 + 2);
  for (unsigned i = 0; i < counts.size(); ++i) counts[i] = i;
  counts.insert(counts.end(), {511, 513, 1024, 2049, 4097, 5003});
  const Bytes source = RandomBytes(5003 * 32, 11);
  ForEachCell(kPixelTypes, [&](P::ID sp, D::ID sd, P::ID tp, D::ID td) {
    const Bytes expected = ZtConvertRef::ConvertImage(tp, td, sp, sd, 5003, source.data());
    for (bool atFront : {true, false})
      for (unsigned count : counts)
        ASSERT_TRUE(MatchesReference(expected, tp, td, sp, sd, count, source.data(), atFront));
  });
}

// Targets of 4 MB and more: every cell's bounds; some cells' values at several alignments.
TEST(ConvertBounds, LargeTargetsStayInsideTheirRunsAtAnyAlignment) {
  ForEachCell(kTargetPixelTypes, [](P::ID sp, D::ID sd, P::ID tp, D::ID td) {
    const unsigned count =
        unsigned((std::size_t(4) << 20) / std::size_t(Components(tp) * SampleBytes(td)) + 3);
    for (EPath path : Paths())
      ASSERT_NE(RunGuarded(path, tp, td, sp, sd, count, nullptr, false), nullptr);
  });
  const std::tuple<P::ID, D::ID, P::ID, D::ID> cases[] = {{P::Lum, D::UByte, P::RGBA, D::Double},
                                                          {P::BGRA, D::Float, P::RGB, D::Short},
                                                          {P::RGB, D::UShort, P::BGRA, D::UShort}};
  constexpr unsigned kCount = 700001;
  for (const auto& [sp, sd, tp, td] : cases) {
    const Bytes source = RandomBytes(kCount * std::size_t(Components(sp) * SampleBytes(sd)), 9);
    const Bytes expected = ZtConvertRef::ConvertImage(tp, td, sp, sd, kCount, source.data());
    for (std::size_t offset : {0u, 8u, 35u})
      EXPECT_TRUE(MatchesReference(expected, tp, td, sp, sd, kCount, source.data(), true, offset));
  }
}

// Overlapping runs in the cells' order: each pixel's colours read and stored; then the alphas.
template <class S, class T>
void ConvertOrdered(unsigned char* buffer, std::size_t sourceAt, std::size_t targetAt,
                    EPixelType::ID sp, EPixelType::ID tp, unsigned count) {
  const auto& m =
      ZtConvertRef::kTable[ZtConvertRef::LayoutIndex(sp)][ZtConvertRef::LayoutIndex(tp)];
  const std::size_t ss = std::size_t(Components(sp)), ts = std::size_t(m.targetSamples);
  const bool bgr = tp == EPixelType::BGR || tp == EPixelType::BGRA;
  const std::size_t colours = ts < 3 ? 1 : 3;
  const auto load = [&](std::size_t i, int k) {
    S v;
    std::memcpy(&v, buffer + sourceAt + (i * ss + std::size_t(k)) * sizeof(S), sizeof(S));
    return ZtConvertRef::Convert<S, T>(v);
  };
  const auto store = [&](std::size_t i, std::size_t k, T v) {
    std::memcpy(buffer + targetAt + (i * ts + k) * sizeof(T), &v, sizeof(T));
  };
  for (std::size_t i = 0; i < count; ++i) {
    T read[4] = {};
    bool have[4] = {};
    for (std::size_t c = 0; c < colours; ++c) {
      const std::size_t k = bgr ? 2 - c : c;  // red first
      const int from = m.from[k];
      if (!have[from]) read[from] = load(i, from), have[from] = true;
      store(i, k, read[from]);
    }
  }
  if (ts % 2 != 0) return;  // no alpha
  const int alpha = m.from[ts - 1];
  for (std::size_t i = 0; i < count; ++i)
    store(i, ts - 1, alpha == ZtConvertRef::F ? ZtConvertRef::Fill<T>() : load(i, alpha));
}

// Equal formats (a memmove) left out; an in-place red-blue swap stores red before reading blue.
TEST(ConvertBounds, OverlappingRunsKeepThePixelOrderOnEveryPath) {
  const EDataType::ID pairs[][2] = {{D::UByte, D::UByte},
                                    {D::UByte, D::UShort},
                                    {D::UShort, D::Byte},
                                    {D::Float, D::Double},
                                    {D::Double, D::Float}};
  constexpr std::size_t kSourceAt = 4096;
  const Bytes start = RandomBytes(kSourceAt + 5000 * 32 + kSourceAt, 31);
  for (EPixelType::ID sp : kTargetPixelTypes) {
    for (EPixelType::ID tp : kTargetPixelTypes) {
      for (const auto& pair : pairs) {
        if (sp == tp && pair[0] == pair[1]) continue;
        for (long shift : {-70L, -3L, 0L, 1L, 6L, 64L, 200L}) {
          const unsigned count = shift == 0 ? 5000 : 300;
          const std::size_t targetAt = std::size_t(long(kSourceAt) + shift);
          Bytes expected = start;
          ZtConvertRef::WithSampleType(pair[0], [&](auto s) {
            ZtConvertRef::WithSampleType(pair[1], [&](auto t) {
              ConvertOrdered<decltype(s), decltype(t)>(expected.data(), kSourceAt, targetAt, sp, tp,
                                                       count);
            });
          });
          for (EPath path : Paths()) {
            Bytes actual = start;
            ASSERT_TRUE(ConvertOnPath(path, actual.data() + targetAt, actual.data() + kSourceAt,
                                      Zt::CZtImageFormat(1, 1, tp, pair[1]),
                                      Zt::CZtImageFormat(int(count), 1, sp, pair[0])));
            ASSERT_TRUE(actual == expected)
                << Describe(sp, pair[0], tp, pair[1]) << ", target " << shift
                << " bytes from the source, " << PathName(path) << " path";
          }
        }
      }
    }
  }
}

}  // namespace
