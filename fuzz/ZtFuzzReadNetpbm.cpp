// The reader of PBM, PGM and PPM files, plain and binary: refused with one
// line, or read to an image that survives conversion, writing and reading
// again.

#include "ZtFuzzReadCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using ZtFuzz::EFileFormat;
  ZtFuzz::CheckReader(ZtFuzz::Bytes(data, size),
                      {EFileFormat::Pbm, EFileFormat::Pgm, EFileFormat::Ppm});
  return 0;
}
