// The image files of zt-convert: every writer against its reader, the exact
// bytes of each format, hand-made files with the variants real files have,
// and the failures, which must name the file and leave nothing behind.

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>

#include "ZtAtomicFile.h"
#include "ZtImageIo.h"
#include "ZtToolTestSupport.h"

using namespace ZtTools;
using ZtTest::CBytes;
using ZtTest::Concat;
using ZtTest::CScratchDir;

namespace {

struct SFormatCase {
  EFileFormat Format;
  const char* Extension;
};

constexpr SFormatCase kFormats[] = {{EFileFormat::Png, "png"}, {EFileFormat::Pgm, "pgm"},
                                    {EFileFormat::Ppm, "ppm"}, {EFileFormat::Pam, "pam"},
                                    {EFileFormat::Pfm, "pfm"}, {EFileFormat::Raw, "raw"}};

std::string Name(EPixelType::ID p, EDataType::ID d) {
  return std::string(CZtImageFormat::PixelType2String(p).ToCString()) + "_" +
         CZtImageFormat::DataType2String(d).ToCString();
}

// Sample `index` of an image as raw bytes.
CBytes SampleBytes(const CZtImage& image, std::size_t index, std::size_t size) {
  const auto* bytes = static_cast<const unsigned char*>(image.GetDataPtr()) + index * size;
  return CBytes(bytes, bytes + size);
}

TEST(ZtImageIo, EveryWriterRoundTripsThroughItsReaderForEveryFormatItHolds) {
  CScratchDir dir;
  int cases = 0;
  for (const auto& f : kFormats) {
    for (EPixelType::ID p : kAllPixelTypes) {
      for (EDataType::ID d : kAllDataTypes) {
        if (!CanHold(f.Format, p, d)) continue;
        ++cases;
        SCOPED_TRACE(std::string(f.Extension) + " " + Name(p, d));
        // Odd sizes, so that a row order or row length mistake shows.
        const CZtImage written = ZtTest::Scrambled(7, 5, p, d);
        const std::string path = dir / (Name(p, d) + "." + f.Extension);
        WriteImageFile(path, written);

        CZtImage read;
        ReadImageFile(path, read, &written.GetFormat());
        // PNG has no BGR order: libpng swaps on writing, so BGR comes back as RGB.
        const bool swapped =
            f.Format == EFileFormat::Png && (p == EPixelType::BGR || p == EPixelType::BGRA);
        const EPixelType::ID expectedLayout = !swapped               ? p
                                              : p == EPixelType::BGR ? EPixelType::RGB
                                                                     : EPixelType::RGBA;
        ASSERT_EQ(read.GetFormat(), CZtImageFormat(7, 5, expectedLayout, d));
        const std::size_t sampleSize = static_cast<std::size_t>(CZtImageFormat::GetDataTypeSize(d));
        const std::size_t samples = read.GetByteCount() / sampleSize;
        const std::size_t perPixel =
            static_cast<std::size_t>(CZtImageFormat::GetPixelTypeComponentCount(p));
        for (std::size_t i = 0; i < samples; ++i) {
          std::size_t from = i;
          if (swapped && i % perPixel != 1 && i % perPixel != 3)
            from = i - i % perPixel + 2 - i % perPixel;
          ASSERT_EQ(SampleBytes(read, i, sampleSize), SampleBytes(written, from, sampleSize))
              << "sample " << i;
        }
      }
    }
  }
  // PNG 6 layouts, PGM 1, PPM 1, PAM 4, each with two types; PFM 2; raw all 80.
  EXPECT_EQ(cases, 12 + 2 + 2 + 8 + 2 + 80);
  EXPECT_EQ(dir.Entries().size(), static_cast<std::size_t>(cases))
      << "a temporary file was left behind";
}

// The exact bytes the netpbm writers produce, against the formats as other
// programs read them: big-endian integers, PFM little-endian and bottom-up.
TEST(ZtImageIo, NetpbmWritersProduceTheExactBytesOfEachFormat) {
  const float one = 1.0f, two = 2.0f;
  CBytes oneLe(4), twoLe(4);
  std::memcpy(oneLe.data(), &one, 4);
  std::memcpy(twoLe.data(), &two, 4);
  CBytes pfmTail = twoLe;  // the bottom row first
  pfmTail.insert(pfmTail.end(), oneLe.begin(), oneLe.end());

  const unsigned char grey[] = {1, 2, 3, 4, 5, 6};
  const unsigned short deep[] = {0x0102, 0xA0B0};
  const unsigned char colour[] = {10, 20, 30};
  const unsigned char greyAlpha[] = {7, 200};
  const float column[] = {1.0f, 2.0f};  // row 0, row 1
  struct SCase {
    const char* File;
    CZtImageFormat Format;
    const void* Pixels;
    CBytes Expected;
  } cases[] = {
      {"a.pgm",
       {3, 2, EPixelType::Lum, EDataType::UByte},
       grey,
       Concat("P5\n3 2\n255\n", {1, 2, 3, 4, 5, 6})},
      {"b.pgm",
       {2, 1, EPixelType::Lum, EDataType::UShort},
       deep,
       Concat("P5\n2 1\n65535\n", {1, 2, 0xA0, 0xB0})},
      {"c.ppm",
       {1, 1, EPixelType::RGB, EDataType::UByte},
       colour,
       Concat("P6\n1 1\n255\n", {10, 20, 30})},
      {"d.pam",
       {1, 1, EPixelType::LumA, EDataType::UByte},
       greyAlpha,
       Concat("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 2\nMAXVAL 255\nTUPLTYPE GRAYSCALE_ALPHA\nENDHDR\n",
              {7, 200})},
      {"e.pfm",
       {1, 2, EPixelType::Lum, EDataType::Float},
       column,
       Concat("Pf\n1 2\n-1.0\n", pfmTail)},
      {"f.raw",
       {2, 1, EPixelType::Lum, EDataType::UShort},
       deep,
       CBytes(reinterpret_cast<const unsigned char*>(deep),
              reinterpret_cast<const unsigned char*>(deep) + 4)},
  };
  CScratchDir dir;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.File);
    CZtImage image;
    ASSERT_TRUE(image.Create(c.Format.Width, c.Format.Height, c.Format.PixelType, c.Format.DataType,
                             c.Pixels));
    WriteImageFile(dir / c.File, image);
    EXPECT_EQ(ZtTest::ReadBytes(dir / c.File), c.Expected);
  }
}

