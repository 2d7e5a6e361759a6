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

// grey.pgm of the directory converted to PNG, as the tool does it.
CBytes ReadPgmAsPng(const CScratchDir& dir) {
  std::ostringstream out, err;
  EXPECT_EQ(RunConvertCommand({dir / "grey.pgm", dir / "grey.png"}, out, err), kExitSuccess)
      << err.str();
  return ZtTest::ReadBytes(dir / "grey.png");
}

int RunIn(const CScratchDir& dir, const SRun& run, std::ostringstream& out,
          std::ostringstream& err) {
  std::vector<std::string> arguments = run.Options;
  arguments.insert(arguments.end(), {dir / run.Input, dir / run.Output});
  return RunConvertCommand(arguments, out, err);
}

TEST(ZtConvertCommand, ParsesEveryOptionSpelling) {
  using Files = std::vector<std::string>;
  const struct {
    std::vector<std::string> Arguments;
    Files Expected;
    std::optional<EPixelType::ID> PixelType;
    std::optional<EDataType::ID> DataType;
    std::optional<EFileFormat> OutputFormat;
    bool Raw;
    bool Verbose;
  } cases[] = {
      {{"in.png", "out.pgm"}, {"in.png", "out.pgm"}, {}, {}, {}, false, false},
      {{"-l", "lum", "-t", "UShort", "in.png", "out.pgm"},
       {"in.png", "out.pgm"},
       EPixelType::Lum,
       EDataType::UShort,
       {},
       false,
       false},
      {{"in.png", "--layout=BGRA", "out.png", "--type", "ubyte"},
       {"in.png", "out.png"},
       EPixelType::BGRA,
       EDataType::UByte,
       {},
       false,
       false},
      {{"-v", "-r", "4x4, BayerRG, UShort", "in.raw", "out.png"},
       {"in.raw", "out.png"},
       {},
       {},
       {},
       true,
       true},
      {{"--raw-format=4x4,BayerRG,UShort", "--verbose", "--", "in.raw", "-out.png"},
       {"in.raw", "-out.png"},
       {},
       {},
       {},
       true,
       true},
      {{"--", "-in.pgm", "-l"}, {"-in.pgm", "-l"}, {}, {}, {}, false, false},
      // A lone "-" is a file name: the standard streams.
      {{"-", "-f", "PNM", "-"}, {"-", "-"}, {}, {}, EFileFormat::Pnm, false, false},
      {{"--format=.pam", "a", "b"}, {"a", "b"}, {}, {}, EFileFormat::Pam, false, false},
      {{"--info", "a.png", "-", "c.pgm"}, {"a.png", "-", "c.pgm"}, {}, {}, {}, false, false},
  };
  for (const auto& c : cases) {
    const SConvertOptions options = ParseConvertArguments(c.Arguments);
    EXPECT_EQ(options.Files, c.Expected);
    EXPECT_EQ(options.PixelType, c.PixelType);
    EXPECT_EQ(options.DataType, c.DataType);
    EXPECT_EQ(options.OutputFormat, c.OutputFormat);
    EXPECT_EQ(options.RawFormat.has_value(), c.Raw);
    EXPECT_EQ(options.Verbose, c.Verbose);
  }
  EXPECT_EQ(ParseConvertArguments({"-r", "2x3, LumA, Int", "a.raw", "b.raw"}).RawFormat,
            CZtImageFormat(2, 3, EPixelType::LumA, EDataType::Int));
  EXPECT_EQ(ParseConvertArguments({"a", "b"}).MaxPixels, 268435456u);
  EXPECT_EQ(ParseConvertArguments({"--max-pixels", "12", "a", "b"}).MaxPixels, 12u);
  EXPECT_TRUE(ParseConvertArguments({"--help"}).Help);
  EXPECT_TRUE(ParseConvertArguments({"--version"}).Version);
}

