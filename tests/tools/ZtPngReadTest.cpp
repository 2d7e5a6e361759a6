// PNG files made here with libpng directly, with the features real files
// have and zt-convert's writer never produces: palettes with transparency,
// bit depths below 8, transparent grey, Adam7 interlacing, 16-bit samples in
// the file's big-endian order.

#include <gtest/gtest.h>
#include <png.h>

#include <csetjmp>

#include "ZtImageIo.h"
#include "ZtToolTestSupport.h"

using namespace ZtTools;
using ZtTest::CBytes;
using ZtTest::CScratchDir;

namespace {

struct SRealPng {
  const char* Name;
  png_uint_32 Width;
  png_uint_32 Height;
  int BitDepth;
  int ColorType;
  int Interlace;
  CBytes Rows;  // packed rows, as the file stores them
  std::vector<png_color> Palette;
  std::vector<png_byte> PaletteAlpha;
  int TransparentGrey;  // -1 for none
  CZtImageFormat Expected;
  std::vector<unsigned> Samples;
};

// Writes with libpng only; nothing with a destructor lives in this frame
// after setjmp, as libpng's longjmp demands.
bool WriteWithLibpng(std::FILE* file, const SRealPng& c, png_bytepp rows) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  if (setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    return false;
  }
  png_init_io(png, file);
  png_set_IHDR(png, info, c.Width, c.Height, c.BitDepth, c.ColorType, c.Interlace,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (!c.Palette.empty())
    png_set_PLTE(png, info, c.Palette.data(), static_cast<int>(c.Palette.size()));
  if (!c.PaletteAlpha.empty()) {
    png_set_tRNS(png, info, c.PaletteAlpha.data(), static_cast<int>(c.PaletteAlpha.size()),
                 nullptr);
  }
  if (c.TransparentGrey >= 0) {
    png_color_16 grey{};
    grey.gray = static_cast<png_uint_16>(c.TransparentGrey);
    png_set_tRNS(png, info, nullptr, 0, &grey);
  }
  png_write_info(png, info);
  png_set_interlace_handling(png);
  png_write_image(png, rows);
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return true;
}

void Write(const std::string& path, const SRealPng& c) {
  const std::size_t rowBytes = c.Rows.size() / c.Height;
  std::vector<png_bytep> rows(c.Height);
  CBytes data = c.Rows;
  for (png_uint_32 y = 0; y < c.Height; ++y) rows[y] = data.data() + y * rowBytes;
  std::FILE* file = std::fopen(path.c_str(), "wb");
  ASSERT_NE(file, nullptr);
  const bool written = WriteWithLibpng(file, c, rows.data());
  std::fclose(file);
  ASSERT_TRUE(written);
}

TEST(ZtPngRead, RealPngFilesReadAsTheLayoutsTheyExpandTo) {
  const SRealPng cases[] = {
      {"palette-trns",
       2,
       2,
       2,
       PNG_COLOR_TYPE_PALETTE,
       PNG_INTERLACE_NONE,
       {0x10, 0xB0},  // indices 0 1 / 2 3, two bits each
       {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 255}},
       {255, 128, 0},  // entry 3 has no alpha: opaque
       -1,
       {2, 2, EPixelType::RGBA, EDataType::UByte},
       {255, 0, 0, 255, 0, 255, 0, 128, 0, 0, 255, 0, 255, 255, 255, 255}},
      {"grey-1bit",
       3,
       1,
       1,
       PNG_COLOR_TYPE_GRAY,
       PNG_INTERLACE_NONE,
       {0xA0},
       {},
       {},
       -1,
       {3, 1, EPixelType::Lum, EDataType::UByte},
       {255, 0, 255}},
      {"grey-16bit",
       2,
       1,
       16,
       PNG_COLOR_TYPE_GRAY,
       PNG_INTERLACE_NONE,
       {0x12, 0x34, 0xFE, 0xDC},
       {},
       {},
       -1,
       {2, 1, EPixelType::Lum, EDataType::UShort},
       {0x1234, 0xFEDC}},
      {"grey-trns",
       2,
       1,
       8,
       PNG_COLOR_TYPE_GRAY,
       PNG_INTERLACE_NONE,
       {7, 9},
       {},
       {},
       7,
       {2, 1, EPixelType::LumA, EDataType::UByte},
       {7, 0, 9, 255}},
      {"rgba-16bit",
       1,
       1,
       16,
       PNG_COLOR_TYPE_RGB_ALPHA,
       PNG_INTERLACE_NONE,
       {0x00, 0x01, 0x80, 0x00, 0xFF, 0xFF, 0x12, 0x34},
       {},
       {},
       -1,
       {1, 1, EPixelType::RGBA, EDataType::UShort},
       {1, 0x8000, 0xFFFF, 0x1234}},
  };
  CScratchDir dir;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Name);
    const std::string path = dir / (std::string(c.Name) + ".png");
    Write(path, c);
    CZtImage image;
    ReadImageFile(path, image);
    ASSERT_EQ(image.GetFormat(), c.Expected);
    for (std::size_t i = 0; i < c.Samples.size(); ++i) {
      const unsigned value = c.Expected.DataType == EDataType::UShort
                                 ? static_cast<const unsigned short*>(image.GetDataPtr())[i]
                                 : static_cast<const unsigned char*>(image.GetDataPtr())[i];
      EXPECT_EQ(value, c.Samples[i]) << "sample " << i;
    }
  }
}

// Adam7 stores a picture in seven passes; any pass read to the wrong place
// shows on a picture where every sample differs.
TEST(ZtPngRead, InterlacedFilesReadPixelForPixel) {
  for (const png_uint_32 size : {1u, 5u, 9u, 17u}) {
    SRealPng c{"adam7", size, size + 2, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_ADAM7, {}, {},
               {},      -1,   {},       {}};
    for (png_uint_32 i = 0; i < 3 * size * (size + 2); ++i)
      c.Rows.push_back(static_cast<png_byte>(i * 7 + 3));
    CScratchDir dir;
    Write(dir / "adam7.png", c);
    CZtImage image;
    ReadImageFile(dir / "adam7.png", image);
    ASSERT_EQ(image.GetFormat(), CZtImageFormat(static_cast<int>(size), static_cast<int>(size + 2),
                                                EPixelType::RGB, EDataType::UByte));
    EXPECT_EQ(CBytes(static_cast<const unsigned char*>(image.GetDataPtr()),
                     static_cast<const unsigned char*>(image.GetDataPtr()) + image.GetByteCount()),
              c.Rows)
        << size;
  }
}

}  // namespace