// Files as other programs write them: comments, odd maxvals, the other PFM
// byte order, a netpbm member under another member's extension.
TEST(ZtImageIo, NetpbmReadersAcceptTheVariantsOfTheFamily) {
  const float half = 0.5f, quarter = 0.25f;
  CBytes pfmBigEndian;
  for (float value : {quarter, half}) {  // file rows bottom-up: row 1, then row 0
    unsigned char raw[4];
    std::memcpy(raw, &value, 4);
    pfmBigEndian.insert(pfmBigEndian.end(), {raw[3], raw[2], raw[1], raw[0]});
  }
  struct SCase {
    const char* File;
    CBytes Content;
    CZtImageFormat Expected;
    std::vector<double> Samples;
  } cases[] = {
      {"comments.pgm",
       Concat("P5 # made by hand\n# a whole comment line\n2 1\n255\n", {0, 255}),
       {2, 1, EPixelType::Lum, EDataType::UByte},
       {0, 255}},
      // maxval 100: samples are rescaled to 255, rounding to nearest.
      {"maxval100.pgm",
       Concat("P5\n3 1\n100\n", {0, 50, 100}),
       {3, 1, EPixelType::Lum, EDataType::UByte},
       {0, 128, 255}},
      // maxval 1023 is 16-bit in the file and rescaled to 65535.
      {"maxval1023.pgm",
       Concat("P5\n2 1\n1023\n", {0x03, 0xFF, 0x02, 0x00}),
       {2, 1, EPixelType::Lum, EDataType::UShort},
       {65535, 32800}},
      {"big.ppm",
       Concat("P6\n1 1\n65535\n", {0x12, 0x34, 0, 1, 0xFF, 0xFE}),
       {1, 1, EPixelType::RGB, EDataType::UShort},
       {0x1234, 1, 0xFFFE}},
      {"colour.pgm",
       Concat("P6\n1 1\n255\n", {1, 2, 3}),
       {1, 1, EPixelType::RGB, EDataType::UByte},
       {1, 2, 3}},
      {"bw.pam",
       Concat("P7\nWIDTH 2\nHEIGHT 1\nDEPTH 1\nMAXVAL 1\nTUPLTYPE BLACKANDWHITE\nENDHDR\n", {1, 0}),
       {2, 1, EPixelType::Lum, EDataType::UByte},
       {255, 0}},
      {"rgba.pam",
       Concat("P7\n# comment\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n",
              {9, 8, 7, 6}),
       {1, 1, EPixelType::RGBA, EDataType::UByte},
       {9, 8, 7, 6}},
      {"notuple.pam",
       Concat("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 2\nMAXVAL 255\nENDHDR\n", {5, 6}),
       {1, 1, EPixelType::LumA, EDataType::UByte},
       {5, 6}},
      {"bigendian.pfm",
       Concat("Pf\n1 2\n1.0\n", pfmBigEndian),
       {1, 2, EPixelType::Lum, EDataType::Float},
       {0.5, 0.25}},
      {"trailing.pgm",
       Concat("P5\n1 1\n255\n", {42, 1, 2, 3}),
       {1, 1, EPixelType::Lum, EDataType::UByte},
       {42}},
      // The plain members, and the bitmaps: 1 is black and reads as 0.
      {"plain.pgm",
       Concat("P2 # comment\n3 1\n100\n0\t50\n\n100 "),
       {3, 1, EPixelType::Lum, EDataType::UByte},
       {0, 128, 255}},
      {"plain.ppm",
       Concat("P3\n1 1\n65535\n65535 0 00017"),
       {1, 1, EPixelType::RGB, EDataType::UShort},
       {65535, 0, 17}},
      {"plain.pbm",
       Concat("P1\n# c\n3 2\n1 0 1\n010"),
       {3, 2, EPixelType::Lum, EDataType::UByte},
       {0, 255, 0, 255, 0, 255}},
      // Rows of a packed bitmap start on a byte; the padding bits are ignored.
      {"packed.pbm",
       Concat("P4\n9 2\n", {0x80, 0x7F, 0x00, 0xFF}),
       {9, 2, EPixelType::Lum, EDataType::UByte},
       {0, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 0}},
      // Content decides over the extension.
      {"named.png", Concat("P5\n1 1\n255\n", {7}), {1, 1, EPixelType::Lum, EDataType::UByte}, {7}},
  };
  CScratchDir dir;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.File);
    ZtTest::WriteBytes(dir / c.File, c.Content);
    CZtImage image;
    ReadImageFile(dir / c.File, image);
    ASSERT_EQ(image.GetFormat(), c.Expected);
    for (std::size_t i = 0; i < c.Samples.size(); ++i) {
      double value = 0;
      switch (c.Expected.DataType) {
        case EDataType::UByte:
          value = static_cast<const unsigned char*>(image.GetDataPtr())[i];
          break;
        case EDataType::UShort:
          value = static_cast<const unsigned short*>(image.GetDataPtr())[i];
          break;
        default: value = static_cast<const float*>(image.GetDataPtr())[i]; break;
      }
      EXPECT_EQ(value, c.Samples[i]) << "sample " << i;
    }
  }
}

