// GetPixel and SetPixel of CZtImage: 160 overloads stamped out from the two
// templates below. Each compiles to one index computation and a few moves.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "ZtImage.h"

namespace Zt {
namespace {

// Forced even without optimisation, so that no overload ever holds a call.
#define ZT_PIXEL_INLINE __attribute__((always_inline)) inline

// Where pixel (x, y) of a Width-wide block starts. The index Width * y + x is
// computed in unsigned 32 bits, so it wraps without undefined behaviour, then
// read back as signed 32 bits and widened with its sign: an index past 2^31
// lands before the block. The byte offset is pointer-wide and does not wrap.
// The address is formed as an integer, since it may lie outside the block.
template <std::size_t PixelBytes>
ZT_PIXEL_INLINE std::uintptr_t PixelAddress(const void* data, int width, int x, int y) {
  const std::uint32_t index = static_cast<std::uint32_t>(width) * static_cast<std::uint32_t>(y) +
                              static_cast<std::uint32_t>(x);
  const std::intptr_t offset = static_cast<std::intptr_t>(static_cast<std::int32_t>(index)) *
                               static_cast<std::intptr_t>(PixelBytes);
  return reinterpret_cast<std::uintptr_t>(data) + static_cast<std::uintptr_t>(offset);
}

// Moves the samples of one pixel one at a time in memory order, as raw bytes
// of the sample width: a float NaN keeps its payload and its signalling bit,
// since no sample passes through a floating-point register as a value. Only
// width and count matter, so the 80 pixel types share 16 instances.
//
// Straight-line on purpose: a loop here gets vectorised behind a run-time
// overlap test of the pixel and the image, which is a branch.
template <std::size_t SampleBytes, std::size_t... Position>
ZT_PIXEL_INLINE void MoveSamples(std::uintptr_t to, std::uintptr_t from,
                                 std::index_sequence<Position...> /*positions*/) {
  (std::memcpy(reinterpret_cast<void*>(to + Position * SampleBytes),
               reinterpret_cast<const void*>(from + Position * SampleBytes), SampleBytes),
   ...);
}

// Sample width and count of a pixel type.
template <class Pixel>
struct PixelShape {
  static constexpr std::size_t SampleBytes = sizeof(Pixel::Samples[0]);
  using Positions = std::make_index_sequence<sizeof(Pixel) / SampleBytes>;
};

template <class Pixel>
ZT_PIXEL_INLINE void ReadPixel(Pixel& pixel, const void* data, int width, int x, int y) {
  MoveSamples<PixelShape<Pixel>::SampleBytes>(reinterpret_cast<std::uintptr_t>(&pixel),
                                              PixelAddress<sizeof(Pixel)>(data, width, x, y),
                                              typename PixelShape<Pixel>::Positions());
}

template <class Pixel>
ZT_PIXEL_INLINE void WritePixel(const Pixel& pixel, void* data, int width, int x, int y) {
  MoveSamples<PixelShape<Pixel>::SampleBytes>(PixelAddress<sizeof(Pixel)>(data, width, x, y),
                                              reinterpret_cast<std::uintptr_t>(&pixel),
                                              typename PixelShape<Pixel>::Positions());
}

}  // namespace

#define ZT_IMAGE_DEFINE_PIXEL_ACCESS(Layout, T)                           \
  void CZtImage::GetPixel(TPixel##Layout<T>& pixel, int x, int y) const { \
    ReadPixel(pixel, m_pData, m_Format.Width, x, y);                      \
  }                                                                       \
  void CZtImage::SetPixel(const TPixel##Layout<T>& pixel, int x, int y) { \
    WritePixel(pixel, m_pData, m_Format.Width, x, y);                     \
  }
ZT_PIXEL_FOR_EACH_TYPE(ZT_IMAGE_DEFINE_PIXEL_ACCESS)
#undef ZT_IMAGE_DEFINE_PIXEL_ACCESS
#undef ZT_PIXEL_INLINE

}  // namespace Zt
