// The conversion entry points of CZtImage: what each answers, what it does to
// the target on the way, the copy for equal types, and every false.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

#include "ZtConvertTesting.h"
#include "ZtImage.h"

using Zt::CZtImage;
using Zt::CZtImageFormat;
using Zt::IImage;
using namespace ZtTest;

namespace {

// Reaches the protected dispatch.
struct Dispatch : CZtImage {
  using CZtImage::_ConvertTrgSwitch;
};

CZtImage Patterned(int w, int h, EPixelType::ID p, EDataType::ID d, std::uint64_t seed = 1) {
  CZtImage image;
  EXPECT_TRUE(image.Create(w, h, p, d));
  const std::vector<unsigned char> bytes = RandomBytes(image.GetByteCount(), seed);
  std::memcpy(image.GetDataPtr(), bytes.data(), bytes.size());
  return image;
}

std::vector<unsigned char> BytesOf(const CZtImage& image) {
  const auto* data = static_cast<const unsigned char*>(image.GetDataPtr());
  return std::vector<unsigned char>(data, data + image.GetByteCount());
}

CZtImageFormat ZeroFormat() {
  CZtImageFormat zero;
  zero.Reset();
  return zero;
}

TEST(ConvertType, ConvertsIntoANewTargetInBothForms) {
  const CZtImage source = Patterned(7, 3, EPixelType::BGRA, EDataType::UShort);
  const auto expected =
      ZtConvertRef::ConvertImage(EPixelType::LumA, EDataType::Float, EPixelType::BGRA,
                                 EDataType::UShort, 21, source.GetDataPtr());
  CZtImage member = Patterned(2, 2, EPixelType::RGB, EDataType::Byte);
  ASSERT_TRUE(source.ConvertType(member, EPixelType::LumA, EDataType::Float));
  EXPECT_EQ(member.GetFormat(), CZtImageFormat(7, 3, EPixelType::LumA, EDataType::Float));
  EXPECT_EQ(BytesOf(member), expected);

  CZtImage created;
  ASSERT_TRUE(CZtImage::ConvertType(&created, &source, EPixelType::LumA, EDataType::Float, true));
  EXPECT_EQ(created.GetFormat(), member.GetFormat());
  EXPECT_EQ(BytesOf(created), expected);

  // Without create, only the target's memory is used: its format stays.
  CZtImage kept = Patterned(21, 2, EPixelType::Lum, EDataType::Double);
  ASSERT_TRUE(CZtImage::ConvertType(&kept, &source, EPixelType::LumA, EDataType::Float, false));
  EXPECT_EQ(kept.GetFormat(), CZtImageFormat(21, 2, EPixelType::Lum, EDataType::Double));
  const auto written = BytesOf(kept);
  EXPECT_EQ(std::vector<unsigned char>(written.begin(), written.begin() + long(expected.size())),
            expected);
}

TEST(ConvertType, EqualTypesCopyTheSourceBytes) {
  const CZtImage source = Patterned(5, 4, EPixelType::BayerGB, EDataType::Float);
  CZtImage member;
  ASSERT_TRUE(source.ConvertType(member, EPixelType::BayerGB, EDataType::Float));
  EXPECT_EQ(BytesOf(member), BytesOf(source));

  // Without create the copy takes the source's byte count, whatever the
  // target's size: the rest of a larger target stays.
  CZtImage larger = Patterned(9, 9, EPixelType::RGB, EDataType::UByte, 2);
  const auto before = BytesOf(larger);
  ASSERT_TRUE(
      CZtImage::ConvertType(&larger, &source, EPixelType::BayerGB, EDataType::Float, false));
  const auto after = BytesOf(larger);
  EXPECT_EQ(std::vector<unsigned char>(after.begin(), after.begin() + 80), BytesOf(source));
  EXPECT_EQ(std::vector<unsigned char>(after.begin() + 80, after.end()),
            std::vector<unsigned char>(before.begin() + 80, before.end()));
}

TEST(ConvertType, RefusalsLeaveTheTargetAsTheirStepLeftIt) {
  const CZtImage source = Patterned(4, 4, EPixelType::Lum, EDataType::UByte);
  const CZtImage invalid;

  // An invalid source: nothing happens to the target, in any form.
  CZtImage target = Patterned(3, 3, EPixelType::RGB, EDataType::UByte, 9);
  const auto pixels = BytesOf(target);
  EXPECT_FALSE(invalid.ConvertType(target, EPixelType::RGB, EDataType::Float));
  EXPECT_FALSE(CZtImage::ConvertType(&target, &invalid, EPixelType::RGB, EDataType::Float, true));
  EXPECT_FALSE(CZtImage::ConvertType(&target, &invalid, EPixelType::RGB, EDataType::Float, false));
  EXPECT_TRUE(target.IsValid());
  EXPECT_EQ(BytesOf(target), pixels);

  // A type Create refuses: the target has lost its pixels and is Empty.
  for (int unknown : kUnknownDataTypes) {
    CZtImage refused = Patterned(3, 3, EPixelType::RGB, EDataType::UByte);
    EXPECT_FALSE(source.ConvertType(refused, EPixelType::RGB, AsDataType(unknown)));
    EXPECT_FALSE(refused.IsValid());
    EXPECT_EQ(refused.GetFormat(), ZeroFormat());
  }

  // A Bayer target from another type: created, valid, and false.
  for (EPixelType::ID bayer : {EPixelType::BayerRG, EPixelType::BayerGB}) {
    CZtImage created;
    EXPECT_FALSE(source.ConvertType(created, bayer, EDataType::UShort));
    EXPECT_TRUE(created.IsValid());
    EXPECT_EQ(created.GetFormat(), CZtImageFormat(4, 4, bayer, EDataType::UShort));
    CZtImage fromStatic;
    EXPECT_FALSE(CZtImage::ConvertType(&fromStatic, &source, bayer, EDataType::UByte, true));
    EXPECT_TRUE(fromStatic.IsValid());
  }

  // Without create, an unknown target type leaves the memory untouched.
  for (int unknown : kUnknownPixelTypes) {
    CZtImage untouched = Patterned(4, 4, EPixelType::RGBA, EDataType::Double, 4);
    const auto bytes = BytesOf(untouched);
    EXPECT_FALSE(
        CZtImage::ConvertType(&untouched, &source, AsPixelType(unknown), EDataType::Float, false));
    EXPECT_EQ(BytesOf(untouched), bytes);
  }
}

TEST(ConvertMemory, CopiesEqualFormatsAndConvertsTheRestOverTheSourceCount) {
  const CZtImage source = Patterned(6, 2, EPixelType::RGBA, EDataType::Short);
  std::vector<unsigned char> target(200, kGuard);

  // Equal formats: the byte count, and not one more.
  ASSERT_TRUE(CZtImage::ConvertMemory(target.data(), source.GetDataPtr(), source.GetFormat(),
                                      source.GetFormat()));
  EXPECT_EQ(std::vector<unsigned char>(target.begin(), target.begin() + 96), BytesOf(source));
  EXPECT_EQ(target[96], kGuard);

  // Two reset formats: nothing to copy, and true.
  std::vector<unsigned char> untouched(16, kGuard);
  EXPECT_TRUE(
      CZtImage::ConvertMemory(untouched.data(), source.GetDataPtr(), ZeroFormat(), ZeroFormat()));
  EXPECT_EQ(untouched, std::vector<unsigned char>(16, kGuard));

  // Equal types at another size: the cell runs over the source's 12 pixels,
  // bit for bit.
  std::fill(target.begin(), target.end(), kGuard);
  ASSERT_TRUE(CZtImage::ConvertMemory(target.data(), source.GetDataPtr(),
                                      CZtImageFormat(1, 1, EPixelType::RGBA, EDataType::Short),
                                      source.GetFormat()));
  EXPECT_EQ(std::vector<unsigned char>(target.begin(), target.begin() + 96), BytesOf(source));
  EXPECT_EQ(target[96], kGuard);

  // A Bayer format copies at equal size and is refused at another.
  const CZtImage bayer = Patterned(3, 3, EPixelType::BayerBG, EDataType::UByte);
  EXPECT_TRUE(CZtImage::ConvertMemory(target.data(), bayer.GetDataPtr(), bayer.GetFormat(),
                                      bayer.GetFormat()));
  EXPECT_FALSE(CZtImage::ConvertMemory(target.data(), bayer.GetDataPtr(),
                                       CZtImageFormat(9, 1, EPixelType::BayerBG, EDataType::UByte),
                                       bayer.GetFormat()));

  // A count that wraps to 0 writes nothing.
  EXPECT_TRUE(
      CZtImage::ConvertMemory(untouched.data(), source.GetDataPtr(),
                              CZtImageFormat(65536, 65536, EPixelType::RGB, EDataType::Float),
                              CZtImageFormat(65536, 65536, EPixelType::Lum, EDataType::UByte)));
  EXPECT_EQ(untouched, std::vector<unsigned char>(16, kGuard));
}

TEST(ConvertMemory, UnknownTypesOnEitherSideAnswerFalseAndWriteNothing) {
  const CZtImage source = Patterned(4, 1, EPixelType::RGB, EDataType::UByte);
  std::vector<unsigned char> target(64, kGuard);
  auto refused = [&](const CZtImageFormat& t, const CZtImageFormat& s) {
    EXPECT_FALSE(CZtImage::ConvertMemory(target.data(), source.GetDataPtr(), t, s))
        << t.ToString().ToCString() << " from " << s.ToString().ToCString();
    EXPECT_FALSE(Dispatch::_ConvertTrgSwitch(target.data(), source.GetDataPtr(), t, s));
  };
  const CZtImageFormat good(4, 1, EPixelType::RGB, EDataType::UByte);
  for (int p : kUnknownPixelTypes) {
    refused(CZtImageFormat(4, 1, AsPixelType(p), EDataType::Float), good);
    refused(CZtImageFormat(4, 1, EPixelType::Lum, EDataType::Float),
            CZtImageFormat(4, 1, AsPixelType(p), EDataType::UByte));
  }
  for (int d : kUnknownDataTypes) {
    refused(CZtImageFormat(4, 1, EPixelType::Lum, AsDataType(d)), good);
    refused(CZtImageFormat(4, 1, EPixelType::Lum, EDataType::Float),
            CZtImageFormat(4, 1, EPixelType::RGB, AsDataType(d)));
  }
  for (const auto& p : kPixelTypes) {
    if (Components(p.type) == 1 && p.type != EPixelType::Lum) {  // the Bayer types
      refused(CZtImageFormat(4, 1, p.type, EDataType::UByte), good);
    }
  }
  EXPECT_EQ(target, std::vector<unsigned char>(64, kGuard));
}

// The dispatch itself, without the short cut, copies equal formats bit for
// bit: NaN payloads and -0.0 included.
TEST(ConvertMemory, TheCellForEqualFormatsCopiesEveryBit) {
  for (const auto& p : kPixelTypes) {
    if (Components(p.type) == 1 && p.type != EPixelType::Lum) continue;
    for (const auto& d : kDataTypes) {
      const CZtImage source = Patterned(37, 1, p.type, d.type, 13);
      std::vector<unsigned char> target(source.GetByteCount());
      ASSERT_TRUE(Dispatch::_ConvertTrgSwitch(target.data(), source.GetDataPtr(),
                                              source.GetFormat(), source.GetFormat()));
      EXPECT_EQ(target, BytesOf(source)) << p.name << " " << d.name;
    }
  }
}

TEST(ConvertMemory, TwoThreadsConvertAtOnce) {
  const CZtImage a = Patterned(300, 300, EPixelType::RGB, EDataType::UShort, 1);
  const CZtImage b = Patterned(300, 300, EPixelType::LumA, EDataType::Int, 2);
  CZtImage outA;
  CZtImage outB;
  bool okA = false;
  bool okB = false;
  std::thread first([&] { okA = a.ConvertType(outA, EPixelType::BGRA, EDataType::Float); });
  std::thread second([&] { okB = b.ConvertType(outB, EPixelType::RGB, EDataType::UByte); });
  first.join();
  second.join();
  ASSERT_TRUE(okA && okB);
  EXPECT_EQ(BytesOf(outA),
            ZtConvertRef::ConvertImage(EPixelType::BGRA, EDataType::Float, EPixelType::RGB,
                                       EDataType::UShort, 90000, a.GetDataPtr()));
  EXPECT_EQ(BytesOf(outB),
            ZtConvertRef::ConvertImage(EPixelType::RGB, EDataType::UByte, EPixelType::LumA,
                                       EDataType::Int, 90000, b.GetDataPtr()));
}

}  // namespace
