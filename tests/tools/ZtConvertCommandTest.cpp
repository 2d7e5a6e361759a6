// zt-convert's command line, and whole conversions run as the tool runs them.

#include "ZtConvertCommand.h"
#include "ZtToolTestSupport.h"

using namespace ZtTools;
using namespace ZtTest;

namespace {

// The words of a command line: '...' holds blanks, "@name" is a scratch file.
std::vector<std::string> Words(const std::string& command, const CScratchDir* dir) {
  std::vector<std::string> words;
  std::istringstream text(command);
  for (std::string word; text >> std::quoted(word, '\'');)
    words.push_back(dir != nullptr && word[0] == '@' ? *dir / word.substr(1) : word);
  return words;
}

// Exit 0 says what it did on stdout; 1 (failed) or 2 (refused before INPUT, absent, is opened)
// why, in one line on stderr. The runs share one scratch directory; with -r a file is raw.
TEST(ZtConvertCommand, EveryRunExitsWithItsCodeAndSaysWhatItDid) {
  CScratchDir dir;
  WriteFile(dir / "start.pgm", "P2\n3 1\n255\n0 51 255\n");
  WriteFile(dir / "in.pgm", "P5\n2 1\n255\n\1\2");
  WriteFile(dir / "cut.pgm", "P5\n2 2\n255\n\1\2");
  const std::tuple<std::string, int, const char*> runs[] = {
      {"-h", 0, "usage: zt-convert"},
      {"--version", 0, "zt-convert (Zt.Core.Ex) 1."},
      {"", 2, "needs an INPUT and an OUTPUT file"},
      {"a.png b.png c.png", 2, "too many files: c.png"},
      {"-x a.png b.png", 2, "unknown option -x"},
      {"--verbose=yes a.png b.png", 2, "unknown option --verbose=yes"},
      {"a.png b.png -l", 2, "-l needs a value"},
      {"-l YUV a.png b.png", 2, "unknown layout 'YUV'"},
      {"-t half a.png b.png", 2, "unknown sample type 'half'"},
      {"-r '4x4 BayerRG UShort' a.raw b.png", 2, "expected WIDTHxHEIGHT, LAYOUT, TYPE"},
      {"--max-pixels 0 a.png b.png", 2, "--max-pixels needs a positive whole number, not '0'"},
      {"--max-pixels=1e6 a.png b.png", 2, "needs a positive whole number, not '1e6'"},
      {"--info", 2, "--info needs at least one FILE"},
      {"--info -t UByte a.png", 2, "--info takes no"},
      {"absent.png b.tiff", 2, "unknown file format of 'b.tiff'"},
      {"-- -in.pgm -l", 2, "unknown file format of '-l'"},  // after "--" only files
      {"-f jpeg absent.png b.png", 2, "unknown file format 'jpeg'"},
      {"absent.png -", 2, "writing to standard output needs its format given (-f)"},
      {"absent.png b.pbm", 2, "PBM files are read, not written"},
      {"absent.raw b.png", 2, "absent.raw: a raw file needs its format given"},
      {"-l BayerRG absent.png b.raw", 2, "a BayerRG target is only a copy of a raw input"},
      {"-l BayerRG -r 2x2,BayerGB,UByte absent.raw b.raw", 2, "a BayerRG target is only a copy"},
      {"-l BayerRG -t UShort -r '2x2, BayerRG, UByte' absent.raw b.raw", 2, "only a copy"},
      {"-t Double absent.pgm out.ppm", 2,
       "out.ppm: PPM files hold RGB with UByte or UShort samples, not Double"},
      {"-l RGB absent.pgm out.pgm", 2, "PGM files hold Lum with UByte or UShort samples, not RGB"},
      {"-l LumA -t Float absent.pgm out.pfm", 2,
       "PFM files hold Lum or RGB with Float samples, not LumA, Float"},
      {"-f ppm -l Lum absent.pgm out.png", 2, "out.png: PPM files hold RGB"},
      // Three greys through every file format and back (51 / 255 is 0.2f), options spelt variously.
      {"--verbose --layout RGB @start.pgm @float.pfm", 0, "(3x1, Lum, UByte) -> "},
      {"-v -l RGBA --format=.pam @float.pfm @deep", 0, "(3x1, RGB, Float) -> "},
      {"-v --layout=BGRA --type ushort @deep @swapped.png", 0, "(3x1, RGBA, UShort) -> "},
      {"-v -t Double @swapped.png @wide.raw", 0, "(3x1, RGBA, UShort) -> "},
      {"-v --raw-format=3x1,RGBA,Double -t UByte -- @wide.raw @end.ppm", 0,
       "(3x1, RGBA, Double) -> "},
      {"@in.pgm @grey.png", 0, ""},
      {"-f PNM @missing.pgm -", 1, "cannot open '"},  // a lone "-" is a file
      {"@cut.pgm @out.png", 1, "file is truncated"},
      {"-r '2x2, Lum, UByte' @cut.pgm @out.png", 1, "holds 13 bytes, but 2x2, Lum, UByte takes 4"},
      {"--max-pixels 1 @in.pgm @out.png", 1, "image of 2x1 is larger than 1 pixels"},
      {"@cut.pgm @nowhere/out.png", 1, "file is truncated"},
      {"@in.pgm @nowhere/out.png", 1, "nowhere"},
  };
  for (const auto& [command, code, said] : runs) {
    const std::string before = dir.Entries();
    std::ostringstream out, err;
    EXPECT_EQ(RunConvertCommand(Words(command, &dir), out, err), code)
        << command << ": " << err.str();
    const std::string text = code == 0 ? out.str() : err.str();
    EXPECT_PRED_FORMAT2(testing::IsSubstring, said, text) << command;
    EXPECT_EQ(code == 0 ? err.str() : out.str(), "") << command;
    if (code == 0) continue;
    EXPECT_TRUE(text.rfind("zt-convert: ", 0) == 0) << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
    EXPECT_EQ(dir.Entries(), before) << command;
  }
  // 0.2f -> 13107 -> 0.2 -> 51 return the greys; the alpha a PAM got at full scale was dropped.
  EXPECT_EQ(ReadFile(dir / "end.ppm"), "P6\n3 1\n255\n\0\0\0\63\63\63\377\377\377"s);
  CZtImage deep;
  ReadImageFile(dir / "deep", deep);
  EXPECT_EQ(Samples(deep), "0 0 0 65535 13107 13107 13107 65535 65535 65535 65535 65535");
  // --info prints one line for each file and goes on after a failure.
  std::ostringstream out, err;
  EXPECT_EQ(RunConvertCommand(Words("--info @start.pgm @cut.pgm @grey.png", &dir), out, err),
            kExitFailure);
  EXPECT_EQ(
      out.str(),
      dir / "start.pgm" + ": PGM 3x1, Lum, UByte; magic=P2 maxval=255\n" + dir / "grey.png" +
          ": PNG 2x1, Lum, UByte; bit-depth=8 colour=grey interlace=none transparency=none\n");
  EXPECT_EQ(err.str(),
            "zt-convert: " + dir / "cut.pgm" + ": file is truncated: 2 of 4 bytes of pixels\n");
}

}  // namespace