// Each broken file fails with a message that starts with the file's name and
// says what is wrong.
// A PNG of one IDAT chunk of ten deflated bytes that declares a grey image
// of width x height.
CBytes DeclaredPng(unsigned width, unsigned height) {
  CBytes png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  const auto chunk = [&](const char* type, CBytes data) {
    const auto be32 = [&](unsigned long value) {
      for (int shift = 24; shift >= 0; shift -= 8)
        png.push_back(static_cast<unsigned char>(value >> shift));
    };
    be32(data.size());
    CBytes typed(type, type + 4);
    typed.insert(typed.end(), data.begin(), data.end());
    png.insert(png.end(), typed.begin(), typed.end());
    be32(crc32(0, typed.data(), static_cast<unsigned>(typed.size())));
  };
  chunk("IHDR", {static_cast<unsigned char>(width >> 24), static_cast<unsigned char>(width >> 16),
                 static_cast<unsigned char>(width >> 8), static_cast<unsigned char>(width),
                 static_cast<unsigned char>(height >> 24), static_cast<unsigned char>(height >> 16),
                 static_cast<unsigned char>(height >> 8), static_cast<unsigned char>(height), 8, 0,
                 0, 0, 0});
  chunk("IDAT", {0x78, 0x9C, 0x63, 0x60, 0xA0, 0x3D, 0x00, 0x00, 0x00, 0x0B});
  chunk("IEND", {});
  return png;
}

