#ifndef ZT_FUZZ_READ_CHECK_H
#define ZT_FUZZ_READ_CHECK_H

// What the file-reader targets share. A reader either refuses its input with
// one line naming the input, or gives an image that converts to another
// layout and sample type and back unchanged, writes in its own format (the
// binary member for the plain netpbm files) and reads again to the same
// pixels. Everything happens in memory.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "ZtFuzzCheck.h"
#include "ZtImageIo.h"

namespace ZtFuzz {

using ZtTools::CZtImage;
using ZtTools::CZtImageFormat;
using ZtTools::EDataType;
using ZtTools::EFileFormat;
using ZtTools::EPixelType;

// Large enough for every path of the readers, small enough for many runs a
// second.
constexpr unsigned long long kFuzzMaxPixels = 1u << 20;
constexpr const char* kInputName = "input";

// The bytes a writer puts in an open_memstream stream.
inline std::vector<unsigned char> WriteToMemory(EFileFormat format, const CZtImage& image) {
  char* buffer = nullptr;
  std::size_t size = 0;
  std::FILE* stream = open_memstream(&buffer, &size);
  ZT_FUZZ_CHECK(stream != nullptr, "open_memstream failed");
  try {
    ZtTools::WriteImageTo(stream, format, image);
  } catch (const ZtTools::CIoError& e) {
    ZT_FUZZ_CHECK(false, std::string("writing back failed: ") + e.what());
  }
  std::fclose(stream);
  std::vector<unsigned char> bytes(buffer, buffer + size);
  std::free(buffer);
  return bytes;
}

// Same format and the same samples; NaN equals NaN.
inline bool SamePixels(const CZtImage& a, const CZtImage& b) {
  if (!(a.GetFormat() == b.GetFormat()) || a.GetByteCount() != b.GetByteCount()) return false;
  if (a.GetFormat().DataType == EDataType::Float) {
    const auto* x = static_cast<const float*>(a.GetDataPtr());
    const auto* y = static_cast<const float*>(b.GetDataPtr());
    for (std::size_t i = 0; i < a.GetByteCount() / sizeof(float); ++i) {
      if (!(x[i] == y[i] || (std::isnan(x[i]) && std::isnan(y[i])))) return false;
    }
    return true;
  }
  return std::memcmp(a.GetDataPtr(), b.GetDataPtr(), a.GetByteCount()) == 0;
}

// A layout that holds every sample of `layout`, for a round trip through it.
inline EPixelType::ID WiderLayout(EPixelType::ID layout) {
  switch (layout) {
    case EPixelType::Lum: return EPixelType::RGB;
    case EPixelType::LumA: return EPixelType::RGBA;
    case EPixelType::RGB: return EPixelType::BGR;
    case EPixelType::BGR: return EPixelType::RGB;
    case EPixelType::RGBA: return EPixelType::BGRA;
    default: return EPixelType::RGBA;
  }
}

// Converts to `pixelType, dataType` and back; the image must come back whole.
inline void ExpectRoundTrip(const CZtImage& image, EPixelType::ID pixelType, EDataType::ID dataType,
                            const char* through) {
  const CZtImageFormat format = image.GetFormat();
  CZtImage there;
  CZtImage back;
  try {
    ZtTools::ConvertImage(image, there, pixelType, dataType);
    ZtTools::ConvertImage(there, back, format.PixelType, format.DataType);
  } catch (const ZtTools::CIoError& e) {
    ZT_FUZZ_CHECK(false, std::string("conversion through ") + through + " refused: " + e.what());
  }
  ZT_FUZZ_CHECK(SamePixels(image, back),
                ZtTools::FormatText(format) + " changed through " + through);
}

inline void ExpectOneLineRefusal(const ZtTools::CIoError& e) {
  const std::string message = e.what();
  const std::string prefix = std::string(kInputName) + ": ";
  ZT_FUZZ_CHECK(message.rfind(prefix, 0) == 0 && message.size() > prefix.size() &&
                    message.find('\n') == std::string::npos,
                "refusal is not one line naming the input: \"" + message + "\"");
}

// Reads `bytes` when their content shows a format of `family` (or, with
// rawFormat, as a raw block) and checks the reader as described above.
inline void CheckReader(const std::vector<unsigned char>& bytes, std::vector<EFileFormat> family,
                        const CZtImageFormat* rawFormat = nullptr) {
  EFileFormat shown = EFileFormat::Raw;
  if (rawFormat == nullptr && (!ZtTools::DetectFileFormat(bytes.data(), bytes.size(), shown) ||
                               std::find(family.begin(), family.end(), shown) == family.end())) {
    return;
  }
  ZtTools::SReadOptions options;
  options.RawFormat = rawFormat;
  options.MaxPixels = kFuzzMaxPixels;
  CZtImage image;
  ZtTools::SFileFacts facts;
  try {
    facts = ZtTools::ReadImageBytes(bytes, kInputName, image, options);
  } catch (const ZtTools::CIoError& e) {
    ExpectOneLineRefusal(e);
    return;
  }
  ZT_FUZZ_CHECK(facts.Format == shown, "read as another format than its content shows");
  const CZtImageFormat format = image.GetFormat();
  ZT_FUZZ_CHECK(format.Width >= 1 && format.Height >= 1 &&
                    static_cast<unsigned long long>(format.Width) *
                            static_cast<unsigned long long>(format.Height) <=
                        kFuzzMaxPixels,
                "accepted an image of " + ZtTools::FormatText(format));

  // Lossless conversions: a wider layout, and Double for the types it keeps.
  const bool bayer =
      format.PixelType == EPixelType::BayerRG || format.PixelType == EPixelType::BayerBG ||
      format.PixelType == EPixelType::BayerGR || format.PixelType == EPixelType::BayerGB;
  if (!bayer)
    ExpectRoundTrip(image, WiderLayout(format.PixelType), format.DataType, "a wider layout");
  if (!bayer && format.DataType != EDataType::Int && format.DataType != EDataType::UInt) {
    ExpectRoundTrip(image, format.PixelType, EDataType::Double, "Double");
  }

  // PBM is read, not written: its pixels go back as PGM.
  const EFileFormat written = facts.Format == EFileFormat::Pbm ? EFileFormat::Pgm : facts.Format;
  ZT_FUZZ_CHECK(ZtTools::CanHold(written, format.PixelType, format.DataType),
                std::string(ZtTools::FileFormatName(written)) +
                    " cannot hold what its reader gave: " + ZtTools::FormatText(format));
  const std::vector<unsigned char> again = WriteToMemory(written, image);
  CZtImage reread;
  ZtTools::SReadOptions rereadOptions = options;
  rereadOptions.RawFormat = rawFormat != nullptr ? &format : nullptr;
  try {
    ZtTools::ReadImageBytes(again, kInputName, reread, rereadOptions);
  } catch (const ZtTools::CIoError& e) {
    ZT_FUZZ_CHECK(false, std::string("what the writer wrote does not read back: ") + e.what());
  }
  ZT_FUZZ_CHECK(SamePixels(image, reread), "pixels changed through writing and reading again");
}

inline std::vector<unsigned char> Bytes(const std::uint8_t* data, std::size_t size) {
  return std::vector<unsigned char>(data, data + size);
}

}  // namespace ZtFuzz

#endif
