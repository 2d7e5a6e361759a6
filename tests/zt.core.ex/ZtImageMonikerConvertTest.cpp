#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "ZtCoreEx.h"
#include "ZtTypeLists.h"

using namespace Zt;
using namespace ZtTest;

namespace {

bool SameBytes(const void* a, const CZtImage& b) {
  return std::memcmp(a, b.GetDataPtr(), b.GetByteCount()) == 0;
}

// A view converts from and into memory like the image itself (RGBA UShort targets copy).
TEST(CZtImageMonikerConversion, AViewConvertsFromAndIntoMemoryLikeTheImageItself) {
  CZtImage source(CZtImageFormat(5, 3, EPixelType::RGBA, EDataType::UShort));
  auto* bytes = static_cast<unsigned char*>(source.GetDataPtr());
  for (unsigned i = 0; i < source.GetByteCount(); ++i) bytes[i] = (unsigned char)(i * 37 + 11);
  CZtImageMoniker view;
  view.Create(source);
  const CZtImageFormat other(1, 1, EPixelType::BayerGB, EDataType::Byte);
  for (EPixelType::ID p : kTargetPixelTypes) {
    for (const auto& d : kDataTypes) {
      SCOPED_TRACE(testing::Message() << p << " " << d.name);
      CZtImage expected, fromView;
      ASSERT_TRUE(source.ConvertType(expected, p, d.type));
      EXPECT_TRUE(CZtImage::ConvertType(&fromView, &view, p, d.type, true));
      // Without create, into views of a const image and of memory under a format that stays.
      const CZtImage block(expected.GetFormat());
      std::vector<unsigned char> memory(expected.GetByteCount());
      CZtImageMoniker ofImage, ofMemory;
      ofImage.Create(block);
      ofMemory.Create(other, static_cast<const void*>(memory.data()));
      EXPECT_TRUE(CZtImage::ConvertType(&ofImage, &view, p, d.type, false));
      EXPECT_TRUE(CZtImage::ConvertType(&ofMemory, &source, p, d.type, false));
      EXPECT_EQ(ofMemory.GetFormat(), other);
      EXPECT_TRUE(SameBytes(fromView.GetDataPtr(), expected));
      EXPECT_TRUE(SameBytes(block.GetDataPtr(), expected));
      EXPECT_TRUE(SameBytes(memory.data(), expected));
    }
  }
}

}  // namespace
