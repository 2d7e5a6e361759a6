#ifndef ZT_INTEROP_IMAGETYPES_H
#define ZT_INTEROP_IMAGETYPES_H

namespace Zt {
namespace Interop {
namespace Runtime28 {

// Pixel layout of an image. Apart from the four Bayer types the values are
// those of the OpenGL enumerants of the same meaning. Every other 32-bit
// value, 0 among them, is no layout: it displays as "None" and has no
// components.
struct EPixelType {
  enum ID : int {
    RGB = 0x1907,
    RGBA = 0x1908,
    Lum = 0x1909,
    LumA = 0x190A,
    BayerRG = 0x2001,
    BayerBG = 0x2002,
    BayerGR = 0x2003,
    BayerGB = 0x2004,
    BGR = 0x80E0,
    BGRA = 0x80E1
  };
};

// Sample type of an image, again with the OpenGL numbers. Every other value,
// 0 and 0x1407 to 0x1409 among them, is no type: it displays as "Void" and
// has a sample size of 0.
struct EDataType {
  enum ID : int {
    Byte = 0x1400,
    UByte = 0x1401,
    Short = 0x1402,
    UShort = 0x1403,
    Int = 0x1404,
    UInt = 0x1405,
    Float = 0x1406,
    Double = 0x140A
  };
};

}  // namespace Runtime28
}  // namespace Interop
}  // namespace Zt

#endif
