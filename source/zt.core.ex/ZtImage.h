#ifndef ZT_CORE_EX_ZTIMAGE_H
#define ZT_CORE_EX_ZTIMAGE_H

#include "ZtCoreExExport.h"
#include "ZtImageFormat.h"
#include "ZtInterop.h"
#include "ZtPixel.h"

namespace Zt {

// An image that owns its pixels: one malloc block of exactly
// GetByteCount() bytes, dense and unpadded, described by a CZtImageFormat.
//
// It never raises. Every failure is a false result or a silently Empty image
// (IsValid() false); callers check IsValid() after the operations that drop
// their result (the copy constructor, the format constructor, operator =).
// Copies are deep.
class ZT_CORE_EX_API CZtImage : public IImage {
public:
  // Empty, with an unset format.
  CZtImage();
  // Empty, then a deep copy if other is valid.
  CZtImage(const CZtImage& other);
  // Allocates an uninitialised block of the format; Empty on failure.
  CZtImage(const CZtImageFormat& format);  // NOLINT: converting on purpose
  ~CZtImage() override;

  // A deep copy if other is valid; otherwise nothing changes. Assigning an
  // image to itself leaves it Empty, as Create(*this) does.
  CZtImage& operator=(const CZtImage& other);

  // Destroys the old block, then copies a valid source; false, with nothing
  // changed, for a null or invalid source.
  bool Create(const IImage* source) override;
  // Allocates, then copies GetByteCount() bytes from data (not checked).
  bool Create(int width, int height, EPixelType::ID pixelType, EDataType::ID dataType,
              const void* data) override;
  // Destroys the old block, then allocates an uninitialised one. False for a
  // size below 1 (format untouched), an unknown type or a failed malloc
  // (format zeroed).
  bool Create(int width, int height, EPixelType::ID pixelType, EDataType::ID dataType) override;
  // Frees the block and zeroes the format; on an Empty image does nothing.
  // Always true.
  bool Destroy() override;
  bool IsValid() const override;
  int GetBytesPerPixel() const override;
  unsigned int GetPixelCount() const override;
  unsigned int GetByteCount() const override;
  void GetSize(int& width, int& height) const override;
  void GetType(EPixelType::ID& pixelType, EDataType::ID& dataType) const override;
  const void* GetDataPtr() const override;
  void* GetDataPtr() override;

  virtual const CZtImageFormat& GetFormat() const;

  bool Create(const CZtImage& other);
  bool Create(const CZtImageFormat& format);

  // Copies other's pixels into the existing block; false unless both images
  // are valid and of the same format.
  bool Set(const CZtImage& other);
  // Copies GetByteCount() bytes from data into a valid image. Returns false
  // on every path, also after a complete copy.
  bool Set(const void* data);

  bool IsOfType(EPixelType::ID pixelType, EDataType::ID dataType) const;
  // Clears GetByteCount() bytes; no validity test.
  void SetZero();
  // Stretches a Lum Float image to 0..1 in place, in single precision. The
  // extremes start at 1e9 and -1e9 and are never seeded from a sample; NaN
  // samples are ignored and stay NaN. False for any other format.
  bool Normalize();

  // --- Pixel access --------------------------------------------------------
  // One GetPixel and one SetPixel for each of the 80 TPixel types. Pixel
  // (x, y) starts at byte (Width * y + x) * sizeof(pixel); the index wraps in
  // signed 32 bits, the byte offset is pointer-wide. Only Width and the block
  // pointer are read: nothing is checked, neither bounds, nor validity, nor
  // the image's types, and a pixel of another size steps by its own size.
  // Samples are moved bit for bit in memory order, never converted.
#define ZT_IMAGE_DECLARE_PIXEL_ACCESS(Layout, T)               \
  void GetPixel(TPixel##Layout<T>& pixel, int x, int y) const; \
  void SetPixel(const TPixel##Layout<T>& pixel, int x, int y);
  ZT_PIXEL_FOR_EACH_TYPE(ZT_IMAGE_DECLARE_PIXEL_ACCESS)
#undef ZT_IMAGE_DECLARE_PIXEL_ACCESS
  // --- End of pixel access -------------------------------------------------

  // --- Conversion --------------------------------------------------------
  // Converts this image into target, which is always created anew with this
  // image's size and the given types. False for an invalid source, a refused
  // Create, or a target type no conversion writes.
  bool ConvertType(CZtImage& target, EPixelType::ID pixelType, EDataType::ID dataType) const;
  // Converts source into target. With create true, target is created first;
  // with create false, the conversion writes into target's existing memory
  // and asks nothing else of it (the form for views).
  static bool ConvertType(IImage* target, const IImage* source, EPixelType::ID pixelType,
                          EDataType::ID dataType, bool create);
  // Converts one bare block into another: a copy when the formats are equal,
  // otherwise the conversion over the source's pixel count. Nothing is
  // checked: pointers, target size and overlap are the caller's business.
  static bool ConvertMemory(void* target, const void* source, const CZtImageFormat& targetFormat,
                            const CZtImageFormat& sourceFormat);

protected:
  // Selects the conversion, target types first, then source types.
  static bool _ConvertTrgSwitch(void* target, const void* source,
                                const CZtImageFormat& targetFormat,
                                const CZtImageFormat& sourceFormat);

  CZtImageFormat m_Format;
  void* m_pData;
};

}  // namespace Zt

#endif
