// The reader of PFM files of either byte order: refused with one line, or
// read to an image that survives conversion, writing and reading again.

#include "ZtFuzzReadCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ZtFuzz::CheckReader(ZtFuzz::Bytes(data, size), {ZtFuzz::EFileFormat::Pfm});
  return 0;
}
