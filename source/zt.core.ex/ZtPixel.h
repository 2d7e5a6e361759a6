#ifndef ZT_CORE_EX_ZTPIXEL_H
#define ZT_CORE_EX_ZTPIXEL_H

// A pixel value whose whole format is in its type, for the single-pixel
// access of CZtImage (GetPixel, SetPixel).

#include "ZtInterop.h"

namespace Zt {

// One pixel as it lies in an image: ColorCount + HasAlpha samples of T,
// contiguous and in memory order, and nothing else, so sizeof is the bytes
// per pixel of the format. The index arguments say where red, green, blue
// and alpha sit (all 0 for a one-colour layout, AlphaIndex 0 without alpha);
// PixelType and DataType are the EPixelType::ID and EDataType::ID numbers.
//
// An aggregate: TPixelRGB<unsigned char> p{{255, 128, 0}}; p.Samples[2] is
// blue in an RGB pixel and red in a BGR one, since samples are never
// reordered.
template <class T, int ColorCount, int HasAlpha, int RedIndex, int GreenIndex, int BlueIndex,
          int AlphaIndex, int PixelType, int DataType>
struct TPixel {
  // The cast only keeps -Wsign-conversion quiet in users' code.
  T Samples[static_cast<unsigned int>(ColorCount + HasAlpha)];
};

// The two closed lists. Each entry calls X with the pass-through argument M
// first, so that a list can be expanded inside an expansion of the other.
//
// Sample types: the C++ type and its EDataType::ID enumerator. char stands
// for the signed Byte samples whatever the platform's char signedness.
#define ZT_PIXEL_SAMPLE_TYPES(X, M, ...)    \
  X(M, char, Byte, __VA_ARGS__)             \
  X(M, unsigned char, UByte, __VA_ARGS__)   \
  X(M, short, Short, __VA_ARGS__)           \
  X(M, unsigned short, UShort, __VA_ARGS__) \
  X(M, int, Int, __VA_ARGS__)               \
  X(M, unsigned int, UInt, __VA_ARGS__)     \
  X(M, float, Float, __VA_ARGS__)           \
  X(M, double, Double, __VA_ARGS__)

// Layouts: the EPixelType::ID enumerator, colour samples, alpha samples, and
// the positions of red, green, blue and alpha.
#define ZT_PIXEL_LAYOUTS(X, M)    \
  X(M, RGB, 3, 0, 0, 1, 2, 0)     \
  X(M, RGBA, 3, 1, 0, 1, 2, 3)    \
  X(M, BGR, 3, 0, 2, 1, 0, 0)     \
  X(M, BGRA, 3, 1, 2, 1, 0, 3)    \
  X(M, Lum, 1, 0, 0, 0, 0, 0)     \
  X(M, LumA, 1, 1, 0, 0, 0, 1)    \
  X(M, BayerRG, 1, 0, 0, 0, 0, 0) \
  X(M, BayerBG, 1, 0, 0, 0, 0, 0) \
  X(M, BayerGR, 1, 0, 0, 0, 0, 0) \
  X(M, BayerGB, 1, 0, 0, 0, 0, 0)

// The EDataType::ID number of a sample type, TDataTypeOf<T>::Value. Defined
// for the eight sample types only, so a pixel of any other does not compile.
template <class T>
struct TDataTypeOf;
#define ZT_PIXEL_DATA_TYPE_OF(M, T, Id, ...)    \
  template <>                                   \
  struct TDataTypeOf<T> {                       \
    static constexpr int Value = EDataType::Id; \
  };
ZT_PIXEL_SAMPLE_TYPES(ZT_PIXEL_DATA_TYPE_OF, , )
#undef ZT_PIXEL_DATA_TYPE_OF

// One alias per layout: TPixelBGRA<float> is the BGRA Float pixel.
#define ZT_PIXEL_LAYOUT_ALIAS(M, Layout, Colours, Alpha, Red, Green, Blue, AlphaAt)               \
  template <class T>                                                                              \
  using TPixel##Layout = TPixel<T, Colours, Alpha, Red, Green, Blue, AlphaAt, EPixelType::Layout, \
                                TDataTypeOf<T>::Value>;
ZT_PIXEL_LAYOUTS(ZT_PIXEL_LAYOUT_ALIAS, )
#undef ZT_PIXEL_LAYOUT_ALIAS

}  // namespace Zt

// Expands M(Layout, T) once for each of the 80 pixel types TPixel##Layout<T>:
// the ten layouts by the eight sample types. CZtImage declares and defines its
// GetPixel and SetPixel overloads through it.
#define ZT_PIXEL_APPLY(M, T, Id, Layout) M(Layout, T)
#define ZT_PIXEL_SAMPLES_OF_LAYOUT(M, Layout, ...) ZT_PIXEL_SAMPLE_TYPES(ZT_PIXEL_APPLY, M, Layout)
#define ZT_PIXEL_FOR_EACH_TYPE(M) ZT_PIXEL_LAYOUTS(ZT_PIXEL_SAMPLES_OF_LAYOUT, M)

#endif