TEST(ZtImageIo, BrokenFilesFailWithTheirNameAndReason) {
  CScratchDir dir;
  // A valid PNG to cut and damage.
  const CZtImage small = ZtTest::Scrambled(4, 3, EPixelType::RGB, EDataType::UByte);
  WriteImageFile(dir / "good.png", small);
  const CBytes png = ZtTest::ReadBytes(dir / "good.png");
  ASSERT_GT(png.size(), 40u);
  CBytes badCrc = png;
  badCrc[29] ^= 0xFF;  // the CRC of the IHDR chunk

  struct SCase {
    const char* File;
    CBytes Content;
    const char* Reason;
  } cases[] = {
      {"short.pgm", Concat("P5\n2 2\n255\n", {1, 2, 3}),
       "file is truncated: 3 of 4 bytes of pixels"},
      {"header.pgm", Concat("P5\n2 2"), "truncated in its header"},
      {"empty.ppm", {}, "not a PPM file (bad magic)"},
      {"magic.pgm", Concat("GIF89a"), "not a PGM file (bad magic)"},
      {"unnamed", Concat("GIF89a"), "not a known image format"},
      {"magic.pam", Concat("P8\n1 1\n255\n"), "not a PAM file (bad magic)"},
      {"plain.pgm", Concat("P2\n2 1\n255\n7 x\n"), "bad character in plain pixels"},
      {"plainmax.ppm", Concat("P3\n1 1\n15\n1 2 16\n"), "sample 16 above maxval 15"},
      {"plainshort.ppm", Concat("P3\n2 1\n255\n1 2 3 4 5"), "truncated: 9 of 11 bytes"},
      {"plaincut.pgm", Concat("P2\n2 2\n255\n1 2 3         "), "truncated in its pixels"},
      {"bitmap.pbm", Concat("P1\n2 2\n1 0 2 1"), "bad character in plain bitmap"},
      {"packed.pbm", Concat("P4\n9 2\n", {0, 0, 0}), "truncated: 3 of 4 bytes"},
      {"zero.pgm", Concat("P5\n0 2\n255\n"), "width 0 out of range"},
      {"sign.pgm", Concat("P5\n-3 2\n255\n"), "bad width '-3'"},
      {"maxval.pgm", Concat("P5\n1 1\n70000\n", {0, 0}), "maxval 70000 out of range"},
      {"above.pgm", Concat("P5\n2 1\n100\n", {100, 101}), "sample 101 above maxval 100"},
      {"huge.pgm", Concat("P5\n70000 70000\n255\n"), "is larger than 268435456 pixels"},
      // Within the pixel limit, but the file cannot hold what it declares.
      {"declared.pgm", Concat("P5\n16384 16384\n65535\n", {0, 0}),
       "truncated: 2 of 536870912 bytes"},
      {"declared.png", DeclaredPng(16000, 16000), "declares 16000x16000 pixels, more than its"},
      {"cmyk.pam",
       Concat("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE CMYK\nENDHDR\n", {1, 2, 3, 4}),
       "unsupported PAM tuple type 'CMYK'"},
      {"depth.pam",
       Concat("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nTUPLTYPE RGB\nENDHDR\n", {1}),
       "does not have depth 1"},
      {"nodepth.pam", Concat("P7\nWIDTH 1\nHEIGHT 1\nMAXVAL 255\nENDHDR\n", {1}),
       "lacks WIDTH, HEIGHT, DEPTH or MAXVAL"},
      {"scale.pfm", Concat("Pf\n1 1\n0.0\n", {0, 0, 0, 0}), "bad PFM scale '0.0'"},
      {"short.pfm", Concat("PF\n1 1\n-1.0\n", {0, 0, 0, 0}), "file is truncated: 4 of 12 bytes"},
      {"cut.png", CBytes(png.begin(), png.begin() + 40), "truncated"},
      {"crc.png", badCrc, "CRC error"},
      {"netpbm.png", Concat("Q5\n1 1\n255\n", {1}), "not a PNG file (bad magic)"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.File);
    const std::string path = dir / c.File;
    ZtTest::WriteBytes(path, c.Content);
    CZtImage image;
    try {
      ReadImageFile(path, image);
      ADD_FAILURE() << "no failure";
    } catch (const CIoError& e) {
      const std::string message = e.what();
      EXPECT_EQ(message.rfind(path + ": ", 0), 0u) << message;
      EXPECT_NE(message.find(c.Reason), std::string::npos) << message;
      EXPECT_EQ(message.find('\n'), std::string::npos) << message;
    }
  }
}

