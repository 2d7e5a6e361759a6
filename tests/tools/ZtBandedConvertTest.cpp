// The row bands of the threads example: every split covers each row once,
// and any number of bands gives the bytes of one whole conversion.

#include <gtest/gtest.h>

#include <cstring>

#include "ZtBandedConvert.h"
#include "ZtToolTestSupport.h"

using Zt::CZtImage;
using Zt::CZtImageFormat;
using Zt::EDataType;
using Zt::EPixelType;

namespace {

TEST(ZtBandedConvert, SplitRowsCoversEveryRowOnceInNearlyEqualBands) {
  const struct {
    int Height;
    unsigned Bands;
    std::vector<int> Rows;
  } cases[] = {
      {10, 1, {10}}, {10, 3, {4, 3, 3}}, {9, 3, {3, 3, 3}}, {2, 5, {1, 1}},
      {1, 4, {1}},   {7, 0, {7}},        {0, 3, {}},        {5, 5, {1, 1, 1, 1, 1}},
  };
  for (const auto& c : cases) {
    const auto bands = ZtThreads::SplitRows(c.Height, c.Bands);
    std::vector<int> rows;
    int next = 0;
    for (const auto& band : bands) {
      EXPECT_EQ(band.FirstRow, next) << c.Height << " in " << c.Bands;
      next += band.Rows;
      rows.push_back(band.Rows);
    }
    EXPECT_EQ(rows, c.Rows) << c.Height << " in " << c.Bands;
  }
}

TEST(ZtBandedConvert, AnyNumberOfBandsGivesTheBytesOfOneConversion) {
  const struct {
    CZtImageFormat Source;
    EPixelType::ID Layout;
    EDataType::ID Type;
  } cases[] = {
      {{37, 23, EPixelType::RGB, EDataType::UByte}, EPixelType::BGRA, EDataType::Float},
      {{5, 7, EPixelType::LumA, EDataType::Double}, EPixelType::RGB, EDataType::Short},
      {{64, 3, EPixelType::BayerGB, EDataType::Int}, EPixelType::Lum, EDataType::UInt},
      // Equal formats take the library's copy short cut, band by band.
      {{9, 11, EPixelType::RGBA, EDataType::UShort}, EPixelType::RGBA, EDataType::UShort},
  };
  for (const auto& c : cases) {
    const CZtImage source =
        ZtTest::Scrambled(c.Source.Width, c.Source.Height, c.Source.PixelType, c.Source.DataType);
    const CZtImageFormat targetFormat(c.Source.Width, c.Source.Height, c.Layout, c.Type);
    CZtImage whole(targetFormat);
    ASSERT_TRUE(
        CZtImage::ConvertMemory(whole.GetDataPtr(), source.GetDataPtr(), targetFormat, c.Source));
    for (unsigned threads : {1u, 2u, 3u, 4u, 8u, 50u}) {
      CZtImage banded(targetFormat);
      std::memset(banded.GetDataPtr(), 0x5A, banded.GetByteCount());
      ASSERT_TRUE(ZtThreads::ConvertInBands(banded.GetDataPtr(), source.GetDataPtr(), targetFormat,
                                            c.Source, threads));
      EXPECT_EQ(std::memcmp(banded.GetDataPtr(), whole.GetDataPtr(), whole.GetByteCount()), 0)
          << c.Source.ToString().ToCString() << " in " << threads << " bands";
    }
  }
}

TEST(ZtBandedConvert, RefusesWhatTheLibraryRefusesAndUnequalSizes) {
  const CZtImage source = ZtTest::Scrambled(4, 4, EPixelType::RGB, EDataType::UByte);
  CZtImage target(CZtImageFormat(4, 4, EPixelType::RGB, EDataType::Float));
  const CZtImageFormat& from = source.GetFormat();
  EXPECT_FALSE(ZtThreads::ConvertInBands(
      target.GetDataPtr(), source.GetDataPtr(),
      CZtImageFormat(4, 4, EPixelType::BayerRG, EDataType::UByte), from, 2));
  EXPECT_FALSE(ZtThreads::ConvertInBands(target.GetDataPtr(), source.GetDataPtr(),
                                         CZtImageFormat(4, 3, EPixelType::RGB, EDataType::Float),
                                         from, 2));
  EXPECT_TRUE(ZtThreads::ConvertInBands(target.GetDataPtr(), source.GetDataPtr(),
                                        target.GetFormat(), from, 2));
}

}  // namespace
