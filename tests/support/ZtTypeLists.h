#ifndef ZT_TESTS_TYPELISTS_H
#define ZT_TESTS_TYPELISTS_H

// The closed lists of layouts and sample types, written out independently of the library.

#include <cstdint>

#include "ZtInterop.h"

namespace ZtTest {

using Zt::EDataType;
using Zt::EPixelType;

struct PixelTypeInfo {
  EPixelType::ID type;
  const char* name;
  int components;
};

struct DataTypeInfo {
  EDataType::ID type;
  const char* name;
  int bytes;
};

inline constexpr PixelTypeInfo kPixelTypes[] = {
    {EPixelType::RGB, "RGB", 3},         {EPixelType::RGBA, "RGBA", 4},
    {EPixelType::Lum, "Lum", 1},         {EPixelType::LumA, "LumA", 2},
    {EPixelType::BayerRG, "BayerRG", 1}, {EPixelType::BayerBG, "BayerBG", 1},
    {EPixelType::BayerGR, "BayerGR", 1}, {EPixelType::BayerGB, "BayerGB", 1},
    {EPixelType::BGR, "BGR", 3},         {EPixelType::BGRA, "BGRA", 4}};

// The six layouts a conversion writes (the Bayer types are sources only).
inline constexpr EPixelType::ID kTargetPixelTypes[] = {EPixelType::RGB, EPixelType::RGBA,
                                                       EPixelType::Lum, EPixelType::LumA,
                                                       EPixelType::BGR, EPixelType::BGRA};

inline constexpr DataTypeInfo kDataTypes[] = {
    {EDataType::Byte, "Byte", 1},   {EDataType::UByte, "UByte", 1},
    {EDataType::Short, "Short", 2}, {EDataType::UShort, "UShort", 2},
    {EDataType::Int, "Int", 4},     {EDataType::UInt, "UInt", 4},
    {EDataType::Float, "Float", 4}, {EDataType::Double, "Double", 8}};

// Values that are no pixel type: zero, neighbours of the real ones, extremes.
inline constexpr int kUnknownPixelTypes[] = {0,      1,      0x1906, 0x190B,    0x2000,   0x2005,
                                             0x80DF, 0x80E2, -1,     INT32_MIN, INT32_MAX};
// Values that are no data type, the holes 0x1407 to 0x1409 among them.
inline constexpr int kUnknownDataTypes[] = {0,      0x13FF, 0x1407,           0x1408,   0x1409,
                                            0x140B, -1,     0x1401 + 0x10000, INT32_MIN};

inline EPixelType::ID AsPixelType(int value) { return static_cast<EPixelType::ID>(value); }
inline EDataType::ID AsDataType(int value) { return static_cast<EDataType::ID>(value); }

}  // namespace ZtTest

#endif
