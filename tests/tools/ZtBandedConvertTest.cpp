// The threads example's row bands cover each row once; the example checks the bytes they give.

#include "ZtBandedConvert.h"
#include "ZtToolTestSupport.h"

using namespace Zt;

namespace {

TEST(ZtBandedConvert, SplitRowsCoversEveryRowOnceAndConvertRefusesWhatTheLibraryRefuses) {
  // "Height/bands asked for:" then each band as its first row + its rows.
  for (const std::string c : {"10/1: 0+10", "10/3: 0+4 4+3 7+3", "9/3: 0+3 3+3 6+3", "2/5: 0+1 1+1",
                              "7/0: 0+7", "0/3:", "5/5: 0+1 1+1 2+1 3+1 4+1"}) {
    std::string bands = c.substr(0, c.find(':') + 1);
    for (const auto& band :
         ZtThreads::SplitRows(std::stoi(c), std::stoul(c.substr(c.find('/') + 1))))
      bands += " " + std::to_string(band.FirstRow) + "+" + std::to_string(band.Rows);
    EXPECT_EQ(bands, c);
  }
  // What the library refuses, and unequal sizes, are refused.
  const CZtImage source = ZtTest::Scrambled({4, 4, EPixelType::RGB, EDataType::UByte});
  CZtImage target(CZtImageFormat(4, 4, EPixelType::RGB, EDataType::Float));
  for (const auto& [to, accepted] : {std::pair{target.GetFormat(), true},
                                     {{4, 4, EPixelType::BayerRG, EDataType::UByte}, false},
                                     {{4, 3, EPixelType::RGB, EDataType::Float}, false}})
    EXPECT_EQ(accepted, ZtThreads::ConvertInBands(target.GetDataPtr(), source.GetDataPtr(), to,
                                                  source.GetFormat(), 2));
}

}  // namespace
