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

TEST(CZtImageMonikerConversion, AViewConvertsFromAndIntoMemoryLikeTheImageItself) {
  CZtImage source(CZtImageFormat(5, 3, EPixelType::RGBA, EDataType::UShort));
  auto* bytes = static_cast<unsigned char*>(source.GetDataPtr());
  for (unsigned int i = 0; i < source.GetByteCount(); ++i) {
    bytes[i] = static_cast<unsigned char>(i * 37 + 11);
  }
  CZtImageMoniker view;
  view.Create(source);
  const EPixelType::ID targets[] = {EPixelType::RGB,  EPixelType::RGBA, EPixelType::BGR,
                                    EPixelType::BGRA, EPixelType::Lum,  EPixelType::LumA};
  for (EPixelType::ID p : targets) {
    for (const auto& d : kDataTypes) {  // RGBA UShort among them: the copy short cut
      SCOPED_TRACE(testing::Message() << p << " " << d.name);
      CZtImage expected;
      ASSERT_TRUE(source.ConvertType(expected, p, d.type));
      CZtImage fromView;
      EXPECT_TRUE(CZtImage::ConvertType(&fromView, &view, p, d.type, true));
      EXPECT_TRUE(SameBytes(fromView.GetDataPtr(), expected));

      // Targets with create false: a view of a const image, and one of const
      // memory bound under another format, which the conversion leaves as is.
      const CZtImage block(expected.GetFormat());
      CZtImageMoniker ofImage;
      ofImage.Create(block);
      EXPECT_TRUE(CZtImage::ConvertType(&ofImage, &view, p, d.type, false));
      EXPECT_TRUE(SameBytes(block.GetDataPtr(), expected));
      std::vector<unsigned char> memory(expected.GetByteCount());
      const void* constMemory = memory.data();
      const CZtImageFormat other(1, 1, EPixelType::BayerGB, EDataType::Byte);
      CZtImageMoniker ofMemory;
      ofMemory.Create(other, constMemory);
      EXPECT_TRUE(CZtImage::ConvertType(&ofMemory, &source, p, d.type, false));
      EXPECT_TRUE(SameBytes(memory.data(), expected));
      EXPECT_EQ(ofMemory.GetFormat(), other);
    }
  }
}

}  // namespace
