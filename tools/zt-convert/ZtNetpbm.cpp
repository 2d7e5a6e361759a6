// PGM (P5), PPM (P6), PAM (P7) and PFM (Pf, PF): the binary members of the
// netpbm family, read and written here without any library.
//
// Integer samples are big-endian, 8 bits for a maxval up to 255 and 16 bits
// above. PFM samples are 32-bit floats whose byte order the sign of the scale
// gives (negative: little-endian), and its rows run from the bottom up.

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <type_traits>

#include "ZtImageCodecs.h"

namespace ZtTools {
namespace Detail {
namespace {

// What a header says about the pixels that follow it.
struct SNetpbmHeader {
  unsigned long long Width = 0;
  unsigned long long Height = 0;
  unsigned Depth = 0;              // samples per pixel
  unsigned long long MaxVal = 0;   // integer files
  bool IsFloat = false;
  bool FloatBigEndian = false;
  std::size_t DataOffset = 0;
};

bool IsSpace(unsigned char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f'; }

// Reads the text header of a netpbm file.
class CHeaderReader {
public:
  CHeaderReader(const CBytes& file, std::size_t position) : m_File(file), m_Position(position) {}

  // The next blank-separated token; '#' starts a comment up to the line's end.
  std::string Token(bool comments) {
    for (;;) {
      while (m_Position < m_File.size() && IsSpace(m_File[m_Position])) ++m_Position;
      if (comments && m_Position < m_File.size() && m_File[m_Position] == '#') {
        while (m_Position < m_File.size() && m_File[m_Position] != '\n') ++m_Position;
        continue;
      }
      break;
    }
    std::string token;
    while (m_Position < m_File.size() && !IsSpace(m_File[m_Position]) &&
           !(comments && m_File[m_Position] == '#')) {
      token += static_cast<char>(m_File[m_Position++]);
    }
    if (token.empty()) throw CIoError("file is truncated in its header");
    return token;
  }

  // The rest of the current line, without its end.
  std::string Line() {
    if (m_Position >= m_File.size()) throw CIoError("file is truncated in its header");
    std::string line;
    while (m_Position < m_File.size() && m_File[m_Position] != '\n') {
      line += static_cast<char>(m_File[m_Position++]);
    }
    if (m_Position < m_File.size()) ++m_Position;
    return line;
  }

  // The single blank that ends a header.
  void HeaderEnd() {
    if (m_Position >= m_File.size() || !IsSpace(m_File[m_Position])) {
      throw CIoError("file is truncated in its header");
    }
    ++m_Position;
  }

  std::size_t Position() const { return m_Position; }

private:
  const CBytes& m_File;
  std::size_t m_Position;
};

// A positive decimal header field of at most `limit`.
unsigned long long ParseField(const std::string& text, const char* what, unsigned long long limit) {
  unsigned long long value = 0;
  for (char c : text) {
    if (!std::isdigit(static_cast<unsigned char>(c))) {
      throw CIoError(std::string("bad ") + what + " '" + text + "' in header");
    }
    value = value * 10 + static_cast<unsigned long long>(c - '0');
    if (value > limit) break;
  }
  if (value < 1 || value > limit) {
    throw CIoError(std::string(what) + " " + text + " out of range 1 to " + std::to_string(limit));
  }
  return value;
}

constexpr unsigned long long kMaxExtent = std::numeric_limits<int>::max();

void ParsePlainHeader(CHeaderReader& reader, SNetpbmHeader& header) {
  header.Width = ParseField(reader.Token(true), "width", kMaxExtent);
  header.Height = ParseField(reader.Token(true), "height", kMaxExtent);
  header.MaxVal = ParseField(reader.Token(true), "maxval", 65535);
  reader.HeaderEnd();
}

// Samples per pixel for a PAM tuple type, 0 for one this tool does not know.
unsigned PamTupleDepth(const std::string& tupleType) {
  if (tupleType == "GRAYSCALE" || tupleType == "BLACKANDWHITE") return 1;
  if (tupleType == "GRAYSCALE_ALPHA" || tupleType == "BLACKANDWHITE_ALPHA") return 2;
  if (tupleType == "RGB") return 3;
  if (tupleType == "RGB_ALPHA") return 4;
  return 0;
}

void ParsePamHeader(CHeaderReader& reader, SNetpbmHeader& header) {
  reader.Line();  // the rest of the magic's line
  std::string tupleType;
  for (;;) {
    std::string line = reader.Line();
    std::size_t start = 0;
    while (start < line.size() && IsSpace(static_cast<unsigned char>(line[start]))) ++start;
    if (start == line.size() || line[start] == '#') continue;
    std::size_t end = line.find_first_of(" \t\r", start);
    const std::string key = line.substr(start, end == std::string::npos ? std::string::npos : end - start);
    std::string value;
    if (end != std::string::npos) {
      std::size_t first = line.find_first_not_of(" \t\r", end);
      std::size_t last = line.find_last_not_of(" \t\r");
      if (first != std::string::npos) value = line.substr(first, last - first + 1);
    }
    if (key == "ENDHDR") break;
    if (key == "WIDTH") header.Width = ParseField(value, "width", kMaxExtent);
    else if (key == "HEIGHT") header.Height = ParseField(value, "height", kMaxExtent);
    else if (key == "DEPTH") header.Depth = static_cast<unsigned>(ParseField(value, "depth", 4));
    else if (key == "MAXVAL") header.MaxVal = ParseField(value, "maxval", 65535);
    else if (key == "TUPLTYPE") tupleType += (tupleType.empty() ? "" : " ") + value;
    else throw CIoError("unknown PAM header line '" + line + "'");
  }
  if (header.Width == 0 || header.Height == 0 || header.Depth == 0 || header.MaxVal == 0) {
    throw CIoError("PAM header lacks WIDTH, HEIGHT, DEPTH or MAXVAL");
  }
  if (!tupleType.empty()) {
    const unsigned depth = PamTupleDepth(tupleType);
    if (depth == 0) throw CIoError("unsupported PAM tuple type '" + tupleType + "'");
    if (depth != header.Depth) {
      throw CIoError("PAM tuple type " + tupleType + " does not have depth " +
                     std::to_string(header.Depth));
    }
  }
}

void ParsePfmHeader(CHeaderReader& reader, SNetpbmHeader& header) {
  header.Width = ParseField(reader.Token(false), "width", kMaxExtent);
  header.Height = ParseField(reader.Token(false), "height", kMaxExtent);
  const std::string scaleText = reader.Token(false);
  char* end = nullptr;
  errno = 0;
  const double scale = std::strtod(scaleText.c_str(), &end);
  if (end == scaleText.c_str() || *end != '\0' || errno != 0 || scale == 0.0 || !std::isfinite(scale)) {
    throw CIoError("bad PFM scale '" + scaleText + "'");
  }
  header.FloatBigEndian = scale > 0.0;
  reader.HeaderEnd();
}

SNetpbmHeader ParseHeader(const CBytes& file) {
  if (file.size() < 2 || file[0] != 'P') throw CIoError("not a netpbm file (bad magic)");
  SNetpbmHeader header;
  CHeaderReader reader(file, 2);
  switch (file[1]) {
    case '5': header.Depth = 1; ParsePlainHeader(reader, header); break;
    case '6': header.Depth = 3; ParsePlainHeader(reader, header); break;
    case '7': ParsePamHeader(reader, header); break;
    case 'f': header.Depth = 1; header.IsFloat = true; ParsePfmHeader(reader, header); break;
    case 'F': header.Depth = 3; header.IsFloat = true; ParsePfmHeader(reader, header); break;
    default: throw CIoError("not a binary netpbm file (bad magic)");
  }
  header.DataOffset = reader.Position();
  return header;
}

EPixelType::ID LayoutOfDepth(unsigned depth) {
  switch (depth) {
    case 1: return EPixelType::Lum;
    case 2: return EPixelType::LumA;
    case 3: return EPixelType::RGB;
    default: return EPixelType::RGBA;
  }
}

// Rows of T samples between a file and an image: integers big-endian and
// scaled by maxval, floats in the file's order with the rows bottom-up.
template <class T>
void ReadRows(const unsigned char* data, const SNetpbmHeader& header, CZtImage& image) {
  const std::size_t rowSamples = static_cast<std::size_t>(header.Width) * header.Depth;
  const bool bigEndian = std::is_integral<T>::value || header.FloatBigEndian;
  auto* pixels = static_cast<T*>(image.GetDataPtr());
  for (std::size_t y = 0; y < header.Height; ++y) {
    const std::size_t fileRow = std::is_integral<T>::value ? y : header.Height - 1 - y;
    const unsigned char* in = data + fileRow * rowSamples * sizeof(T);
    T* out = pixels + y * rowSamples;
    for (std::size_t i = 0; i < rowSamples; ++i) {
      T value = LoadSample<T>(in + i * sizeof(T), bigEndian);
      if constexpr (std::is_integral<T>::value) {
        constexpr unsigned long long full = std::numeric_limits<T>::max();
        if (static_cast<unsigned long long>(value) > header.MaxVal) {
          throw CIoError("sample " + std::to_string(value) + " above maxval " +
                         std::to_string(header.MaxVal));
        }
        if (header.MaxVal != full) {
          value = static_cast<T>((value * full + header.MaxVal / 2) / header.MaxVal);
        }
      }
      out[i] = value;
    }
  }
}

template <class T>
void WriteRows(const IImage& image, unsigned depth, bool bigEndian, bool bottomUp, std::FILE* file) {
  int width = 0, height = 0;
  image.GetSize(width, height);
  const std::size_t rowSamples = static_cast<std::size_t>(width) * depth;
  std::vector<unsigned char> row(rowSamples * sizeof(T));
  const auto* pixels = static_cast<const T*>(image.GetDataPtr());
  for (int y = 0; y < height; ++y) {
    const int imageRow = bottomUp ? height - 1 - y : y;
    const T* in = pixels + static_cast<std::size_t>(imageRow) * rowSamples;
    for (std::size_t i = 0; i < rowSamples; ++i) {
      StoreSample<T>(row.data() + i * sizeof(T), in[i], bigEndian);
    }
    if (std::fwrite(row.data(), 1, row.size(), file) != row.size()) {
      throw CIoError(std::string("write failed: ") + std::strerror(errno));
    }
  }
}

const char* PamTupleType(EPixelType::ID layout) {
  switch (layout) {
    case EPixelType::Lum: return "GRAYSCALE";
    case EPixelType::LumA: return "GRAYSCALE_ALPHA";
    case EPixelType::RGB: return "RGB";
    default: return "RGB_ALPHA";
  }
}

}  // namespace

void ReadNetpbm(const CBytes& file, CZtImage& image) {
  const SNetpbmHeader header = ParseHeader(file);
  const unsigned sampleBytes = header.IsFloat ? 4u : header.MaxVal > 255 ? 2u : 1u;
  const EDataType::ID dataType = header.IsFloat      ? EDataType::Float
                                 : sampleBytes == 2 ? EDataType::UShort
                                                    : EDataType::UByte;
  const EPixelType::ID pixelType = LayoutOfDepth(header.Depth);
  // File and image samples have the same size, so the block is what the file must hold.
  const unsigned long long needed = BlockBytes(header.Width, header.Height, pixelType, dataType);
  const unsigned long long present = file.size() - header.DataOffset;
  if (present < needed) {
    throw CIoError("file is truncated: " + std::to_string(present) + " of " +
                   std::to_string(needed) + " bytes of pixels");
  }
  CreateForFile(image, header.Width, header.Height, pixelType, dataType);
  const unsigned char* data = file.data() + header.DataOffset;
  switch (dataType) {
    case EDataType::Float: ReadRows<float>(data, header, image); break;
    case EDataType::UShort: ReadRows<unsigned short>(data, header, image); break;
    default: ReadRows<unsigned char>(data, header, image); break;
  }
}

void WriteNetpbm(EFileFormat format, const IImage& image, std::FILE* file) {
  int width = 0, height = 0;
  image.GetSize(width, height);
  EPixelType::ID pixelType{};
  EDataType::ID dataType{};
  image.GetType(pixelType, dataType);
  const unsigned depth = SampleCount(pixelType);
  const unsigned maxVal = dataType == EDataType::UShort ? 65535u : 255u;
  int written = 0;
  switch (format) {
    case EFileFormat::Pgm:
    case EFileFormat::Ppm:
      written = std::fprintf(file, "P%c\n%d %d\n%u\n", format == EFileFormat::Pgm ? '5' : '6',
                             width, height, maxVal);
      break;
    case EFileFormat::Pam:
      written = std::fprintf(file, "P7\nWIDTH %d\nHEIGHT %d\nDEPTH %u\nMAXVAL %u\nTUPLTYPE %s\nENDHDR\n",
                             width, height, depth, maxVal, PamTupleType(pixelType));
      break;
    default:
      // Always little-endian, which the negative scale declares.
      written = std::fprintf(file, "P%c\n%d %d\n-1.0\n", depth == 1 ? 'f' : 'F', width, height);
      break;
  }
  if (written < 0) throw CIoError(std::string("write failed: ") + std::strerror(errno));
  switch (dataType) {
    case EDataType::Float: WriteRows<float>(image, depth, false, true, file); break;
    case EDataType::UShort: WriteRows<unsigned short>(image, depth, true, false, file); break;
    default: WriteRows<unsigned char>(image, depth, true, false, file); break;
  }
}

}  // namespace Detail
}  // namespace ZtTools
