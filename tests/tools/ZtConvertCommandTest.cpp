// zt-convert's command line, and whole conversions run as the tool runs them.

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "ZtConvertCommand.h"
#include "ZtToolTestSupport.h"

using namespace ZtTools;
using ZtTest::CBytes;
using ZtTest::Concat;
using ZtTest::CScratchDir;

namespace {

// One run of the tool on files of a scratch directory, and what it must say.
struct SRun {
  const char* Input;
  const char* Output;
  std::vector<std::string> Options;
  const char* Said;  // on stdout for a success, on stderr for a failure
};

int RunIn(const CScratchDir& dir, const SRun& run, std::ostringstream& out, std::ostringstream& err) {
  std::vector<std::string> arguments = run.Options;
  arguments.insert(arguments.end(), {dir / run.Input, dir / run.Output});
  return RunConvertCommand(arguments, out, err);
}

TEST(ZtConvertCommand, ParsesEveryOptionSpelling) {
  const struct {
    std::vector<std::string> Arguments;
    const char* Input;
    const char* Output;
    std::optional<EPixelType::ID> PixelType;
    std::optional<EDataType::ID> DataType;
    bool Raw;
    bool Verbose;
  } cases[] = {
      {{"in.png", "out.pgm"}, "in.png", "out.pgm", {}, {}, false, false},
      {{"-l", "lum", "-t", "UShort", "in.png", "out.pgm"}, "in.png", "out.pgm", EPixelType::Lum, EDataType::UShort,
       false, false},
      {{"in.png", "--layout=BGRA", "out.png", "--type", "ubyte"}, "in.png", "out.png", EPixelType::BGRA,
       EDataType::UByte, false, false},
      {{"-v", "-r", "4x4, BayerRG, UShort", "in.raw", "out.png"}, "in.raw", "out.png", {}, {}, true, true},
      {{"--raw-format=4x4,BayerRG,UShort", "--verbose", "--", "in.raw", "-out.png"}, "in.raw", "-out.png", {}, {},
       true, true},
      {{"--", "-in.pgm", "-l"}, "-in.pgm", "-l", {}, {}, false, false},
  };
  for (const auto& c : cases) {
    const SConvertOptions options = ParseConvertArguments(c.Arguments);
    EXPECT_EQ(options.Input, c.Input);
    EXPECT_EQ(options.Output, c.Output);
    EXPECT_EQ(options.PixelType, c.PixelType);
    EXPECT_EQ(options.DataType, c.DataType);
    EXPECT_EQ(options.RawFormat.has_value(), c.Raw);
    EXPECT_EQ(options.Verbose, c.Verbose);
  }
  EXPECT_EQ(ParseConvertArguments({"-r", "2x3, LumA, Int", "a.raw", "b.raw"}).RawFormat,
            CZtImageFormat(2, 3, EPixelType::LumA, EDataType::Int));
  EXPECT_TRUE(ParseConvertArguments({"--help"}).Help);
}

TEST(ZtConvertCommand, RefusesBadCommandLinesWithExitCodeTwo) {
  const struct {
    std::vector<std::string> Arguments;
    const char* Message;
  } cases[] = {
      {{}, "needs an INPUT and an OUTPUT file"},
      {{"in.png"}, "needs an INPUT and an OUTPUT file"},
      {{"a.png", "b.png", "c.png"}, "too many files: c.png"},
      {{"-x", "a.png", "b.png"}, "unknown option -x"},
      {{"--verbose=yes", "a.png", "b.png"}, "unknown option --verbose=yes"},
      {{"a.png", "b.png", "-l"}, "-l needs a value"},
      {{"-l", "YUV", "a.png", "b.png"}, "unknown layout 'YUV'"},
      {{"-t", "half", "a.png", "b.png"}, "unknown sample type 'half'"},
      {{"-r", "4x4 BayerRG UShort", "a.raw", "b.png"}, "expected WIDTHxHEIGHT, LAYOUT, TYPE"},
      {{"-r", "4x4, BayerRG, UShort", "a.png", "b.png"}, "--raw-format is for a .raw INPUT only"},
  };
  for (const auto& c : cases) {
    std::ostringstream out, err;
    EXPECT_EQ(RunConvertCommand(c.Arguments, out, err), kExitUsage) << c.Message;
    const std::string text = err.str();
    EXPECT_EQ(text.rfind("zt-convert: ", 0), 0u) << text;
    EXPECT_NE(text.find(c.Message), std::string::npos) << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
    EXPECT_TRUE(out.str().empty());
  }
}

// A whole run: each step's output is the next step's input, through every
// file format, and the samples checked at the end against the library's rule
// as worked out by hand.
TEST(ZtConvertCommand, ConvertsThroughEveryFileFormat) {
  CScratchDir dir;
  // Three pixels of Lum UByte: 0, 51 and 255.
  ZtTest::WriteBytes(dir / "start.pgm", Concat("P5\n3 1\n255\n", {0, 51, 255}));
  const SRun steps[] = {
      // UByte 51 / 255 = 0.2 as a float, and the grey repeated in red, green, blue.
      {"start.pgm", "float.pfm", {"-v", "--layout", "RGB"}, "(3x1, Lum, UByte) -> "},
      {"float.pfm", "deep.pam", {"-v", "-l", "RGBA"}, "(3x1, RGB, Float) -> "},
      {"deep.pam", "swapped.png", {"-v", "-l", "BGRA", "-t", "UShort"}, "(3x1, RGBA, UShort) -> "},
      {"swapped.png", "wide.raw", {"-v", "-t", "Double"}, "(3x1, RGBA, UShort) -> "},
      {"wide.raw", "end.ppm", {"-v", "-r", "3x1, RGBA, Double", "-t", "UByte"}, "(3x1, RGBA, Double) -> "},
  };
  for (const auto& step : steps) {
    std::ostringstream out, err;
    ASSERT_EQ(RunIn(dir, step, out, err), kExitSuccess) << err.str();
    EXPECT_NE(out.str().find(step.Said), std::string::npos) << out.str();
  }
  // The float path: 0.2f -> UShort 13107 -> Double 0.2 -> UByte 51: the same
  // three greys come back, and the alpha filled at full scale was dropped.
  EXPECT_EQ(ZtTest::ReadBytes(dir / "end.ppm"), Concat("P6\n3 1\n255\n", {0, 0, 0, 51, 51, 51, 255, 255, 255}));
  // The default for a PAM from a PFM was UShort; check the alpha there.
  CZtImage deep;
  ReadImageFile(dir / "deep.pam", deep);
  EXPECT_EQ(static_cast<const unsigned short*>(deep.GetDataPtr())[3], 65535);
  EXPECT_EQ(static_cast<const unsigned short*>(deep.GetDataPtr())[4], 13107);
}

TEST(ZtConvertCommand, FailuresExitWithOneAndLeaveNoOutput) {
  CScratchDir dir;
  ZtTest::WriteBytes(dir / "in.pgm", Concat("P5\n2 1\n255\n", {1, 2}));
  ZtTest::WriteBytes(dir / "cut.pgm", Concat("P5\n2 2\n255\n", {1, 2}));
  const SRun cases[] = {
      {"missing.pgm", "out.png", {}, "cannot open"},
      {"in.pgm", "out.bmp", {}, "unknown file format"},
      {"in.gif", "out.png", {}, "unknown file format"},
      {"cut.pgm", "out.png", {}, "file is truncated"},
      {"in.pgm", "out.pgm", {"-l", "RGB"}, "PGM files hold Lum with UByte or UShort samples, not RGB, UByte"},
      {"in.pgm", "out.png", {"-t", "Float"}, "not Lum, Float"},
      // The library has no Bayer target except a copy of the same format.
      {"in.pgm", "out.raw", {"-l", "BayerRG"}, "cannot convert 2x1, Lum, UByte to BayerRG, UByte"},
  };
  for (const auto& c : cases) {
    std::ostringstream out, err;
    EXPECT_EQ(RunIn(dir, c, out, err), kExitFailure) << c.Said;
    EXPECT_NE(err.str().find(c.Said), std::string::npos) << err.str();
    auto entries = dir.Entries();
    std::sort(entries.begin(), entries.end());
    EXPECT_EQ(entries, (std::vector<std::string>{"cut.pgm", "in.pgm"})) << c.Said;
  }
}

}  // namespace
