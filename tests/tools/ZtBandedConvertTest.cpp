// The row bands of the threads example: every split covers each row once,
// and any number of bands gives the bytes of one whole conversion.

#include <gtest/gtest.h>

#include <cstring>

#include "ZtBandedConvert.h"
#include "ZtToolTestSupport.h"

using namespace Zt;
using P = EPixelType;
using D = EDataType;

namespace {

TEST(ZtBandedConvert, SplitRowsCoversEveryRowOnceInNearlyEqualBands) {
  // Height, bands asked for, then each band as its first row + its rows.
  const std::tuple<int, unsigned, std::string> cases[] = {
      {10, 1, "0+10 "},
      {10, 3, "0+4 4+3 7+3 "},
      {9, 3, "0+3 3+3 6+3 "},
      {2, 5, "0+1 1+1 "},
      {1, 4, "0+1 "},
      {7, 0, "0+7 "},
      {0, 3, ""},
      {5, 5, "0+1 1+1 2+1 3+1 4+1 "},
  };
  for (const auto& [height, count, expected] : cases) {
    std::string bands;
    for (const auto& band : ZtThreads::SplitRows(height, count))
      bands += std::to_string(band.FirstRow) + "+" + std::to_string(band.Rows) + " ";
    EXPECT_EQ(bands, expected) << height << " in " << count;
  }
}

TEST(ZtBandedConvert, AnyNumberOfBandsGivesTheBytesOfOneConversion) {
  const std::pair<CZtImageFormat, CZtImageFormat> cases[] = {
      {{37, 23, P::RGB, D::UByte}, {37, 23, P::BGRA, D::Float}},
      {{5, 7, P::LumA, D::Double}, {5, 7, P::RGB, D::Short}},
      {{64, 3, P::BayerGB, D::Int}, {64, 3, P::Lum, D::UInt}},
      {{9, 11, P::RGBA, D::UShort}, {9, 11, P::RGBA, D::UShort}},  // the copy short cut, by bands
  };
  for (const auto& [from, to] : cases) {
    const CZtImage source = ZtTest::Scrambled(from);
    CZtImage whole(to);
    ASSERT_TRUE(CZtImage::ConvertMemory(whole.GetDataPtr(), source.GetDataPtr(), to, from));
    for (unsigned threads : {1u, 2u, 3u, 4u, 8u, 50u}) {
      CZtImage banded(to);
      std::memset(banded.GetDataPtr(), 0x5A, banded.GetByteCount());
      ASSERT_TRUE(
          ZtThreads::ConvertInBands(banded.GetDataPtr(), source.GetDataPtr(), to, from, threads));
      EXPECT_EQ(ZtTest::Bytes(banded), ZtTest::Bytes(whole))
          << from.ToString().ToCString() << " in " << threads << " bands";
    }
  }
}

TEST(ZtBandedConvert, RefusesWhatTheLibraryRefusesAndUnequalSizes) {
  const CZtImage source = ZtTest::Scrambled({4, 4, P::RGB, D::UByte});
  CZtImage target(CZtImageFormat(4, 4, P::RGB, D::Float));
  for (const auto& [to, accepted] : {std::pair{target.GetFormat(), true},
                                     {{4, 4, P::BayerRG, D::UByte}, false},
                                     {{4, 3, P::RGB, D::Float}, false}}) {
    EXPECT_EQ(accepted, ZtThreads::ConvertInBands(target.GetDataPtr(), source.GetDataPtr(), to,
                                                  source.GetFormat(), 2));
  }
}

}  // namespace
