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

// A view converts from and into memory like the image itself; RGBA UShort
// among the targets takes the copy for equal types.
TEST(CZtImageMonikerConversion, AViewConvertsFromAndIntoMemoryLikeTheImageItself) {
  CZtImage source(CZtImageFormat(5, 3, EPixelType::RGBA, EDataType::UShort));
  auto* bytes = static_cast<unsigned char*>(source.GetDataPtr());
  for (unsigned int i = 0; i < source.GetByteCount(); ++i)
    bytes[i] = static_cast<unsigned char>(i * 37 + 11);
  CZtImageMoniker view;
  view.Create(source);
  for (EPixelType::ID p : kTargetPixelTypes) {
    for (const auto& d : kDataTypes) {
      SCOPED_TRACE(testing::Message() << p << " " << d.name);
      CZtImage expected, fromView;
      ASSERT_TRUE(source.ConvertType(expected, p, d.type));
      EXPECT_TRUE(CZtImage::ConvertType(&fromView, &view, p, d.type, true));
      EXPECT_TRUE(SameBytes(fromView.GetDataPtr(), expected));
      // Without create, into a view of a const image, and into one of const
      // memory bound under another format, which stays.
      const CZtImage block(expected.GetFormat());
      CZtImageMoniker ofImage, ofMemory;
      ofImage.Create(block);
      EXPECT_TRUE(CZtImage::ConvertType(&ofImage, &view, p, d.type, false));
      EXPECT_TRUE(SameBytes(block.GetDataPtr(), expected));
      std::vector<unsigned char> memory(expected.GetByteCount());
      const CZtImageFormat other(1, 1, EPixelType::BayerGB, EDataType::Byte);
      ofMemory.Create(other, static_cast<const void*>(memory.data()));
      EXPECT_TRUE(CZtImage::ConvertType(&ofMemory, &source, p, d.type, false));
      EXPECT_TRUE(SameBytes(memory.data(), expected));
      EXPECT_EQ(ofMemory.GetFormat(), other);
    }
  }
}

}  // namespace
