// The reader of PNG files, through libpng, of every colour type, depth and
// interlacing: refused with one line, or read to an image that survives
// conversion, writing and reading again. Each chunk's CRC is set right
// before reading, so that mutations reach the chunks' contents instead of
// stopping at the checksum.

#include "ZtFuzzReadCheck.h"

namespace {

std::uint32_t Crc32(const unsigned char* bytes, std::size_t size) {
  std::uint32_t crc = 0xFFFFFFFFu;
  for (std::size_t i = 0; i < size; ++i) {
    crc ^= bytes[i];
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
  }
  return ~crc;
}

// Walks the chunks after the signature: length, type, data, CRC.
void FixChunkCrcs(std::vector<unsigned char>& png) {
  std::size_t at = 8;
  while (at + 12 <= png.size()) {
    const std::size_t length = (std::size_t{png[at]} << 24) | (std::size_t{png[at + 1]} << 16) |
                               (std::size_t{png[at + 2]} << 8) | png[at + 3];
    if (length > png.size() - at - 12) break;
    const std::uint32_t crc = Crc32(png.data() + at + 4, length + 4);
    for (int i = 0; i < 4; ++i)
      png[at + 8 + length + i] = static_cast<unsigned char>(crc >> (24 - 8 * i));
    at += length + 12;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<unsigned char> png = ZtFuzz::Bytes(data, size);
  FixChunkCrcs(png);
  ZtFuzz::CheckReader(png, {ZtFuzz::EFileFormat::Png});
  return 0;
}