TEST(ZtImageIo, FormatsAreRecognisedByTheirFirstBytes) {
  const struct {
    std::string Start;
    bool Known;
    EFileFormat Format;
  } cases[] = {
      {"\x89PNG\r\n\x1a\n", true, EFileFormat::Png},
      {"\x89PNG\r\n\x1a", false, EFileFormat::Png},
      {"P1\n", true, EFileFormat::Pbm},
      {"P4 ", true, EFileFormat::Pbm},
      {"P2\t", true, EFileFormat::Pgm},
      {"P5\r", true, EFileFormat::Pgm},
      {"P3\n", true, EFileFormat::Ppm},
      {"P6\n", true, EFileFormat::Ppm},
      {"P7\n", true, EFileFormat::Pam},
      {"Pf\n", true, EFileFormat::Pfm},
      {"PF\n", true, EFileFormat::Pfm},
      {"P5", false, EFileFormat::Pgm},
      {"P55", false, EFileFormat::Pgm},
      {"P8\n", false, EFileFormat::Pgm},
      {"p5\n", false, EFileFormat::Pgm},
      {"", false, EFileFormat::Pgm},
  };
  for (const auto& c : cases) {
    EFileFormat format = EFileFormat::Raw;
    const auto* bytes = reinterpret_cast<const unsigned char*>(c.Start.data());
    EXPECT_EQ(DetectFileFormat(bytes, c.Start.size(), format), c.Known) << c.Start;
    if (c.Known) {
      EXPECT_EQ(format, c.Format) << c.Start;
    }
  }
}

TEST(ZtImageIo, RawFilesNeedTheirFormatAndExactlyItsSize) {
  CScratchDir dir;
  const std::string path = dir / "bayer.raw";
  ZtTest::WriteBytes(path, CBytes(2 * 3 * 2, 7));
  const CZtImageFormat right(3, 2, EPixelType::BayerGR, EDataType::UShort);
  const CZtImageFormat wrong(3, 3, EPixelType::BayerGR, EDataType::UShort);

  CZtImage image;
  EXPECT_THROW(ReadImageFile(path, image), CIoError);
  try {
    ReadImageFile(path, image, &wrong);
    ADD_FAILURE();
  } catch (const CIoError& e) {
    EXPECT_NE(std::string(e.what()).find("holds 12 bytes, but 3x3, BayerGR, UShort takes 18"),
              std::string::npos)
        << e.what();
  }
  ReadImageFile(path, image, &right);
  EXPECT_EQ(image.GetFormat(), right);
  EXPECT_EQ(static_cast<const unsigned short*>(image.GetDataPtr())[5], 0x0707);
}

TEST(ZtImageIo, FileFormatsFollowTheExtensionOnly) {
  const struct {
    const char* Path;
    EFileFormat Format;
  } known[] = {{"a.png", EFileFormat::Png}, {"dir.x/A.PGM", EFileFormat::Pgm},
               {"b.Ppm", EFileFormat::Ppm}, {"c.pam", EFileFormat::Pam},
               {"d.pfm", EFileFormat::Pfm}, {"e.tar.raw", EFileFormat::Raw}};
  for (const auto& k : known) EXPECT_EQ(FileFormatOf(k.Path), k.Format) << k.Path;
  for (const char* unknown : {"a.bmp", "png", "dir.png/file", "a.png.tmp", "", "a."}) {
    EXPECT_THROW(FileFormatOf(unknown), CIoError) << unknown;
  }
}

TEST(ZtImageIo, ChooseTargetKeepsWhatTheFileHoldsAndOtherwiseTheNearest) {
  using P = EPixelType;
  using D = EDataType;
  const struct {
    EFileFormat Format;
    P::ID SourceLayout;
    D::ID SourceType;
    P::ID Layout;
    D::ID Type;
  } cases[] = {
      {EFileFormat::Png, P::BGRA, D::UShort, P::BGRA, D::UShort},  // held as it is
      {EFileFormat::Png, P::BayerRG, D::UByte, P::Lum, D::UByte},  // a mosaic is one sample
      {EFileFormat::Png, P::RGBA, D::Float, P::RGBA, D::UShort},   // wide samples keep 16 bits
      {EFileFormat::Png, P::LumA, D::Byte, P::LumA, D::UByte},     // 8-bit stays 8-bit
      {EFileFormat::Pgm, P::RGBA, D::Int, P::Lum, D::UShort},
      {EFileFormat::Ppm, P::LumA, D::UByte, P::RGB, D::UByte},
      {EFileFormat::Pam, P::BGRA, D::Double, P::RGBA, D::UShort},
      {EFileFormat::Pam, P::BGR, D::Short, P::RGB, D::UShort},
      {EFileFormat::Pfm, P::RGBA, D::UByte, P::RGB, D::Float},
      {EFileFormat::Pfm, P::LumA, D::Double, P::Lum, D::Float},
      {EFileFormat::Raw, P::BayerGB, D::Int, P::BayerGB, D::Int},
  };
  for (const auto& c : cases) {
    P::ID layout{};
    D::ID type{};
    ChooseTarget(c.Format, c.SourceLayout, c.SourceType, layout, type);
    EXPECT_EQ(layout, c.Layout) << FileFormatName(c.Format) << " from "
                                << Name(c.SourceLayout, c.SourceType);
    EXPECT_EQ(type, c.Type) << FileFormatName(c.Format) << " from "
                            << Name(c.SourceLayout, c.SourceType);
    EXPECT_TRUE(CanHold(c.Format, layout, type));
  }
}

