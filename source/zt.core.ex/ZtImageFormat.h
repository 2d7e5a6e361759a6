#ifndef ZT_CORE_EX_ZTIMAGEFORMAT_H
#define ZT_CORE_EX_ZTIMAGEFORMAT_H

#include "ZtCoreExExport.h"
#include "ZtInterop.h"
#include "ZtString.h"

namespace Zt {

// How to read a dense block of pixels: width, height, sample type and pixel
// layout. A plain value with no invariant: it holds any four numbers, and
// whoever allocates from it does the checking. Note the field order (data
// type before pixel type), while every operation taking both names the pixel
// type first.
//
// All sizes are computed in 32-bit unsigned arithmetic and wrap modulo 2^32:
// a 65536 x 65536 image reports 0 pixels.
class ZT_CORE_EX_API CZtImageFormat {
public:
  int Width;
  int Height;
  EDataType::ID DataType;
  EPixelType::ID PixelType;

  // Leaves all four fields unset; call Reset or assign for a known value.
  CZtImageFormat() {}  // NOLINT: deliberately writes nothing
  CZtImageFormat(int width, int height, EPixelType::ID pixelType, EDataType::ID dataType);
  CZtImageFormat(const CZtImageFormat& other) = default;
  ~CZtImageFormat() = default;
  CZtImageFormat& operator=(const CZtImageFormat& other) = default;

  // Sets all four fields to 0.
  void Reset();
  // "640x480, RGB, UByte": width, height, pixel type, data type.
  CZtString ToString() const;

  // Display texts; "None" and "Void" for every value outside the tables.
  static CZtString PixelType2String(EPixelType::ID type);
  static CZtString DataType2String(EDataType::ID type);

  bool operator==(const CZtImageFormat& other) const;
  bool operator!=(const CZtImageFormat& other) const;

  bool IsBayerPixelType() const;
  // 1, 2, 3 or 4 for the ten layouts, 0 for any other value.
  int GetComponentCount() const;
  // Components times sample bytes; 0 when either type is unknown.
  int GetBytesPerPixel() const;
  unsigned int GetPixelCount() const;
  unsigned int GetByteCount() const;

  // Sample bytes of a data type, 0 for an unknown one.
  static int GetDataTypeSize(EDataType::ID type);
  // Components of a pixel type, 0 for an unknown one.
  static int GetPixelTypeComponentCount(EPixelType::ID type);
};

}  // namespace Zt

#endif
