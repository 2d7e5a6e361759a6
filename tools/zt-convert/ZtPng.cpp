// PNG through libpng: greyscale, grey with alpha, RGB and RGBA at 8 and 16
// bits. Palettes, bit depths below 8 and tRNS transparency are expanded on
// reading, so every PNG reads as Lum, LumA, RGB or RGBA with UByte or UShort
// samples. BGR and BGRA are written with libpng's own byte swap.
//
// libpng reports errors by longjmp. Each function that calls setjmp below
// owns no object with a destructor and changes none of its own variables
// after the setjmp, so the jump skips nothing C++ must run; the objects that
// need cleaning up live in its caller.

#include <png.h>

#include <csetjmp>
#include <cstdio>
#include <string>

#include "ZtImageCodecs.h"

namespace ZtTools {
namespace Detail {
namespace {

// libpng's error and I/O pointer.
struct SPngState {
  char Message[256] = "libpng failed";
  const unsigned char* Data = nullptr;
  std::size_t Size = 0;
  std::size_t Position = 0;
};

void OnPngError(png_structp png, png_const_charp message) {
  auto* state = static_cast<SPngState*>(png_get_error_ptr(png));
  std::snprintf(state->Message, sizeof state->Message, "%s", message);
  png_longjmp(png, 1);
}

void OnPngWarning(png_structp, png_const_charp) {}

void ReadFromMemory(png_structp png, png_bytep out, png_size_t length) {
  auto* state = static_cast<SPngState*>(png_get_io_ptr(png));
  if (state->Size - state->Position < length) png_error(png, "file is truncated");
  std::memcpy(out, state->Data + state->Position, length);
  state->Position += length;
}

struct SPngHeader {
  png_uint_32 Width = 0;
  png_uint_32 Height = 0;
  int Channels = 0;
  int BitDepth = 0;
  // As stored, before expansion.
  int FileChannels = 0;
  int FileBitDepth = 0;
  int ColorType = 0;
  int Interlace = 0;
  bool Transparency = false;
};

bool ReadPngHeader(png_structp png, png_infop info, SPngHeader* header) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_read_info(png, info);
  header->FileChannels = png_get_channels(png, info);
  header->FileBitDepth = png_get_bit_depth(png, info);
  header->ColorType = png_get_color_type(png, info);
  header->Interlace = png_get_interlace_type(png, info);
  header->Transparency = png_get_valid(png, info, PNG_INFO_tRNS) != 0;
  png_set_expand(png);
  if (IsLittleEndian()) png_set_swap(png);
  png_set_interlace_handling(png);
  png_read_update_info(png, info);
  header->Width = png_get_image_width(png, info);
  header->Height = png_get_image_height(png, info);
  header->Channels = png_get_channels(png, info);
  header->BitDepth = png_get_bit_depth(png, info);
  return true;
}

bool ReadPngRows(png_structp png, png_infop info, png_bytepp rows) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_read_image(png, rows);
  png_read_end(png, info);
  return true;
}

struct SPngLayout {
  png_uint_32 Width;
  png_uint_32 Height;
  int BitDepth;
  int ColorType;
  bool Bgr;
};

bool WritePngRows(png_structp png, png_infop info, const SPngLayout* layout, png_bytepp rows) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_set_IHDR(png, info, layout->Width, layout->Height, layout->BitDepth, layout->ColorType,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  if (layout->Bgr) png_set_bgr(png);
  if (layout->BitDepth == 16 && IsLittleEndian()) png_set_swap(png);
  png_write_image(png, rows);
  png_write_end(png, info);
  return true;
}

// The read or write structures of libpng, released on every path.
class CPngStructs {
public:
  CPngStructs(bool write, SPngState* state) : m_bWrite(write) {
    m_pPng = write ? png_create_write_struct(PNG_LIBPNG_VER_STRING, state, OnPngError, OnPngWarning)
                   : png_create_read_struct(PNG_LIBPNG_VER_STRING, state, OnPngError, OnPngWarning);
    if (m_pPng != nullptr) m_pInfo = png_create_info_struct(m_pPng);
    if (m_pPng == nullptr || m_pInfo == nullptr) {
      Release();
      throw CIoError("libpng could not start");
    }
  }
  ~CPngStructs() { Release(); }
  CPngStructs(const CPngStructs&) = delete;
  CPngStructs& operator=(const CPngStructs&) = delete;

  png_structp Png() const { return m_pPng; }
  png_infop Info() const { return m_pInfo; }

private:
  void Release() {
    if (m_pPng == nullptr) return;
    if (m_bWrite) {
      png_destroy_write_struct(&m_pPng, m_pInfo != nullptr ? &m_pInfo : nullptr);
    } else {
      png_destroy_read_struct(&m_pPng, m_pInfo != nullptr ? &m_pInfo : nullptr, nullptr);
    }
    m_pPng = nullptr;
    m_pInfo = nullptr;
  }

