// The row bands of the threads example: every split covers each row once. That any number
// of bands gives the bytes of one whole conversion is what the example itself checks.

#include <gtest/gtest.h>

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
