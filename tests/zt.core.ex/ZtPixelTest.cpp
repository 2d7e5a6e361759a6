#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <tuple>
#include <type_traits>
#include <vector>

#include "ZtCoreEx.h"

using namespace Zt;

namespace {

// The 80 pixel types, spelled out from the layout and sample tables; each
// library alias must name the same type.
template <template <class> class Alias, int C, int A, int R, int G, int B, int AI, int P>
struct Layout {
  template <class T, int D>
  using Pixel = TPixel<T, C, A, R, G, B, AI, P, D>;
  template <class T, int D>
  static constexpr bool kAliased = std::is_same_v<Alias<T>, Pixel<T, D>>;
};
template <class T, int D>
struct Sample {};
using Layouts = std::tuple<
    Layout<TPixelRGB, 3, 0, 0, 1, 2, 0, 6407>, Layout<TPixelRGBA, 3, 1, 0, 1, 2, 3, 6408>,
    Layout<TPixelBGR, 3, 0, 2, 1, 0, 0, 32992>, Layout<TPixelBGRA, 3, 1, 2, 1, 0, 3, 32993>,
    Layout<TPixelLum, 1, 0, 0, 0, 0, 0, 6409>, Layout<TPixelLumA, 1, 1, 0, 0, 0, 1, 6410>,
    Layout<TPixelBayerRG, 1, 0, 0, 0, 0, 0, 8193>, Layout<TPixelBayerBG, 1, 0, 0, 0, 0, 0, 8194>,
    Layout<TPixelBayerGR, 1, 0, 0, 0, 0, 0, 8195>, Layout<TPixelBayerGB, 1, 0, 0, 0, 0, 0, 8196>>;
using Samples = std::tuple<Sample<char, 5120>, Sample<unsigned char, 5121>, Sample<short, 5122>,
                           Sample<unsigned short, 5123>, Sample<int, 5124>,
                           Sample<unsigned int, 5125>, Sample<float, 5126>, Sample<double, 5130>>;

template <class F, class L, class T, int D>
void Call(F& f, L, Sample<T, D>) {
  static_assert(L::template kAliased<T, D>);
  static_assert(std::is_aggregate_v<typename L::template Pixel<T, D>>);
  f(typename L::template Pixel<T, D>{});
}

// Calls f with a value of each of the 80 pixel types.
template <class F>
void ForEachPixelType(F f) {
  auto samples = [&](auto layout) {
    std::apply([&](auto... s) { (Call(f, layout, s), ...); }, Samples{});
  };
  std::apply([&](auto... l) { (samples(l), ...); }, Layouts{});
}

// Sample bit patterns by width: NaNs with payloads (signalling and negative
// among them), -0 and a denormal for the floating types, extremes for others.
const std::uint64_t kPatterns[4][4] = {
    {0x80, 0x7F, 0xFF, 0x01},
    {0x8000, 0x7FFF, 0xFFFF, 0x1234},
    {0x7FA00001, 0xFFC12345, 0x80000000, 0x00000001},
    {0x7FF0000000000001, 0xFFF8DEADBEEF0001, 0x8000000000000000, 0x0000000000000001}};

template <class Pixel>
Pixel Patterned(std::size_t rotation) {
  constexpr std::size_t width = sizeof(Pixel::Samples[0]);
  Pixel pixel;
  for (std::size_t i = 0; i < sizeof(Pixel) / width; ++i) {
    const std::uint64_t bits = kPatterns[width == 8 ? 3 : width / 2][(i + rotation) % 4];
    std::memcpy(&pixel.Samples[i], &bits, width);  // the low bytes: little-endian
  }
  return pixel;
}

// A CZtImage over the test's own memory, setting only the two fields pixel
// access reads, so that indices before the block and offsets past 4 GiB from
// its pointer can be reached safely.
struct ImageOver : CZtImage {
  ImageOver(std::uintptr_t origin, long long width) {
    m_pData = reinterpret_cast<void*>(origin);
    m_Format.Width = static_cast<int>(width);
  }
  ~ImageOver() override { m_pData = nullptr; }  // not ours to free
};

TEST(CZtImagePixel, EveryTypeMovesBitForBitAtWidthTimesYPlusXWrappedToSigned32Bits) {
  // Width, x, y, and the index the pixel lands at: a row's end neighbours the
  // next row's start, negative indices reach preceding rows, and 2^30 pixels
  // make an offset past 4 GiB.
  const long long rows[][4] = {{5, 2, 1, 7},
                               {5, 5, 0, 5},
                               {5, 0, 1, 5},
                               {7, -3, 0, -3},
                               {4, 1, -2, -7},
                               {65536, 5, 65536, 5},
                               {65536, 65541, 65535, 5},
                               {65536, 65533, 65535, -3},
                               {65536, 7, -65536, 7},
                               {65536, 0, 32768, -(1LL << 31)},
                               {32768, 0, 32768, 1 << 30}};
  ForEachPixelType([&](auto type) {
    using Pixel = decltype(type);
    const long long size = sizeof(Pixel);
    for (const auto& row : rows) {
      SCOPED_TRACE(testing::Message()
                   << sizeof(Pixel::Samples[0]) << "x" << size / sizeof(Pixel::Samples[0]) << " at "
                   << row[1] << "," << row[2]);
      std::vector<unsigned char> buffer(static_cast<std::size_t>(16 * size));
      for (std::size_t i = 0; i < buffer.size(); ++i)
        buffer[i] = static_cast<unsigned char>(i * 5 + 1);
      // The image's pointer lies so that the pixel lands at buffer index 8 + near.
      const long long near = (row[3] < -8 || row[3] > 7) ? 0 : row[3];
      ImageOver image(reinterpret_cast<std::uintptr_t>(buffer.data()) +
                          static_cast<std::uintptr_t>((8 + near - row[3]) * size),
                      row[0]);
      std::vector<unsigned char> expected = buffer;
      const Pixel written = Patterned<Pixel>(static_cast<std::size_t>(row[1] & 3));
      std::memcpy(expected.data() + (8 + near) * size, &written, sizeof(Pixel));
      image.SetPixel(written, static_cast<int>(row[1]), static_cast<int>(row[2]));
      EXPECT_EQ(buffer, expected);
      Pixel read = Patterned<Pixel>(static_cast<std::size_t>(row[1] + 1));
      static_cast<const CZtImage&>(image).GetPixel(read, static_cast<int>(row[1]),
                                                   static_cast<int>(row[2]));
      EXPECT_EQ(std::memcmp(&read, &written, sizeof(Pixel)), 0);
    }
  });
}

}  // namespace