TEST(ZtImageIo, NamesAndFormatTextsParseWithoutRegardToCase) {
  for (EPixelType::ID p : kAllPixelTypes) {
    const std::string name = CZtImageFormat::PixelType2String(p).ToCString();
    EXPECT_EQ(ParsePixelType(name), p);
    std::string upper = name;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return std::toupper(c); });
    EXPECT_EQ(ParsePixelType(upper), p);
  }
  for (EDataType::ID d : kAllDataTypes) {
    EXPECT_EQ(ParseDataType(CZtImageFormat::DataType2String(d).ToCString()), d);
  }
  EXPECT_THROW(ParsePixelType("None"), CIoError);
  EXPECT_THROW(ParseDataType("Void"), CIoError);
  EXPECT_THROW(ParseDataType("uint8"), CIoError);

  EXPECT_EQ(ParseImageFormat("640x480, BayerGR, UShort"),
            CZtImageFormat(640, 480, EPixelType::BayerGR, EDataType::UShort));
  EXPECT_EQ(ParseImageFormat("3X2,rgba,float"),
            CZtImageFormat(3, 2, EPixelType::RGBA, EDataType::Float));
  // The library's own text reads back.
  const CZtImageFormat format(17, 9, EPixelType::LumA, EDataType::Double);
  EXPECT_EQ(ParseImageFormat(FormatText(format)), format);
  for (const char* bad : {"640x480", "640x480, RGB", "640x480, RGB, UByte, x", "0x480, RGB, UByte",
                          "640x-1, RGB, UByte", "640*480, RGB, UByte", "x480, RGB, UByte",
                          "3000000000x1, RGB, UByte", "2x2, RGB, Half"}) {
    EXPECT_THROW(ParseImageFormat(bad), CIoError) << bad;
  }
}

TEST(ZtImageIo, AFailedWriteLeavesNoFileAndKeepsWhatStoodThere) {
  CScratchDir dir;
  const std::string path = dir / "kept.pgm";
  ZtTest::WriteBytes(path, Concat("old contents"));

  // A writer that cannot hold the image fails before opening anything.
  const CZtImage colour = ZtTest::Scrambled(2, 2, EPixelType::RGB, EDataType::UByte);
  try {
    WriteImageFile(path, colour);
    ADD_FAILURE();
  } catch (const CIoError& e) {
    EXPECT_EQ(std::string(e.what()),
              path + ": PGM files hold Lum with UByte or UShort samples, not RGB, UByte");
  }
  // A file abandoned halfway, as when an exception passes during writing.
  {
    CAtomicFile file(path);
    std::fputs("partial", file.File());
    EXPECT_EQ(file.TemporaryPath().rfind(dir / ".kept.pgm.", 0), 0u);
  }
  EXPECT_EQ(ZtTest::ReadBytes(path), Concat("old contents"));
  EXPECT_EQ(dir.Entries(), std::vector<std::string>{"kept.pgm"});

  // No directory to write into.
  EXPECT_THROW(WriteImageFile(dir / "missing/out.pgm",
                              ZtTest::Scrambled(2, 2, EPixelType::Lum, EDataType::UByte)),
               CIoError);
  // A committed file replaces the old one and gets ordinary permissions.
  WriteImageFile(path, ZtTest::Scrambled(2, 2, EPixelType::Lum, EDataType::UByte));
  EXPECT_EQ(ZtTest::ReadBytes(path).size(), std::string("P5\n2 2\n255\n").size() + 4);
  EXPECT_EQ(dir.Entries(), std::vector<std::string>{"kept.pgm"});
}

}  // namespace