  bool m_bWrite;
  png_structp m_pPng = nullptr;
  png_infop m_pInfo = nullptr;
};

// Row starts of a dense block.
std::vector<png_bytep> RowPointers(const void* pixels, png_uint_32 height, std::size_t rowBytes) {
  std::vector<png_bytep> rows(height);
  // libpng's row type is not const; rows it writes from are copied before any
  // transformation, so the block is never changed through these pointers.
  auto* base = static_cast<png_bytep>(const_cast<void*>(pixels));
  for (png_uint_32 y = 0; y < height; ++y) rows[y] = base + y * rowBytes;
  return rows;
}

// The largest ratio of inflated to deflated bytes deflate can reach.
constexpr unsigned long long kMaxDeflateRatio = 1032;

const char* ColourName(int colorType) {
  switch (colorType) {
    case PNG_COLOR_TYPE_GRAY: return "grey";
    case PNG_COLOR_TYPE_GRAY_ALPHA: return "grey-alpha";
    case PNG_COLOR_TYPE_RGB: return "rgb";
    case PNG_COLOR_TYPE_RGB_ALPHA: return "rgba";
    default: return "palette";
  }
}

}  // namespace

void ReadPng(const CBytes& file, unsigned long long maxPixels, CZtImage& image,
             std::string& details) {
  if (file.size() < 8 || png_sig_cmp(file.data(), 0, 8) != 0) {
    throw CIoError("not a PNG file (bad magic)");
  }
  SPngState state;
  state.Data = file.data();
  state.Size = file.size();
  CPngStructs structs(false, &state);
  png_set_read_fn(structs.Png(), &state, ReadFromMemory);

  SPngHeader header;
  if (!ReadPngHeader(structs.Png(), structs.Info(), &header)) throw CIoError(state.Message);
  static constexpr EPixelType::ID kLayouts[] = {EPixelType::Lum, EPixelType::LumA, EPixelType::RGB,
                                                EPixelType::RGBA};
  if (header.Channels < 1 || header.Channels > 4 ||
      (header.BitDepth != 8 && header.BitDepth != 16)) {
    throw CIoError("unsupported PNG layout");
  }
  CheckPixelCount(header.Width, header.Height, maxPixels);
  // The filtered rows alone, without their filter bytes, must fit in what
  // the file's bytes can inflate to.
  const unsigned long long leastInflated =
      (static_cast<unsigned long long>(header.Width) * static_cast<unsigned>(header.FileChannels) *
           static_cast<unsigned>(header.FileBitDepth) +
       7) /
      8 * header.Height;
  if (leastInflated / kMaxDeflateRatio >= file.size()) {
    throw CIoError("declares " + std::to_string(header.Width) + "x" +
                   std::to_string(header.Height) + " pixels, more than its " +
                   std::to_string(file.size()) + " bytes can hold");
  }
  const EDataType::ID dataType = header.BitDepth == 16 ? EDataType::UShort : EDataType::UByte;
  CreateForFile(image, header.Width, header.Height, kLayouts[header.Channels - 1], dataType);

  std::vector<png_bytep> rows =
      RowPointers(image.GetDataPtr(), header.Height,
                  static_cast<std::size_t>(image.GetBytesPerPixel()) * header.Width);
  if (!ReadPngRows(structs.Png(), structs.Info(), rows.data())) throw CIoError(state.Message);
  details = "bit-depth=" + std::to_string(header.FileBitDepth) +
            " colour=" + ColourName(header.ColorType) +
            " interlace=" + (header.Interlace == PNG_INTERLACE_ADAM7 ? "adam7" : "none") +
            " transparency=" + (header.Transparency ? "trns" : "none");
}

void WritePng(const IImage& image, std::FILE* file) {
  int width = 0, height = 0;
  image.GetSize(width, height);
  EPixelType::ID pixelType{};
  EDataType::ID dataType{};
  image.GetType(pixelType, dataType);

  SPngLayout layout{};
  layout.Width = static_cast<png_uint_32>(width);
  layout.Height = static_cast<png_uint_32>(height);
  layout.BitDepth = dataType == EDataType::UShort ? 16 : 8;
  layout.Bgr = pixelType == EPixelType::BGR || pixelType == EPixelType::BGRA;
  switch (pixelType) {
    case EPixelType::Lum: layout.ColorType = PNG_COLOR_TYPE_GRAY; break;
    case EPixelType::LumA: layout.ColorType = PNG_COLOR_TYPE_GRAY_ALPHA; break;
    case EPixelType::RGB:
    case EPixelType::BGR: layout.ColorType = PNG_COLOR_TYPE_RGB; break;
    default: layout.ColorType = PNG_COLOR_TYPE_RGB_ALPHA; break;
  }

  SPngState state;
  CPngStructs structs(true, &state);
  png_init_io(structs.Png(), file);
  std::vector<png_bytep> rows =
      RowPointers(image.GetDataPtr(), layout.Height,
                  static_cast<std::size_t>(image.GetBytesPerPixel()) * layout.Width);
  if (!WritePngRows(structs.Png(), structs.Info(), &layout, rows.data()))
    throw CIoError(state.Message);
}

}  // namespace Detail
}  // namespace ZtTools