TEST(ZtConvertCommand, HelpAndVersionGoToStandardOutput) {
  for (const char* option : {"-h", "--help", "--version"}) {
    std::ostringstream out, err;
    EXPECT_EQ(RunConvertCommand({option}, out, err), kExitSuccess);
    EXPECT_TRUE(err.str().empty());
    EXPECT_NE(out.str().find(option[2] == 'v' ? "zt-convert (Zt.Core.Ex) 1." : "usage: zt-convert"),
              std::string::npos)
        << out.str();
  }
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
      {{"--max-pixels", "0", "a.png", "b.png"},
       "--max-pixels needs a positive whole number, not '0'"},
      {{"--max-pixels=1e6", "a.png", "b.png"}, "needs a positive whole number, not '1e6'"},
      {{"--info"}, "--info needs at least one FILE"},
      {{"--info", "-t", "UByte", "a.png"}, "--info takes no"},
      // What the arguments alone show, found before INPUT is opened: none of
      // these inputs exists, which would be exit code 1.
      {{"absent.png", "b.tiff"}, "unknown file format of 'b.tiff'"},
      {{"absent.png", "noextension"}, "unknown file format of 'noextension'"},
      {{"-f", "jpeg", "absent.png", "b.png"}, "unknown file format 'jpeg'"},
      {{"absent.png", "-"}, "writing to standard output needs its format given (-f)"},
      {{"absent.png", "b.pbm"}, "PBM files are read, not written"},
      {{"absent.raw", "b.png"}, "absent.raw: a raw file needs its format given"},
      {{"-l", "BayerRG", "absent.png", "b.raw"}, "a BayerRG target is only a copy of a raw input"},
      {{"-l", "BayerRG", "-r", "2x2, BayerGB, UByte", "absent.raw", "b.raw"},
       "a BayerRG target is only a copy"},
      {{"-l", "BayerRG", "-t", "UShort", "-r", "2x2, BayerRG, UByte", "absent.raw", "b.raw"},
       "only a copy"},
      {{"-t", "Double", "absent.pgm", "out.ppm"},
       "out.ppm: PPM files hold RGB with UByte or UShort samples, not Double"},
      {{"-l", "RGB", "absent.pgm", "out.pgm"},
       "PGM files hold Lum with UByte or UShort samples, not RGB"},
      {{"-l", "LumA", "-t", "Float", "absent.pgm", "out.pfm"},
       "PFM files hold Lum or RGB with Float samples, not LumA, Float"},
      {{"-f", "ppm", "-l", "Lum", "absent.pgm", "out.png"}, "out.png: PPM files hold RGB"},
  };
  for (const auto& c : cases) {
    std::ostringstream out, err;
    EXPECT_EQ(RunConvertCommand(c.Arguments, out, err), kExitUsage)
        << c.Message << ": " << err.str();
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
      {"wide.raw",
       "end.ppm",
       {"-v", "-r", "3x1, RGBA, Double", "-t", "UByte"},
       "(3x1, RGBA, Double) -> "},
  };
  for (const auto& step : steps) {
    std::ostringstream out, err;
    ASSERT_EQ(RunIn(dir, step, out, err), kExitSuccess) << err.str();
    EXPECT_NE(out.str().find(step.Said), std::string::npos) << out.str();
  }
  // The float path: 0.2f -> UShort 13107 -> Double 0.2 -> UByte 51: the same
  // three greys come back, and the alpha filled at full scale was dropped.
  EXPECT_EQ(ZtTest::ReadBytes(dir / "end.ppm"),
            Concat("P6\n3 1\n255\n", {0, 0, 0, 51, 51, 51, 255, 255, 255}));
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
      {"cut.pgm", "out.png", {}, "file is truncated"},
      {"cut.pgm",
       "out.png",
       {"-r", "2x2, Lum, UByte"},
       "holds 13 bytes, but 2x2, Lum, UByte takes 4"},
      {"in.pgm", "out.png", {"--max-pixels", "1"}, "image of 2x1 is larger than 1 pixels"},
      // Content decides, whatever the name says.
      {"in.pgm",
       "out.png",
       {"-l", "Lum", "-t", "UByte", "-r", "1x1, RGBA, Byte"},
       "holds 13 bytes"},
      {"cut.pgm", "nowhere/out.png", {}, "file is truncated"},
      {"in.pgm", "nowhere/out.png", {}, "nowhere"},
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

TEST(ZtConvertCommand, InfoPrintsOneLinePerFileAndGoesOnAfterAFailure) {
  CScratchDir dir;
  ZtTest::WriteBytes(dir / "grey.pgm", Concat("P2\n2 1\n1000\n0 1000\n"));
  ZtTest::WriteBytes(dir / "picture.png", ReadPgmAsPng(dir));
  ZtTest::WriteBytes(dir / "bad.ppm", Concat("P6\n2 1\n255\n", {1}));
  std::ostringstream out, err;
  EXPECT_EQ(RunConvertCommand({"--info", dir / "grey.pgm", dir / "bad.ppm", dir / "picture.png"},
                              out, err),
            kExitFailure);
  EXPECT_EQ(
      out.str(),
      dir / "grey.pgm" + ": PGM 2x1, Lum, UShort; magic=P2 maxval=1000\n" + dir / "picture.png" +
          ": PNG 2x1, Lum, UShort; bit-depth=16 colour=grey interlace=none transparency=none\n");
  EXPECT_EQ(err.str(),
            "zt-convert: " + dir / "bad.ppm" + ": file is truncated: 1 of 6 bytes of pixels\n");
}

}  // namespace
