// The raw reader, as with -r: the last three bytes choose the width, layout
// and sample type, the rest is the block. The height is what the block holds
// at that width, or one row more when it does not come out even, which the
// reader must refuse.

#include "ZtFuzzReadCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ZtFuzz;
  if (size < 3) return 0;
  const std::size_t blockSize = size - 3;
  const int width = data[blockSize] % 32 + 1;
  const EPixelType::ID pixelType = ZtTools::kAllPixelTypes[data[blockSize + 1] % 10];
  const EDataType::ID dataType = ZtTools::kAllDataTypes[data[blockSize + 2] % 8];
  const std::size_t rowBytes = static_cast<std::size_t>(width) *
                               CZtImageFormat::GetPixelTypeComponentCount(pixelType) *
                               CZtImageFormat::GetDataTypeSize(dataType);
  const std::size_t rows = blockSize / rowBytes;
  const int height = static_cast<int>(rows) + (rows == 0 || blockSize % rowBytes != 0 ? 1 : 0);
  const CZtImageFormat format(width, height, pixelType, dataType);
  ZtFuzz::CheckReader(ZtFuzz::Bytes(data, blockSize), {EFileFormat::Raw}, &format);
  return 0;
}
