// The file readers of zt-convert, one target per family (ZT_FUZZ_READ_<family>): a refusal is one
// line naming the input; an image writes in its format and reads again unchanged.

#include <algorithm>
#include <cmath>

#include "ZtFuzzCheck.h"
#include "ZtImageIo.h"
#include "zlib.h"

namespace {

using namespace ZtTools;
using Bytes = std::vector<unsigned char>;

// Large enough for every path of the readers, small enough for many runs.
constexpr unsigned long long kFuzzMaxPixels = 1u << 20;
constexpr const char* kInputName = "input";

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

// Reads `bytes` if they show a format of `family` (or as a raw block) and checks as above.
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
  const unsigned long long pixels = 1ull * unsigned(format.Width) * unsigned(format.Height);
  ZT_FUZZ_CHECK(format.Width >= 1 && format.Height >= 1 && pixels <= kFuzzMaxPixels,
                "accepted an image of " + FormatText(format));

  // Written to the run's directory in its format (PBM, read only, as PGM) and read again; a
  // refusal of either escapes and ends the run as a finding.
  CZtImage reread;
  options.RawFormat = rawFormat != nullptr ? &format : nullptr;
  WriteImage("written", facts.Format == EFileFormat::Pbm ? EFileFormat::Pgm : facts.Format, image);
  ReadImage("written", reread, options);
  ZT_FUZZ_CHECK(SamePixels(image, reread), "pixels changed through writing and reading again");
}

// Sets each PNG chunk's CRC right, so that mutations reach past the checksum.
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
#else  // raw: the last 3 bytes choose width, layout and sample type; the height is what the block
       // holds, or one row more when it does not come out even, which the reader must refuse.
  if (size < 3) return 0;
  const std::size_t blockSize = size - 3;
  const int width = data[blockSize] % 32 + 1;
  const EPixelType::ID pixelType = kAllPixelTypes[data[blockSize + 1] % 10];
  const EDataType::ID dataType = kAllDataTypes[data[blockSize + 2] % 8];
  const std::size_t rowBytes = CZtImageFormat(width, 1, pixelType, dataType).GetByteCount();
  const std::size_t rows = blockSize / rowBytes;
  const int height = static_cast<int>(rows) + (rows == 0 || blockSize % rowBytes != 0 ? 1 : 0);
  const CZtImageFormat format(width, height, pixelType, dataType);
  bytes.resize(blockSize);
  CheckReader(bytes, {EFileFormat::Raw}, &format);
#endif
  return 0;
}
