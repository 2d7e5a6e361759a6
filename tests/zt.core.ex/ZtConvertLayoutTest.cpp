// Channel mapping and pixel runs: every cell against the reference, on every
// instruction-set path, for run lengths around the vector widths and blocks.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "ZtConvertTesting.h"

using namespace ZtTest;

namespace {

std::vector<unsigned char> SourceFor(EPixelType::ID sp, EDataType::ID sd, unsigned count,
                                     std::uint64_t seed) {
  return RandomBytes(std::size_t(count) * std::size_t(Components(sp) * SampleBytes(sd)), seed);
}

// Longer runs that are no multiple of any vector width, unroll or block, and
// the block edges themselves, for the 36 layout pairs and a spread of type
// pairs.
TEST(ConvertCells, LongRunsAndBlockEdgesMatchTheReference) {
  const unsigned counts[] = {31, 33, 63, 65, 127, 129, 511, 513, 1024, 2049, 4097};
  const EDataType::ID types[] = {EDataType::Byte, EDataType::UShort, EDataType::UInt,
                                 EDataType::Float, EDataType::Double};
  for (EPixelType::ID sp : kTargetPixelTypes) {
    for (EDataType::ID sd : types) {
      const std::vector<unsigned char> source = SourceFor(sp, sd, 4097, 5);
      for (EPixelType::ID tp : kTargetPixelTypes) {
        for (EDataType::ID td : types) {
          for (unsigned count : counts) {
            ASSERT_TRUE(MatchesReference(tp, td, sp, sd, count, source.data()));
          }
        }
      }
    }
  }
}

// Targets of several megabytes, which the wide path writes past the caches,
// starting at every alignment class of the target: the edges of each block
// take other stores than its middle.
TEST(ConvertCells, LargeTargetsAtAnyAlignmentMatchTheReference) {
  struct Case {
    EPixelType::ID sp;
    EDataType::ID sd;
    EPixelType::ID tp;
    EDataType::ID td;
  };
  const Case cases[] = {{EPixelType::Lum, EDataType::UByte, EPixelType::RGBA, EDataType::Double},
                        {EPixelType::BGRA, EDataType::Float, EPixelType::RGB, EDataType::Short},
                        {EPixelType::RGB, EDataType::UShort, EPixelType::BGRA, EDataType::UShort}};
  const unsigned count = 700001;
  for (const Case& c : cases) {
    const std::vector<unsigned char> source = SourceFor(c.sp, c.sd, count, 9);
    const std::vector<unsigned char> expected =
        ZtConvertRef::ConvertImage(c.tp, c.td, c.sp, c.sd, count, source.data());
    const Zt::CZtImageFormat sourceFormat(int(count), 1, c.sp, c.sd);
    const Zt::CZtImageFormat targetFormat(int(count), 1, c.tp, c.td);
    for (EPath path : Paths()) {
      for (std::size_t offset : {std::size_t(0), std::size_t(8), std::size_t(35)}) {
        std::vector<unsigned char> target(expected.size() + 128, kGuard);
        ASSERT_TRUE(
            RunOnPath(path, target.data() + offset, source.data(), targetFormat, sourceFormat));
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), target.begin() + long(offset)))
            << Describe(c.sp, c.sd, c.tp, c.td) << ", offset " << offset << ", " << PathName(path);
        if (offset > 0) {
          EXPECT_EQ(target[offset - 1], kGuard);
        }
        EXPECT_EQ(target[offset + expected.size()], kGuard);
      }
    }
  }
}

