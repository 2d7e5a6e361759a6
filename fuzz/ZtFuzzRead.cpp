// The file readers of zt-convert, one target per family (ZT_FUZZ_READ_<family>),
// in memory. A reader refuses its input with one line naming the input, or
// gives an image that converts to another layout and sample type and back
// unchanged, writes in its own format and reads again to the same pixels.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "ZtFuzzCheck.h"
#include "ZtImageIo.h"
#include "zlib.h"

namespace {

using namespace ZtTools;
using Bytes = std::vector<unsigned char>;

// Large enough for every path of the readers, small enough for many runs.
constexpr unsigned long long kFuzzMaxPixels = 1u << 20;
constexpr const char* kInputName = "input";

Bytes WriteToMemory(EFileFormat format, const CZtImage& image) {
  char* buffer = nullptr;
  std::size_t size = 0;
  std::FILE* stream = open_memstream(&buffer, &size);
  ZT_FUZZ_CHECK(stream != nullptr, "open_memstream failed");
  try {
    WriteImageTo(stream, format, image);
  } catch (const CIoError& e) {
    ZT_FUZZ_CHECK(false, std::string("writing back failed: ") + e.what());
  }
  std::fclose(stream);
  const Bytes bytes(buffer, buffer + size);
  std::free(buffer);
  return bytes;
}

// Same format and the same samples; NaN equals NaN.
bool SamePixels(const CZtImage& a, const CZtImage& b) {
  if (!(a.GetFormat() == b.GetFormat()) || a.GetByteCount() != b.GetByteCount()) return false;
  if (a.GetFormat().DataType != EDataType::Float)
    return std::memcmp(a.GetDataPtr(), b.GetDataPtr(), a.GetByteCount()) == 0;
  const auto* x = static_cast<const float*>(a.GetDataPtr());
  const auto* y = static_cast<const float*>(b.GetDataPtr());
  for (std::size_t i = 0; i < a.GetByteCount() / sizeof(float); ++i) {
    if (!(x[i] == y[i] || (std::isnan(x[i]) && std::isnan(y[i])))) return false;
  }
  return true;
}

// Converts to `pixelType, dataType` and back; the image must come back whole.
void ExpectRoundTrip(const CZtImage& image, EPixelType::ID pixelType, EDataType::ID dataType,
                     const char* through) {
  const CZtImageFormat format = image.GetFormat();
  CZtImage there, back;
  try {
    ConvertImage(image, there, pixelType, dataType);
    ConvertImage(there, back, format.PixelType, format.DataType);
  } catch (const CIoError& e) {
    ZT_FUZZ_CHECK(false, std::string("conversion through ") + through + " refused: " + e.what());
  }
  ZT_FUZZ_CHECK(SamePixels(image, back), FormatText(format) + " changed through " + through);
}

// A layout that holds every sample of `layout`, for a round trip through it.
EPixelType::ID WiderLayout(EPixelType::ID layout) {
  switch (layout) {
    case EPixelType::Lum: return EPixelType::RGB;
    case EPixelType::LumA: return EPixelType::RGBA;
    case EPixelType::RGB: return EPixelType::BGR;
    case EPixelType::BGR: return EPixelType::RGB;
    case EPixelType::RGBA: return EPixelType::BGRA;
    default: return EPixelType::RGBA;
  }
}

// Reads `bytes` when their content shows a format of `family` (or, with
// rawFormat, as a raw block) and checks the reader as described above.
void CheckReader(const Bytes& bytes, std::vector<EFileFormat> family,
                 const CZtImageFormat* rawFormat = nullptr) {
  EFileFormat shown = EFileFormat::Raw;
  if (rawFormat == nullptr && (!DetectFileFormat(bytes.data(), bytes.size(), shown) ||
                               std::find(family.begin(), family.end(), shown) == family.end())) {
    return;
  }
  SReadOptions options;
  options.RawFormat = rawFormat;
  options.MaxPixels = kFuzzMaxPixels;
  CZtImage image;
  SFileFacts facts;
  try {
    facts = ReadImageBytes(bytes, kInputName, image, options);
  } catch (const CIoError& e) {
    const std::string message = e.what(), prefix = std::string(kInputName) + ": ";
    ZT_FUZZ_CHECK(message.rfind(prefix, 0) == 0 && message.size() > prefix.size() &&
                      message.find('\n') == std::string::npos,
                  "refusal is not one line naming the input: \"" + message + "\"");
    return;
  }
  ZT_FUZZ_CHECK(facts.Format == shown, "read as another format than its content shows");
  const CZtImageFormat format = image.GetFormat();
  ZT_FUZZ_CHECK(format.Width >= 1 && format.Height >= 1 &&
                    static_cast<unsigned long long>(format.Width) *
                            static_cast<unsigned long long>(format.Height) <=
                        kFuzzMaxPixels,
                "accepted an image of " + FormatText(format));

  // Lossless conversions: a wider layout, and Double for the types it keeps.
  const bool bayer =
      format.PixelType == EPixelType::BayerRG || format.PixelType == EPixelType::BayerBG ||
      format.PixelType == EPixelType::BayerGR || format.PixelType == EPixelType::BayerGB;
  if (!bayer) {
    ExpectRoundTrip(image, WiderLayout(format.PixelType), format.DataType, "a wider layout");
    if (format.DataType != EDataType::Int && format.DataType != EDataType::UInt)
      ExpectRoundTrip(image, format.PixelType, EDataType::Double, "Double");
  }

  // PBM is read, not written: its pixels go back as PGM.
  const EFileFormat written = facts.Format == EFileFormat::Pbm ? EFileFormat::Pgm : facts.Format;
  ZT_FUZZ_CHECK(CanHold(written, format.PixelType, format.DataType),
                std::string(FileFormatName(written)) +
                    " cannot hold what its reader gave: " + FormatText(format));
  CZtImage reread;
  options.RawFormat = rawFormat != nullptr ? &format : nullptr;
  try {
    ReadImageBytes(WriteToMemory(written, image), kInputName, reread, options);
  } catch (const CIoError& e) {
    ZT_FUZZ_CHECK(false, std::string("what the writer wrote does not read back: ") + e.what());
  }
  ZT_FUZZ_CHECK(SamePixels(image, reread), "pixels changed through writing and reading again");
}

// Sets each PNG chunk's CRC right, so that mutations reach the chunks'
// contents instead of stopping at the checksum.
[[maybe_unused]] void FixChunkCrcs(Bytes& png) {
  for (std::size_t at = 8, length; at + 12 <= png.size(); at += length + 12) {
    length = std::size_t{png[at]} << 24 | std::size_t{png[at + 1]} << 16 |
             std::size_t{png[at + 2]} << 8 | png[at + 3];
    if (length > png.size() - at - 12) break;
    const uLong crc = crc32(0, png.data() + at + 4, uInt(length + 4));
    for (int i = 0; i < 4; ++i)
      png[at + 8 + length + i] = static_cast<unsigned char>(crc >> (24 - 8 * i));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes bytes(data, data + size);
#if defined(ZT_FUZZ_READ_NETPBM)  // PBM, PGM and PPM, plain and binary
  CheckReader(bytes, {EFileFormat::Pbm, EFileFormat::Pgm, EFileFormat::Ppm});
#elif defined(ZT_FUZZ_READ_PAM)  // header lines and tuple types
  CheckReader(bytes, {EFileFormat::Pam});
#elif defined(ZT_FUZZ_READ_PFM)  // either byte order
  CheckReader(bytes, {EFileFormat::Pfm});
#elif defined(ZT_FUZZ_READ_PNG)  // every colour type, depth and interlacing
  FixChunkCrcs(bytes);
  CheckReader(bytes, {EFileFormat::Png});
#else  // raw, as with -r: the last three bytes choose the width, layout and sample type, the
       // rest is the block; its height is what the block holds at that width, or one row more
       // when it does not come out even, which the reader must refuse.
  if (size < 3) return 0;
  const std::size_t blockSize = size - 3;
  const int width = data[blockSize] % 32 + 1;
  const EPixelType::ID pixelType = kAllPixelTypes[data[blockSize + 1] % 10];
  const EDataType::ID dataType = kAllDataTypes[data[blockSize + 2] % 8];
  const std::size_t rowBytes = static_cast<std::size_t>(width) *
                               CZtImageFormat::GetPixelTypeComponentCount(pixelType) *
                               CZtImageFormat::GetDataTypeSize(dataType);
  const std::size_t rows = blockSize / rowBytes;
  const int height = static_cast<int>(rows) + (rows == 0 || blockSize % rowBytes != 0 ? 1 : 0);
  const CZtImageFormat format(width, height, pixelType, dataType);
  bytes.resize(blockSize);
  CheckReader(bytes, {EFileFormat::Raw}, &format);
#endif
  return 0;
}
