#include <gtest/gtest.h>

#include <string>

#include "ZtCoreEx.h"
#include "ZtTypeLists.h"

using Zt::CZtImageFormat;
using Zt::EDataType;
using Zt::EPixelType;
using namespace ZtTest;

namespace {

TEST(CZtImageFormat, SizesAndTextsOfEveryKnownPair) {
  for (const auto& p : kPixelTypes) {
    for (const auto& d : kDataTypes) {
      const CZtImageFormat f(7, 3, p.type, d.type);
      SCOPED_TRACE(std::string(p.name) + " " + d.name);
      EXPECT_EQ(f.GetComponentCount(), p.components);
      EXPECT_EQ(f.GetBytesPerPixel(), p.components * d.bytes);
      EXPECT_EQ(f.GetPixelCount(), 21u);
      EXPECT_EQ(f.GetByteCount(), 21u * static_cast<unsigned>(p.components * d.bytes));
      EXPECT_EQ(std::string(f.ToString().ToCString()),
                std::string("7x3, ") + p.name + ", " + d.name);
      EXPECT_EQ(f.IsBayerPixelType(), std::string(p.name).rfind("Bayer", 0) == 0);
    }
  }
}

TEST(CZtImageFormat, UnknownTypesDisplayNoneOrVoidAndHaveNoSize) {
  for (int value : kUnknownPixelTypes) {
    const CZtImageFormat f(2, 2, AsPixelType(value), EDataType::UByte);
    EXPECT_STREQ(CZtImageFormat::PixelType2String(AsPixelType(value)).ToCString(), "None") << value;
    EXPECT_EQ(f.GetComponentCount(), 0) << value;
    EXPECT_EQ(f.GetBytesPerPixel(), 0) << value;
    EXPECT_EQ(f.GetByteCount(), 0u) << value;
    EXPECT_EQ(f.GetPixelCount(), 4u) << value;
    EXPECT_FALSE(f.IsBayerPixelType()) << value;
  }
  for (int value : kUnknownDataTypes) {
    const CZtImageFormat f(2, 2, EPixelType::RGBA, AsDataType(value));
    EXPECT_STREQ(CZtImageFormat::DataType2String(AsDataType(value)).ToCString(), "Void") << value;
    EXPECT_EQ(f.GetComponentCount(), 4) << value;  // still answers for the pixel type
    EXPECT_EQ(f.GetBytesPerPixel(), 0) << value;
  }
}

TEST(CZtImageFormat, SizesWrapModulo2To32) {
  struct Case {
    int width, height;
    EPixelType::ID pixel;
    EDataType::ID data;
    unsigned int pixels, bytes;
  } const cases[] = {
      {65536, 65536, EPixelType::Lum, EDataType::UByte, 0u, 0u},
      {16384, 16384, EPixelType::RGB, EDataType::Double, 268435456u, 2147483648u},
      {32768, 32768, EPixelType::RGBA, EDataType::UByte, 1073741824u, 0u},
      {-1, 2, EPixelType::Lum, EDataType::UByte, 4294967294u, 4294967294u},
      {-3, -5, EPixelType::LumA, EDataType::Short, 15u, 60u},
      {65535, 65537, EPixelType::Lum, EDataType::UByte, 4294967295u, 4294967295u},
  };
  for (const auto& c : cases) {
    const CZtImageFormat f(c.width, c.height, c.pixel, c.data);
    EXPECT_EQ(f.GetPixelCount(), c.pixels) << c.width << "x" << c.height;
    EXPECT_EQ(f.GetByteCount(), c.bytes) << c.width << "x" << c.height;
  }
  EXPECT_STREQ(CZtImageFormat(-1, 2, EPixelType::Lum, EDataType::UByte).ToString().ToCString(),
               "-1x2, Lum, UByte");
}

TEST(CZtImageFormat, ResetCopyAndComparison) {
  CZtImageFormat f(640, 480, EPixelType::RGB, EDataType::UByte);
  EXPECT_STREQ(f.ToString().ToCString(), "640x480, RGB, UByte");

  CZtImageFormat g;
  g = f;
  EXPECT_TRUE(g == f);
  EXPECT_FALSE(g != f);
  // Field order: data type before pixel type.
  EXPECT_EQ(g.DataType, EDataType::UByte);
  EXPECT_EQ(g.PixelType, EPixelType::RGB);

  // Each field on its own makes two formats unequal, even at equal byte counts.
  const CZtImageFormat others[] = {{641, 480, EPixelType::RGB, EDataType::UByte},
                                   {640, 481, EPixelType::RGB, EDataType::UByte},
                                   {640, 480, EPixelType::BGR, EDataType::UByte},
                                   {640, 480, EPixelType::RGB, EDataType::Byte}};
  for (const auto& other : others) {
    EXPECT_TRUE(f != other);
    EXPECT_FALSE(f == other);
  }

  f.Reset();
  EXPECT_STREQ(f.ToString().ToCString(), "0x0, None, Void");
  EXPECT_EQ(f.Width, 0);
  EXPECT_EQ(static_cast<int>(f.DataType), 0);
  EXPECT_EQ(f.GetComponentCount(), 0);
  EXPECT_EQ(f.GetBytesPerPixel(), 0);
  EXPECT_EQ(f.GetPixelCount(), 0u);
  EXPECT_EQ(f.GetByteCount(), 0u);

  static_assert(sizeof(CZtImageFormat) == 16, "four 32-bit fields, nothing else");
}

}  // namespace
