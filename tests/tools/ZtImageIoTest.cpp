// zt-convert's image files, read, written and replaced; failures name the file, leave nothing.

#include <signal.h>
#include <sys/stat.h>
#include <zlib.h>

#include "ZtAtomicFile.h"
#include "ZtImageIo.h"
#include "ZtToolTestSupport.h"

using namespace ZtTools;
using namespace ZtTest;
namespace fs = std::filesystem;

namespace {

TEST(ZtImageIo, EveryWriterRoundTripsThroughItsReaderForEveryFormatItHolds) {
  CScratchDir dir;
  int cases = 0;
  for (const std::string extension : {"png", "pgm", "ppm", "pam", "pfm", "raw"}) {
    for (EPixelType::ID p : kAllPixelTypes) {
      for (EDataType::ID d : kAllDataTypes) {
        if (!CanHold(FileFormatOf("." + extension), p, d)) continue;
        // Odd sizes, so that a row order or row length mistake shows.
        const CZtImage written = Scrambled({7, 5, p, d});
        const std::string path = dir / (std::to_string(++cases) + "." + extension);
        SCOPED_TRACE(path + " " + FormatText(written));
        WriteImageFile(path, written);
        CZtImage read;
        ReadImageFile(path, read, &written.GetFormat());
        // PNG has no BGR order: libpng swaps on writing, so BGR comes back as RGB.
        const EPixelType::ID layout = extension != "png"      ? p
                                      : p == EPixelType::BGR  ? EPixelType::RGB
                                      : p == EPixelType::BGRA ? EPixelType::RGBA
                                                              : p;
        ASSERT_EQ(read.GetFormat(), CZtImageFormat(7, 5, layout, d));
        CZtImage expected;
        ASSERT_TRUE(written.ConvertType(expected, layout, d));
        ASSERT_EQ(Bytes(read), Bytes(expected));
      }
    }
  }
  // PNG 6 layouts, PGM 1, PPM 1, PAM 4, each with two types; PFM 2; raw all 80.
  EXPECT_EQ(cases, 12 + 2 + 2 + 8 + 2 + 80);
}

// A PNG made by hand: header, chunks given, rows (in Adam7 passes) deflated.
std::string MakePng(unsigned width, unsigned height, char depth, char colour,
                    const std::string& rows, std::vector<std::string> chunks = {},
                    bool adam7 = false) {
  const auto be32 = [](unsigned long v) {
    return std::string{char(v >> 24), char(v >> 16), char(v >> 8), char(v)};
  };
  const std::size_t rowBytes = height == 0 ? 0 : rows.size() / height;
  const std::size_t pixel = adam7 ? rowBytes / width : rowBytes;
  // The seven Adam7 passes as first x, first y, x step, y step; the eighth takes whole rows.
  const unsigned x0[] = {0, 4, 0, 2, 0, 1, 0, 0}, y0[] = {0, 0, 4, 0, 2, 0, 1, 0};
  const unsigned dx[] = {8, 8, 4, 4, 2, 2, 1, width}, dy[] = {8, 8, 8, 4, 4, 2, 2, 1};
  std::string filtered;
  for (int pass = adam7 ? 0 : 7; pass < (adam7 ? 7 : 8); ++pass) {
    for (unsigned y = y0[pass]; y < height && x0[pass] < width; y += dy[pass]) {
      filtered += '\0';
      for (unsigned x = x0[pass]; x < width; x += dx[pass])
        filtered += rows.substr(y * rowBytes + x * pixel, pixel);
    }
  }
  uLongf size = compressBound(filtered.size());
  std::string deflated(size, '\0');
  compress(reinterpret_cast<Bytef*>(&deflated[0]), &size,
           reinterpret_cast<const Bytef*>(filtered.data()), filtered.size());
  chunks.insert(chunks.begin(), "IHDR" + be32(width) + be32(height) + depth + colour + "\0\0"s +
                                    static_cast<char>(adam7));
  chunks.insert(chunks.end(), {"IDAT" + deflated.substr(0, size), "IEND"});
  std::string png = "\x89PNG\r\n\x1A\n";
  for (const std::string& typed : chunks)
    png += be32(typed.size() - 4) + typed +
           be32(crc32_z(0, reinterpret_cast<const Bytef*>(typed.data()), typed.size()));
  return png;
}

TEST(ZtImageIo, ReadsTheVariantsRealFilesHaveAndNamesEveryFault) {
  CScratchDir dir;
  // An Adam7 picture (9x11: every pass holds pixels) where a misplaced pixel shows.
  const CZtImage adam7 = Scrambled({9, 11, EPixelType::RGB, EDataType::UByte});
  // '!' starts a part of the one-line message after the file's name. "exact" files are written
  // back byte for byte: big-endian integers, PFM little-endian bottom-up, raw little-endian.
  const std::tuple<std::string, std::string, std::string> cases[] = {
      {"exact.pgm", "P5\n3 2\n255\n\1\2\3\4\5\6", "3x2, Lum, UByte: 1 2 3 4 5 6"},
      {"exact16.pgm", "P5\n2 1\n65535\n\1\2\xA0\xB0", "2x1, Lum, UShort: 258 41136"},
      {"exact.ppm", "P6\n1 1\n255\n\12\24\36", "1x1, RGB, UByte: 10 20 30"},
      {"exact.pam",
       "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 2\nMAXVAL 255\nTUPLTYPE GRAYSCALE_ALPHA\nENDHDR\n\7\310",
       "1x1, LumA, UByte: 7 200"},
      {"exact.pfm", "Pf\n1 2\n-1.0\n\0\0\0\100\0\0\200\77"s, "1x2, Lum, Float: 1 2"},
      {"exact.raw", "\2\1\xB0\xA0", "2x1, Lum, UShort: 258 41136"},
      // Maxvals other than 255 and 65535 are rescaled, rounding to nearest.
      {"maxval1023.pgm", "P5\n2 1\n1023\n\3\377\2\0"s, "2x1, Lum, UShort: 65535 32800"},
      {"bw.pam", "P7\nWIDTH 2\nHEIGHT 1\nDEPTH 1\nMAXVAL 1\nTUPLTYPE BLACKANDWHITE\nENDHDR\n\1\0"s,
       "2x1, Lum, UByte: 255 0"},
      {"rgba.pam",
       "P7\n# c\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n\11\10\7\6",
       "1x1, RGBA, UByte: 9 8 7 6"},
      {"notuple.pam", "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 2\nMAXVAL 255\nENDHDR\n\5\6",
       "1x1, LumA, UByte: 5 6"},
      // File rows bottom-up, big-endian for a positive scale.
      {"bigendian.pfm", "Pf\n1 2\n1.0\n\x3E\x80\0\0\x3F\0\0\0"s, "1x2, Lum, Float: 0.5 0.25"},
      {"trailing.pgm", "P5\n1 1\n255\n\52\1\2\3", "1x1, Lum, UByte: 42"},
      // The plain members, and the bitmaps: 1 is black and reads as 0.
      {"plain.pgm", "P2 # comment\n3 1\n100\n0\t50\n\n100 ", "3x1, Lum, UByte: 0 128 255"},
      {"plain.ppm", "P3\n1 1\n65535\n65535 0 00017", "1x1, RGB, UShort: 65535 0 17"},
      {"plain.pbm", "P1\n# c\n3 2\n1 0 1\n010", "3x2, Lum, UByte: 0 255 0 255 0 255"},
      // Rows of a packed bitmap start on a byte; the padding bits are ignored.
      {"packed.pbm", "P4\n9 2\n\x80\x7F\0\xFF"s,
       "9x2, Lum, UByte: 0 255 255 255 255 255 255 255 255 255 255 255 255 255 255 255 255 0"},
      // Content decides over the extension.
      {"named.png", "P5\n1 1\n255\n\7", "1x1, Lum, UByte: 7"},
      // PNGs zt-convert never writes: palettes, depths below 8, grey tRNS, 16-bit big-endian.
      {"palette.png",
       MakePng(2, 2, 2, 3, "\x10\xB0",
               {"PLTE\xFF\0\0\0\xFF\0\0\0\xFF\xFF\xFF\xFF"s, "tRNS\xFF\x80\0"s}),
       "2x2, RGBA, UByte: 255 0 0 255 0 255 0 128 0 0 255 0 255 255 255 255"},  // entry 3 opaque
      {"greytrns.png", MakePng(2, 1, 8, 0, "\7\11", {"tRNS\0\7"s}), "2x1, LumA, UByte: 7 0 9 255"},
      {"rgba16.png", MakePng(1, 1, 16, 6, "\0\1\x80\0\xFF\xFF\x12\x34"s),
       "1x1, RGBA, UShort: 1 32768 65535 4660"},
      {"header.pgm", "P5\n2 2", "!truncated in its header"},
      {"magic.pgm", "GIF89a", "!not a PGM file (bad magic)"},
      {"unnamed", "GIF89a", "!not a known image format"},
      {"plain.pgm", "P2\n2 1\n255\n7 x\n", "!bad character in plain pixels"},
      {"plainshort.ppm", "P3\n2 1\n255\n1 2 3 4 5", "!truncated: 9 of 11 bytes"},
      {"plaincut.pgm", "P2\n2 2\n255\n1 2 3         ", "!truncated in its pixels"},
      {"bitmap.pbm", "P1\n2 2\n1 0 2 1", "!bad character in plain bitmap"},
      {"packed.pbm", "P4\n9 2\n\0\0\0"s, "!truncated: 3 of 4 bytes"},
      {"zero.pgm", "P5\n0 2\n255\n", "!width 0 out of range"},
      {"sign.pgm", "P5\n-3 2\n255\n", "!bad width '-3'"},
      {"maxval.pgm", "P5\n1 1\n70000\n\0\0"s, "!maxval 70000 out of range"},
      {"above.pgm", "P5\n2 1\n100\n\144\145", "!sample 101 above maxval 100"},
      {"huge.pgm", "P5\n70000 70000\n255\n", "!is larger than 268435456 pixels"},
      // Within the pixel limit, but the file cannot hold what it declares.
      {"declared.pgm", "P5\n16384 16384\n65535\n\0\0"s, "!truncated: 2 of 536870912 bytes"},
      {"declared.png", MakePng(16000, 16000, 8, 0, ""),
       "!declares 16000x16000 pixels, more than its"},
      {"cmyk.pam", "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE CMYK\nENDHDR\n\1\2\3\4",
       "!unsupported PAM tuple type 'CMYK'"},
      {"depth.pam", "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nTUPLTYPE RGB\nENDHDR\n\1",
       "!does not have depth 1"},
      {"nodepth.pam", "P7\nWIDTH 1\nHEIGHT 1\nMAXVAL 255\nENDHDR\n\1",
       "!lacks WIDTH, HEIGHT, DEPTH or MAXVAL"},
      {"scale.pfm", "Pf\n1 1\n0.0\n\0\0\0\0"s, "!bad PFM scale '0.0'"},
      {"short.pfm", "PF\n1 1\n-1.0\n\0\0\0\0"s, "!file is truncated: 4 of 12 bytes"},
      {"cut.png", MakePng(2, 1, 8, 0, "\7\11").substr(0, 40), "!truncated"},
      {"wrong.raw", std::string(12, '\7'), "!holds 12 bytes, but 2x1, Lum, UShort takes 4"},
      {"adam7.png", MakePng(9, 11, 8, 2, Bytes(adam7), {}, true),
       "9x11, RGB, UByte: " + Samples(adam7)},
  };
  CZtImage image;  // each read replaces what the one before left
  for (const auto& [file, content, expected] : cases) {
    const std::string path = dir / file;  // a structured binding is not captured
    WriteFile(path, content);
    const CZtImageFormat raw(2, 1, EPixelType::Lum, EDataType::UShort);  // for .raw files alone
    std::string outcome = MessageOf<CIoError>([&] { ReadImageFile(path, image, &raw); });
    if (outcome == "(nothing thrown)") outcome = FormatText(image) + ": " + Samples(image);
    EXPECT_TRUE(expected[0] == '!' ? outcome.rfind(path + ": ", 0) == 0 &&
                                         outcome.find(expected.substr(1)) != std::string::npos &&
                                         outcome.find('\n') == std::string::npos
                                   : outcome == expected)
        << file << ": " << outcome;
    if (file.rfind("exact", 0) == 0) {
      WriteImageFile(dir / ("back-" + file), image);
      EXPECT_EQ(ReadFile(dir / ("back-" + file)), content) << file;
    }
  }
  EXPECT_THROW(ReadImageFile(dir / "exact.raw", image), CIoError);  // a raw file needs its format
}

TEST(ZtImageIo, FormatsAreKnownByFirstBytesAndExtensionTargetsChosenAndNamesParsed) {
  // The start of a file, '|' and the format it shows, if any.
  for (const std::string c : {"\x89PNG\r\n\x1a\n|PNG", "\x89PNG\r\n\x1a|", "P1\n|PBM", "P4 |PBM",
                              "P2\t|PGM", "P5\r|PGM", "P3\n|PPM", "P6\n|PPM", "P7\n|PAM",
                              "Pf\n|PFM", "PF\n|PFM", "P5|", "P55|", "P8\n|", "p5\n|", "|"}) {
    const std::string start = c.substr(0, c.rfind('|')), name = c.substr(c.rfind('|') + 1);
    EFileFormat format = EFileFormat::Raw;
    const auto* bytes = reinterpret_cast<const unsigned char*>(start.data());
    EXPECT_EQ(DetectFileFormat(bytes, start.size(), format), !name.empty()) << start;
    EXPECT_EQ(name.empty() ? name : FileFormatName(format), name) << start;
  }
  for (const std::string c :
       {"a.png|PNG", "dir.x/A.PGM|PGM", "b.Ppm|PPM", "c.pam|PAM", "d.pfm|PFM", "e.tar.raw|raw"})
    EXPECT_EQ(FileFormatName(FileFormatOf(c.substr(0, c.find('|')))), c.substr(c.find('|') + 1));
  for (const char* unknown : {"a.bmp", "png", "dir.png/file", "a.png.tmp", "", "a."})
    EXPECT_THROW(FileFormatOf(unknown), CIoError) << unknown;
  // ChooseTarget: a format, a source's layout and type, '>' and the target's. What the format
  // holds stays, a mosaic is one sample, wide samples keep 16 bits, 8-bit stays 8-bit.
  for (const std::string c : {"png BGRA, UShort > BGRA, UShort", "png BayerRG, UByte > Lum, UByte",
                              "png RGBA, Float > RGBA, UShort", "png LumA, Byte > LumA, UByte",
                              "pgm RGBA, Int > Lum, UShort", "ppm LumA, UByte > RGB, UByte",
                              "pam BGRA, Double > RGBA, UShort", "pam BGR, Short > RGB, UShort",
                              "pfm RGBA, UByte > RGB, Float", "pfm LumA, Double > Lum, Float",
                              "raw BayerGB, Int > BayerGB, Int"}) {
    const EFileFormat format = FileFormatOf("." + c.substr(0, 3));
    const CZtImageFormat source = ParseImageFormat("1x1, " + c.substr(4, c.find('>') - 5));
    CZtImageFormat target(1, 1, EPixelType::RGB, EDataType::UByte);
    ChooseTarget(format, source.PixelType, source.DataType, target.PixelType, target.DataType);
    EXPECT_EQ(c.substr(0, c.find('>') + 2) + FormatText(target).substr(5), c);
    EXPECT_TRUE(CanHold(format, target.PixelType, target.DataType));
  }
  // Format texts parse without regard to case or blanks; None and Void are no names.
  for (EPixelType::ID p : kAllPixelTypes) {
    for (EDataType::ID d : kAllDataTypes) {
      std::string text = FormatText(CZtImageFormat(640, 480, p, d));
      std::transform(text.begin(), text.end(), text.begin(), ::toupper);
      text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
      EXPECT_EQ(ParseImageFormat(text), CZtImageFormat(640, 480, p, d)) << text;
    }
  }
  for (const char* bad :
       {"640x480", "640x480, RGB", "640x480, RGB, UByte, x", "0x480, RGB, UByte",
        "640x-1, RGB, UByte", "640*480, RGB, UByte", "x480, RGB, UByte", "3000000000x1, RGB, UByte",
        "2x2, RGB, Half", "1x1, None, UByte", "1x1, RGB, Void"})
    EXPECT_THROW(ParseImageFormat(bad), CIoError) << bad;
}

TEST(ZtAtomicFile, ReplacingKeepsModeAndLinksOfTheOldName) {
  const std::string longest(255, 'n');  // a name as long as the system allows
  // What the directory holds, the name written, then name=contents after and the entries.
  const std::string cases[][4] = {
      {"printf old >f && chmod 600 f", "f", "f=new", "f"},
      {"printf old >f && ln -s f l", "l", "f=new l=new", "f l"},
      {"mkdir sub && printf old >sub/f && ln -s sub/f l1 && ln -s l1 l2", "l2", "sub/f=new l2=new",
       "l1 l2 sub"},
      {"ln -s target l", "l", "target=new", "l target"},       // a dangling link gets its file
      {"printf old >f && ln f h", "f", "f=new h=old", "f h"},  // the other hard link keeps "old"
      {"true", longest, longest + "=new", longest},
  };
  for (const auto& [setup, written, contents, entries] : cases) {
    SCOPED_TRACE(setup);
    CScratchDir dir;
    ASSERT_EQ(std::system(("cd '" + dir / "" + "' && " + setup).c_str()), 0);
    const auto before = fs::status(dir / written).permissions();
    CAtomicFile file(dir / written);
    std::fputs("new", file.File());
    file.Commit();
    std::istringstream after(contents);
    for (std::string pair; after >> pair;) {
      const std::string name = pair.substr(0, pair.find('='));
      EXPECT_EQ(name + "=" + ReadFile(dir / name), pair);
    }
    EXPECT_EQ(dir.Entries(), entries);
    EXPECT_TRUE(before == fs::perms::unknown || fs::status(dir / written).permissions() == before);
    EXPECT_EQ(fs::is_symlink(dir / written), written[0] == 'l');
  }
}

TEST(ZtAtomicFile, AFailedWriteLeavesNoFileKeepsWhatStoodThereAndRestoresSignals) {
  CScratchDir dir;
  const std::string path = dir / "kept.pgm";
  WriteFile(path, "old contents");
  // A writer that cannot hold the image fails before opening anything.
  const CZtImage colour = Scrambled({2, 2, EPixelType::RGB, EDataType::UByte});
  EXPECT_EQ(MessageOf<CIoError>([&] { WriteImageFile(path, colour); }),
            path + ": PGM files hold Lum with UByte or UShort samples, not RGB, UByte");
  // While a file is open an ignored signal stays ignored; after it, the old actions are back.
  const auto handler = [](int number) {
    struct sigaction action {};
    return sigaction(number, nullptr, &action) == 0 ? action.sa_handler : nullptr;
  };
  const auto saved = signal(SIGHUP, SIG_IGN);
  {  // A file abandoned halfway, as when an exception passes during writing.
    CAtomicFile file(path);
    std::fputs("partial", file.File());
    EXPECT_EQ(file.TemporaryPath().rfind(dir / ".kept.pgm.", 0), 0u);
    EXPECT_EQ(handler(SIGHUP), SIG_IGN);
  }
  EXPECT_EQ(handler(SIGHUP), SIG_IGN);
  signal(SIGHUP, saved);
  EXPECT_EQ(handler(SIGTERM), SIG_DFL);
  EXPECT_EQ(ReadFile(path), "old contents");
  EXPECT_EQ(dir.Entries(), "kept.pgm");
  const CZtImage grey = Scrambled({2, 2, EPixelType::Lum, EDataType::UByte});
  EXPECT_EQ(MessageOf<CIoError>([&] { WriteImageFile(dir / "missing/out.pgm", grey); }),
            "cannot write '" + dir / "missing/out.pgm" + "': cannot create a file in directory '" +
                dir / "missing': No such file or directory");
  // A committed file replaces the old one; a new one gets the usual mode.
  const mode_t mask = umask(022);
  WriteImageFile(path, grey);
  WriteImageFile(dir / "new.pgm", grey);
  umask(mask);
  EXPECT_EQ(ReadFile(path), "P5\n2 2\n255\n" + Bytes(grey));
  EXPECT_EQ(fs::status(dir / "new.pgm").permissions(), fs::perms(0644));
  EXPECT_EQ(dir.Entries(), "kept.pgm new.pgm");
}

}  // namespace
