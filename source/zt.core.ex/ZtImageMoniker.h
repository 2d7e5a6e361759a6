#ifndef ZT_CORE_EX_ZTIMAGEMONIKER_H
#define ZT_CORE_EX_ZTIMAGEMONIKER_H

#include "ZtCoreExExport.h"
#include "ZtImage.h"
#include "ZtImageFormat.h"
#include "ZtInterop.h"

namespace Zt {

// A view that gives memory owned by someone else the shape of an IImage, so
// it can be the source of a creation or conversion, or the target of a
// conversion with create false. It never allocates, frees or copies pixels;
// the memory must outlive every use of the view, and nothing tracks that.
// Copies share the memory.
//
// Memory is taken as const void*, yet GetDataPtr() hands it out writable: a
// view of const memory serves as a conversion target.
//
// The virtual Create forms answer bool and never raise; the three
// non-virtual ones raise a CZtException ("Error creating CZtImageMoniker")
// where the virtual form they call answers false.
class ZT_CORE_EX_API CZtImageMoniker : public IImage {
public:
  // Unbound, with an unset format.
  CZtImageMoniker();
  // Copies format and pointer, bound or not.
  CZtImageMoniker(const CZtImageMoniker& other);
  // Clears pointer and format; frees nothing.
  ~CZtImageMoniker() override;
  // Copies format and pointer, bound or not (an unbound source too).
  CZtImageMoniker& operator=(const CZtImageMoniker& other);

  // Binds to the memory of a valid source, reading all of it before the old
  // binding is dropped, so Create(this) keeps the view as it was. False, with
  // nothing changed, for a null or invalid source.
  bool Create(const IImage* source) override;
  // Drops the old binding (zero format), then binds to data, null accepted.
  // False for a size below 1 or an unknown type, leaving the view unbound
  // with a zero format. Nothing confirms that data is as large as the format.
  bool Create(int width, int height, EPixelType::ID pixelType, EDataType::ID dataType,
              const void* data) override;
  // Sets the format without memory: true, yet IsValid() is false until Set.
  bool Create(int width, int height, EPixelType::ID pixelType, EDataType::ID dataType) override;
  // Zeroes pointer and format, bound or not; the memory is untouched. Always
  // true.
  bool Destroy() override;
  bool IsValid() const override;
  int GetBytesPerPixel() const override;
  unsigned int GetPixelCount() const override;
  unsigned int GetByteCount() const override;
  void GetSize(int& width, int& height) const override;
  void GetType(EPixelType::ID& pixelType, EDataType::ID& dataType) const override;
  const void* GetDataPtr() const override;
  void* GetDataPtr() override;

  // The two types as plain integers, pixel type first.
  virtual void GetType(int& pixelType, int& dataType) const;

  // Raising forms: Create(const IImage*) for an image, the five-argument
  // Create with integer types or with a format's fields. Null data is no
  // failure. After a raise the view is as the virtual form left it.
  void Create(const CZtImage& image);
  void Create(int width, int height, int pixelType, int dataType, const void* data);
  void Create(const CZtImageFormat& format, const void* data);

  // Replaces the pointer only; the format stays. Null unbinds. With the
  // four-argument Create, one format serves many blocks.
  void Set(const void* data);

  const CZtImageFormat& GetFormat() const;
  bool IsOfType(EPixelType::ID pixelType, EDataType::ID dataType) const;

protected:
  CZtImageFormat m_Format;
  const void* m_pData;
};

}  // namespace Zt

#endif
