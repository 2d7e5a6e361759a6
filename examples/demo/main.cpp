// Creates an image of every pixel layout and sample type and prints what the
// library says about each: its format text, bytes per pixel and block size.

#include <cstdio>

#include "ZtCoreEx.h"

namespace {

using Zt::EDataType;
using Zt::EPixelType;

constexpr EPixelType::ID kPixelTypes[] = {
    EPixelType::RGB,     EPixelType::RGBA,    EPixelType::Lum,     EPixelType::LumA,
    EPixelType::BayerRG, EPixelType::BayerBG, EPixelType::BayerGR, EPixelType::BayerGB,
    EPixelType::BGR,     EPixelType::BGRA};

constexpr EDataType::ID kDataTypes[] = {EDataType::Byte,   EDataType::UByte, EDataType::Short,
                                        EDataType::UShort, EDataType::Int,   EDataType::UInt,
                                        EDataType::Float,  EDataType::Double};

}  // namespace

int main() {
  const int width = 640;
  const int height = 480;
  int created = 0;
  std::printf("%-28s %14s %12s %12s\n", "format", "bytes/pixel", "pixels", "bytes");
  for (EPixelType::ID pixelType : kPixelTypes) {
    for (EDataType::ID dataType : kDataTypes) {
      Zt::CZtImage image;
      if (!image.Create(width, height, pixelType, dataType)) {
        std::printf("%s: not created\n",
                    Zt::CZtImageFormat(width, height, pixelType, dataType).ToString().ToCString());
        continue;
      }
      image.SetZero();
      ++created;
      std::printf("%-28s %14d %12u %12u\n", image.GetFormat().ToString().ToCString(),
                  image.GetBytesPerPixel(), image.GetPixelCount(), image.GetByteCount());
    }
  }
  std::printf("%d of %zu formats created\n", created,
              sizeof(kPixelTypes) / sizeof(kPixelTypes[0]) * (sizeof(kDataTypes) / sizeof(kDataTypes[0])));
  return created == 80 ? 0 : 1;
}
