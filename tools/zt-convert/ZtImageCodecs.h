#ifndef ZT_TOOLS_ZTIMAGECODECS_H
#define ZT_TOOLS_ZTIMAGECODECS_H

// The file codecs behind ZtImageIo. Readers take the whole file in memory,
// check the size it declares against maxPixels and against what the file can
// hold before they reserve any pixel memory, fill an image of the layout and
// sample type the file holds and describe the file's own facts in details
// ("key=value" pairs separated by blanks); writers take an
// image whose types the format holds (ZtImageIo checks that first) and write
// it to an open file. Both throw CIoError with a reason that does not yet name
// the file.

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "ZtImageIo.h"

namespace ZtTools {
namespace Detail {

using CBytes = std::vector<unsigned char>;

// PBM, PGM, PPM, PAM and PFM, told apart by their magic.
void ReadNetpbm(const CBytes& file, unsigned long long maxPixels, CZtImage& image,
                std::string& details);
void WriteNetpbm(EFileFormat format, const IImage& image, std::FILE* file);

void ReadPng(const CBytes& file, unsigned long long maxPixels, CZtImage& image,
             std::string& details);
void WritePng(const IImage& image, std::FILE* file);

// Whether the machine stores the low byte first.
inline bool IsLittleEndian() {
  const unsigned short probe = 1;
  unsigned char first = 0;
  std::memcpy(&first, &probe, 1);
  return first == 1;
}

// A sample of T from or to sizeof(T) bytes in the given byte order.
template <class T>
T LoadSample(const unsigned char* bytes, bool bigEndian) {
  unsigned char ordered[sizeof(T)];
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    ordered[i] = bytes[bigEndian == IsLittleEndian() ? sizeof(T) - 1 - i : i];
  }
  T value;
  std::memcpy(&value, ordered, sizeof(T));
  return value;
}

template <class T>
void StoreSample(unsigned char* bytes, T value, bool bigEndian) {
  unsigned char raw[sizeof(T)];
  std::memcpy(raw, &value, sizeof(T));
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    bytes[bigEndian == IsLittleEndian() ? sizeof(T) - 1 - i : i] = raw[i];
  }
}

// Bytes of a sample of the type, 0 for an unknown one.
inline unsigned SampleBytes(EDataType::ID type) {
  return static_cast<unsigned>(CZtImageFormat::GetDataTypeSize(type));
}
// Samples per pixel of the layout, 0 for an unknown one.
inline unsigned SampleCount(EPixelType::ID type) {
  return static_cast<unsigned>(CZtImageFormat::GetPixelTypeComponentCount(type));
}

// Bytes of a block of the format. The library sizes images in 32 bits, so a
// block of 2^32 bytes or more throws CIoError here rather than wrapping.
unsigned long long BlockBytes(unsigned long long width, unsigned long long height,
                              EPixelType::ID pixelType, EDataType::ID dataType);
// Throws CIoError when a file declares more than maxPixels pixels.
void CheckPixelCount(unsigned long long width, unsigned long long height,
                     unsigned long long maxPixels);
// Allocates image for a file's pixels, after the same check.
void CreateForFile(CZtImage& image, unsigned long long width, unsigned long long height,
                   EPixelType::ID pixelType, EDataType::ID dataType);

}  // namespace Detail
}  // namespace ZtTools

#endif
