// The reader of PAM files with their header lines and tuple types: refused
// with one line, or read to an image that survives conversion, writing and
// reading again.

#include "ZtFuzzReadCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ZtFuzz::CheckReader(ZtFuzz::Bytes(data, size), {ZtFuzz::EFileFormat::Pam});
  return 0;
}