// Cases worked out by hand, so that the reference's channel table is not
// taken on trust.
TEST(ConvertCells, ChannelsTravelAsWorkedOutByHand) {
  const std::vector<EPath> paths = Paths();
  for (EPath path : paths) {
    SCOPED_TRACE(PathName(path));
    // Luminance is the red sample, wherever the layout keeps it.
    const double rgb[] = {0.1, 0.2, 0.4};
    double lum = 0;
    auto out = ConvertOn(path, EPixelType::Lum, EDataType::Double, EPixelType::RGB,
                         EDataType::Double, 1, rgb);
    std::memcpy(&lum, out.data(), 8);
    EXPECT_EQ(lum, 0.1);
    out = ConvertOn(path, EPixelType::Lum, EDataType::Double, EPixelType::BGR, EDataType::Double, 1,
                    rgb);
    std::memcpy(&lum, out.data(), 8);
    EXPECT_EQ(lum, 0.4);

    // Swapped, divided by 255, alpha filled with 1.0.
    const unsigned char bytes[] = {255, 0, 128};
    out = ConvertOn(path, EPixelType::BGRA, EDataType::Float, EPixelType::RGB, EDataType::UByte, 1,
                    bytes);
    float bgra[4];
    std::memcpy(bgra, out.data(), 16);
    EXPECT_EQ(bgra[0], 0.501960814f);
    EXPECT_EQ(bgra[1], 0.0f);
    EXPECT_EQ(bgra[2], 1.0f);
    EXPECT_EQ(bgra[3], 1.0f);

    // The fill is the top of the target range whatever the sample.
    const std::int16_t minusOne = -1;
    out = ConvertOn(path, EPixelType::LumA, EDataType::Byte, EPixelType::Lum, EDataType::Short, 1,
                    &minusOne);
    EXPECT_EQ(std::int8_t(out[0]), 0);
    EXPECT_EQ(std::int8_t(out[1]), 127);

    // A source alpha is converted like any sample: 0 stays 0, 2.0 saturates.
    const float rgba[] = {0.5f, 0.25f, 0.75f, 0.0f, 0.5f, 0.25f, 0.75f, 2.0f};
    out = ConvertOn(path, EPixelType::LumA, EDataType::Byte, EPixelType::RGBA, EDataType::Float, 2,
                    rgba);
    EXPECT_EQ(std::int8_t(out[0]), 63);
    EXPECT_EQ(std::int8_t(out[1]), 0);
    EXPECT_EQ(std::int8_t(out[3]), 127);

    // LumA to RGBA: the luminance three times, then the alpha.
    const unsigned char luma[] = {7, 9};
    out = ConvertOn(path, EPixelType::RGBA, EDataType::UByte, EPixelType::LumA, EDataType::UByte, 1,
                    luma);
    EXPECT_EQ(out, (std::vector<unsigned char>{7, 7, 7, 9}));

    // The four Bayer types read as luminance.
    for (EPixelType::ID bayer :
         {EPixelType::BayerRG, EPixelType::BayerBG, EPixelType::BayerGR, EPixelType::BayerGB}) {
      const std::uint16_t raw = 65535;
      out = ConvertOn(path, EPixelType::RGB, EDataType::UByte, bayer, EDataType::UShort, 1, &raw);
      EXPECT_EQ(out, (std::vector<unsigned char>{255, 255, 255}));
    }
  }
}

// Converted onto itself, a red-blue swap reads red, stores it over blue,
// then reads that stored red as blue: the swap does not swap. Runs long
// enough for the vector loops, which must not change this.
TEST(ConvertCells, SwapInPlaceStoresRedBeforeReadingBlue) {
  struct Case {
    EPixelType::ID from;
    EPixelType::ID to;
    unsigned char expected[3];
  };
  const Case cases[] = {{EPixelType::RGB, EPixelType::BGR, {10, 20, 10}},
                        {EPixelType::BGR, EPixelType::RGB, {30, 20, 30}}};
  for (EPath path : Paths()) {
    for (const Case& c : cases) {
      const unsigned count = 5000;
      std::vector<unsigned char> pixels;
      for (unsigned i = 0; i < count; ++i) pixels.insert(pixels.end(), {10, 20, 30});
      const Zt::CZtImageFormat sourceFormat(int(count), 1, c.from, EDataType::UByte);
      const Zt::CZtImageFormat targetFormat(int(count), 1, c.to, EDataType::UByte);
      ASSERT_TRUE(RunOnPath(path, pixels.data(), pixels.data(), targetFormat, sourceFormat));
      for (unsigned i = 0; i < count; ++i) {
        ASSERT_EQ(0, std::memcmp(&pixels[3 * i], c.expected, 3))
            << "pixel " << i << ", " << PathName(path);
      }
    }
  }
}

}  // namespace
