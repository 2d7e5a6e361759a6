#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "ZtCoreEx.h"
#include "ZtTypeLists.h"

using Zt::CZtImage;
using Zt::CZtImageFormat;
using Zt::EDataType;
using Zt::EPixelType;
using Zt::IImage;
using namespace ZtTest;

namespace {

// A valid image whose bytes count up from `seed`, so copies can be checked.
CZtImage Patterned(int w, int h, EPixelType::ID p, EDataType::ID d, unsigned char seed = 1) {
  CZtImage image;
  EXPECT_TRUE(image.Create(w, h, p, d));
  auto* bytes = static_cast<unsigned char*>(image.GetDataPtr());
  for (unsigned int i = 0; i < image.GetByteCount(); ++i) {
    bytes[i] = static_cast<unsigned char>(seed + i);
  }
  return image;
}

bool SameBytes(const CZtImage& a, const CZtImage& b) {
  return a.GetFormat() == b.GetFormat() &&
         std::memcmp(a.GetDataPtr(), b.GetDataPtr(), a.GetByteCount()) == 0;
}

bool IsZeroFormat(const CZtImage& image) {
  CZtImageFormat zero;
  zero.Reset();
  return image.GetFormat() == zero;
}

TEST(CZtImage, CreatesEveryKnownFormatAndAnswersFromIt) {
  for (const auto& p : kPixelTypes) {
    for (const auto& d : kDataTypes) {
      CZtImage image;
      ASSERT_TRUE(image.Create(5, 3, p.type, d.type)) << p.name << " " << d.name;
      EXPECT_TRUE(image.IsValid());
      EXPECT_EQ(image.GetBytesPerPixel(), p.components * d.bytes);
      EXPECT_EQ(image.GetPixelCount(), 15u);
      EXPECT_EQ(image.GetByteCount(), 15u * static_cast<unsigned>(p.components * d.bytes));
      int w = 0, h = 0;
      image.GetSize(w, h);
      EXPECT_EQ(w, 5);
      EXPECT_EQ(h, 3);
      EPixelType::ID pt{};
      EDataType::ID dt{};
      image.GetType(pt, dt);
      EXPECT_EQ(pt, p.type);
      EXPECT_EQ(dt, d.type);
      EXPECT_TRUE(image.IsOfType(p.type, d.type));
      EXPECT_FALSE(image.IsOfType(p.type, EDataType::ID(0)));
      EXPECT_EQ(image.GetFormat(), CZtImageFormat(5, 3, p.type, d.type));
    }
  }
}

TEST(CZtImage, RefusedCreateLeavesTheStateThatTheRefusalCallsFor) {
  // A size below 1 on a valid image: Destroy has run, so the format is zero.
  for (const auto& size : {std::pair<int, int>{100, 0}, {0, 100}, {-1, 5}, {5, -7}}) {
    CZtImage image = Patterned(4, 4, EPixelType::RGB, EDataType::UByte);
    EXPECT_FALSE(image.Create(size.first, size.second, EPixelType::RGB, EDataType::UByte));
    EXPECT_FALSE(image.IsValid());
    EXPECT_TRUE(IsZeroFormat(image));
  }
  // A size below 1 on an Empty image leaves its leftover format alone.
  {
    CZtImage image;
    ASSERT_FALSE(image.Create(3, 3, EPixelType::RGB, AsDataType(0x1407)));
    EXPECT_TRUE(IsZeroFormat(image));
    image.Destroy();
    EXPECT_FALSE(image.Create(0, 3, EPixelType::RGB, EDataType::UByte));
    EXPECT_TRUE(IsZeroFormat(image));
  }
  // An unknown type zeroes the format, from either state.
  for (int unknown : kUnknownPixelTypes) {
    CZtImage image = Patterned(2, 2, EPixelType::Lum, EDataType::Float);
    EXPECT_FALSE(image.Create(2, 2, AsPixelType(unknown), EDataType::Float)) << unknown;
    EXPECT_FALSE(image.IsValid());
    EXPECT_TRUE(IsZeroFormat(image));
  }
  for (int unknown : kUnknownDataTypes) {
    CZtImage image;
    EXPECT_FALSE(image.Create(2, 2, EPixelType::Lum, AsDataType(unknown))) << unknown;
    EXPECT_FALSE(image.IsValid());
    EXPECT_TRUE(IsZeroFormat(image));
  }
}

TEST(CZtImage, CopyingFormsCopyDeeplyAndRefuseInvalidSourcesWithoutChange) {
  const CZtImage source = Patterned(3, 2, EPixelType::BGRA, EDataType::UShort, 9);
  const CZtImage empty;

  CZtImage a(source);
  EXPECT_TRUE(SameBytes(a, source));
  EXPECT_NE(a.GetDataPtr(), source.GetDataPtr());

  CZtImage b;
  EXPECT_TRUE(b.Create(&source));
  EXPECT_TRUE(SameBytes(b, source));
  CZtImage c;
  EXPECT_TRUE(c.Create(source));
  EXPECT_TRUE(SameBytes(c, source));
  CZtImage d;
  d = source;
  EXPECT_TRUE(SameBytes(d, source));
  CZtImage e;
  EXPECT_TRUE(e.Create(3, 2, EPixelType::BGRA, EDataType::UShort, source.GetDataPtr()));
  EXPECT_TRUE(SameBytes(e, source));

  // Refused sources change nothing: the old pixels stay.
  CZtImage target = Patterned(2, 2, EPixelType::Lum, EDataType::UByte, 50);
  const CZtImage before(target);
  const void* block = target.GetDataPtr();
  EXPECT_FALSE(target.Create(static_cast<const IImage*>(nullptr)));
  EXPECT_FALSE(target.Create(&empty));
  EXPECT_FALSE(target.Create(empty));
  target = empty;
  EXPECT_EQ(target.GetDataPtr(), block);
  EXPECT_TRUE(SameBytes(target, before));

  CZtImage copyOfEmpty(empty);
  EXPECT_FALSE(copyOfEmpty.IsValid());

  // The format constructor allocates; a refused format leaves it Empty.
  CZtImage fromFormat(CZtImageFormat(4, 1, EPixelType::LumA, EDataType::Double));
  EXPECT_TRUE(fromFormat.IsValid());
  EXPECT_EQ(fromFormat.GetByteCount(), 64u);
  CZtImage refused(CZtImageFormat(4, 0, EPixelType::LumA, EDataType::Double));
  EXPECT_FALSE(refused.IsValid());
  CZtImage viaCreate;
  EXPECT_TRUE(viaCreate.Create(CZtImageFormat(1, 1, EPixelType::RGB, EDataType::Int)));
}

TEST(CZtImage, CopyingFromItselfEndsEmptyBecauseDestroyComesFirst) {
  CZtImage a = Patterned(2, 2, EPixelType::RGB, EDataType::UByte);
  CZtImage& alias = a;
  EXPECT_EQ(&(a = alias), &a);
  EXPECT_FALSE(a.IsValid());
  EXPECT_TRUE(IsZeroFormat(a));

  for (bool viaInterface : {false, true}) {
    CZtImage b = Patterned(2, 2, EPixelType::RGB, EDataType::UByte);
    EXPECT_FALSE(viaInterface ? b.Create(&b) : b.Create(b)) << viaInterface;
    EXPECT_FALSE(b.IsValid()) << viaInterface;
  }
}

TEST(CZtImage, SetCopiesIntoTheExistingBlockOnlyBetweenEqualFormats) {
  CZtImage target = Patterned(3, 3, EPixelType::RGB, EDataType::Short, 1);
  const CZtImage source = Patterned(3, 3, EPixelType::RGB, EDataType::Short, 77);
  const void* block = target.GetDataPtr();
  EXPECT_TRUE(target.Set(source));
  EXPECT_EQ(target.GetDataPtr(), block);
  EXPECT_TRUE(SameBytes(target, source));
  EXPECT_TRUE(target.Set(target));  // onto itself

  const CZtImage refused[] = {CZtImage(), Patterned(3, 3, EPixelType::BGR, EDataType::Short),
                              Patterned(3, 3, EPixelType::RGB, EDataType::UShort),
                              Patterned(9, 1, EPixelType::RGB, EDataType::Short)};
  for (const auto& other : refused) {
    CZtImage t = Patterned(3, 3, EPixelType::RGB, EDataType::Short, 5);
    const CZtImage before(t);
    EXPECT_FALSE(t.Set(other));
    EXPECT_TRUE(SameBytes(t, before));
  }
  CZtImage empty;
  EXPECT_FALSE(empty.Set(source));

  // Set(data) copies into a valid image and still answers false.
  CZtImage raw = Patterned(3, 3, EPixelType::RGB, EDataType::Short, 1);
  EXPECT_FALSE(raw.Set(source.GetDataPtr()));
  EXPECT_TRUE(SameBytes(raw, source));
  EXPECT_FALSE(empty.Set(source.GetDataPtr()));
}

TEST(CZtImage, DestroyZeroesAValidImageAndLeavesAnEmptyOneAlone) {
  CZtImage image = Patterned(2, 2, EPixelType::RGBA, EDataType::Float);
  EXPECT_TRUE(image.Destroy());
  EXPECT_FALSE(image.IsValid());
  EXPECT_EQ(image.GetDataPtr(), nullptr);
  EXPECT_TRUE(IsZeroFormat(image));
  EXPECT_TRUE(image.Destroy());

  image.SetZero();  // zero format, null block: clears nothing
  CZtImage cleared = Patterned(5, 2, EPixelType::LumA, EDataType::UInt);
  cleared.SetZero();
  const std::vector<unsigned char> zeros(cleared.GetByteCount(), 0);
  EXPECT_EQ(std::memcmp(cleared.GetDataPtr(), zeros.data(), zeros.size()), 0);
}

std::vector<float> Normalized(std::vector<float> samples, bool* result = nullptr) {
  CZtImage image;
  EXPECT_TRUE(image.Create(static_cast<int>(samples.size()), 1, EPixelType::Lum, EDataType::Float,
                           samples.data()));
  const bool ok = image.Normalize();
  if (result != nullptr) {
    *result = ok;
  }
  const auto* out = static_cast<const float*>(image.GetDataPtr());
  return std::vector<float>(out, out + samples.size());
}

TEST(CZtImage, NormalizeStretchesInSinglePrecisionFromFixedExtremes) {
  EXPECT_EQ(Normalized({2.0f, 4.0f, 3.0f}), (std::vector<float>{0.0f, 1.0f, 0.5f}));
  // Each sample: (v - min) / range, subtraction and division in float.
  const float a = 0.1f, b = 0.7f, c = 0.3f;
  const float range = b - a;
  EXPECT_EQ(Normalized({a, b, c}), (std::vector<float>{0.0f, (b - a) / range, (c - a) / range}));
  // The extremes start at 1e9 and -1e9 and are not seeded from a sample.
  EXPECT_EQ(Normalized({2e9f, 3e9f}), (std::vector<float>{0.5f, 1.0f}));
  EXPECT_EQ(Normalized({-3e9f, -2e9f}), (std::vector<float>{0.0f, 0.5f}));
  // A constant or single sample is left as it is, and so is a tiny range.
  bool ok = false;
  EXPECT_EQ(Normalized({5.0f, 5.0f}, &ok), (std::vector<float>{5.0f, 5.0f}));
  EXPECT_TRUE(ok);
  EXPECT_EQ(Normalized({0.25f}), (std::vector<float>{0.25f}));
  EXPECT_EQ(Normalized({1e-10f, 2e-10f}), (std::vector<float>{1e-10f, 2e-10f}));
  // NaN samples are ignored by the extremes and stay NaN.
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const auto withNan = Normalized({nan, 1.0f, 3.0f, nan});
  EXPECT_TRUE(std::isnan(withNan[0]) && std::isnan(withNan[3]));
  EXPECT_EQ(withNan[1], 0.0f);
  EXPECT_EQ(withNan[2], 1.0f);
  // An infinite range is no range: inf > 1e-9, so samples divide by inf.
  const float inf = std::numeric_limits<float>::infinity();
  const auto withInf = Normalized({0.0f, inf});
  EXPECT_EQ(withInf[0], 0.0f);
  EXPECT_TRUE(std::isnan(withInf[1]));
}

TEST(CZtImage, NormalizeTakesOnlyLumFloat) {
  for (const auto& p : kPixelTypes) {
    for (const auto& d : kDataTypes) {
      if (p.type == EPixelType::Lum && d.type == EDataType::Float) {
        continue;
      }
      CZtImage image = Patterned(2, 2, p.type, d.type);
      const CZtImage before(image);
      EXPECT_FALSE(image.Normalize()) << p.name << " " << d.name;
      EXPECT_TRUE(SameBytes(image, before));
    }
  }
  CZtImage destroyed = Patterned(1, 1, EPixelType::Lum, EDataType::Float);
  destroyed.Destroy();
  EXPECT_FALSE(destroyed.Normalize());  // a zero format is no Lum Float
}

}  // namespace
