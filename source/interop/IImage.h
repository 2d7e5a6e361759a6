#ifndef ZT_INTEROP_IIMAGE_H
#define ZT_INTEROP_IIMAGE_H

#include "ImageTypes.h"
#include "ZtInteropExport.h"

namespace Zt {
namespace Interop {
namespace Runtime28 {

// A dense block of pixels, row after row with no padding, described by its
// size, pixel layout and sample type. Implemented by the owned image and by
// the view on foreign memory. The order of the virtual operations is part of
// the binary interface.
class ZT_INTEROP_API IImage {
public:
  virtual bool Create(const IImage* source) = 0;
  virtual bool Create(int width, int height, EPixelType::ID pixelType, EDataType::ID dataType,
                      const void* data) = 0;
  virtual bool Create(int width, int height, EPixelType::ID pixelType, EDataType::ID dataType) = 0;
  virtual bool Destroy() = 0;
  virtual bool IsValid() const = 0;
  virtual int GetBytesPerPixel() const = 0;
  virtual unsigned int GetPixelCount() const = 0;
  virtual unsigned int GetByteCount() const = 0;
  virtual void GetSize(int& width, int& height) const = 0;
  virtual void GetType(EPixelType::ID& pixelType, EDataType::ID& dataType) const = 0;
  virtual const void* GetDataPtr() const = 0;
  virtual void* GetDataPtr() = 0;
  virtual ~IImage();

protected:
  IImage() = default;
  IImage(const IImage&) = default;
  IImage& operator=(const IImage&) = default;
};

}  // namespace Runtime28
}  // namespace Interop
}  // namespace Zt

#endif
