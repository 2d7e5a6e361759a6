// The netpbm family, read and written here without any library: PBM (P1,
// P4), PGM (P2, P5), PPM (P3, P6), PAM (P7) and PFM (Pf, PF). The plain
// members P1 to P3 are read only; files are written in the binary members.
//
// Binary integer samples are big-endian, 8 bits for a maxval up to 255 and
// 16 bits above; plain ones are decimal text. A bitmap stores 1 for black
// and reads as Lum UByte, black 0 and white 255. PFM samples are 32-bit floats whose byte order the
// sign of the scale gives (negative: little-endian), and its rows run from the bottom up.

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
  unsigned Depth = 0;             // samples per pixel
  unsigned long long MaxVal = 0;  // integer files
  bool IsFloat = false;
  bool FloatBigEndian = false;
  bool Plain = false;     // samples as decimal text (P1, P2, P3)
  char Magic = 0;         // the character after 'P'
  std::string Scale;      // PFM
  std::string TupleType;  // PAM
  std::size_t DataOffset = 0;
};

bool IsSpace(unsigned char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

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
    const std::string key =
        line.substr(start, end == std::string::npos ? std::string::npos : end - start);
    std::string value;
    if (end != std::string::npos) {
      std::size_t first = line.find_first_not_of(" \t\r", end);
      std::size_t last = line.find_last_not_of(" \t\r");
      if (first != std::string::npos) value = line.substr(first, last - first + 1);
    }
    if (key == "ENDHDR") break;
    if (key == "WIDTH")
      header.Width = ParseField(value, "width", kMaxExtent);
    else if (key == "HEIGHT")
      header.Height = ParseField(value, "height", kMaxExtent);
    else if (key == "DEPTH")
      header.Depth = static_cast<unsigned>(ParseField(value, "depth", 4));
    else if (key == "MAXVAL")
      header.MaxVal = ParseField(value, "maxval", 65535);
    else if (key == "TUPLTYPE")
      tupleType += (tupleType.empty() ? "" : " ") + value;
    else
      throw CIoError("unknown PAM header line '" + line + "'");
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
  header.TupleType = tupleType;
}

void ParsePfmHeader(CHeaderReader& reader, SNetpbmHeader& header) {
  header.Width = ParseField(reader.Token(false), "width", kMaxExtent);
  header.Height = ParseField(reader.Token(false), "height", kMaxExtent);
  const std::string scaleText = reader.Token(false);
  char* end = nullptr;
  errno = 0;
  const double scale = std::strtod(scaleText.c_str(), &end);
  if (end == scaleText.c_str() || *end != '\0' || errno != 0 || scale == 0.0 ||
      !std::isfinite(scale)) {
    throw CIoError("bad PFM scale '" + scaleText + "'");
  }
  header.FloatBigEndian = scale > 0.0;
  header.Scale = scaleText;
  reader.HeaderEnd();
}

void ParseBitmapHeader(CHeaderReader& reader, SNetpbmHeader& header) {
  header.Width = ParseField(reader.Token(true), "width", kMaxExtent);
  header.Height = ParseField(reader.Token(true), "height", kMaxExtent);
  header.MaxVal = 1;
  reader.HeaderEnd();
}

SNetpbmHeader ParseHeader(const CBytes& file) {
  if (file.size() < 2 || file[0] != 'P') throw CIoError("not a netpbm file (bad magic)");
  SNetpbmHeader header;
  header.Magic = static_cast<char>(file[1]);
  CHeaderReader reader(file, 2);
  switch (header.Magic) {
    case '1':
      header.Depth = 1;
      header.Plain = true;
      ParseBitmapHeader(reader, header);
      break;
    case '4':
      header.Depth = 1;
      ParseBitmapHeader(reader, header);
      break;
    case '2':
      header.Depth = 1;
      header.Plain = true;
      ParsePlainHeader(reader, header);
      break;
    case '5':
      header.Depth = 1;
      ParsePlainHeader(reader, header);
      break;
    case '3':
      header.Depth = 3;
      header.Plain = true;
      ParsePlainHeader(reader, header);
      break;
    case '6':
      header.Depth = 3;
      ParsePlainHeader(reader, header);
      break;
    case '7': ParsePamHeader(reader, header); break;
    case 'f':
      header.Depth = 1;
      header.IsFloat = true;
      ParsePfmHeader(reader, header);
      break;
    case 'F':
      header.Depth = 3;
      header.IsFloat = true;
      ParsePfmHeader(reader, header);
      break;
    default: throw CIoError("not a netpbm file (bad magic)");
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

bool IsBitmap(const SNetpbmHeader& header) { return header.Magic == '1' || header.Magic == '4'; }

// The fewest bytes the pixels of the header can take in the file: a plain
// sample is at least one digit and one blank (a plain bitmap's needs no
// blank), a binary bitmap packs eight pixels a byte.
unsigned long long LeastPixelBytes(const SNetpbmHeader& header, unsigned sampleBytes) {
  const unsigned long long samples = header.Width * header.Height * header.Depth;
  if (header.Magic == '4') return (header.Width + 7) / 8 * header.Height;
  if (header.Magic == '1') return samples;
  if (header.Plain) return samples * 2 - 1;
  return samples * sampleBytes;
}

// The samples of an integer file one after another, as stored: binary ones
// big-endian, plain ones as decimal text, bitmap ones as bits.
class CSampleSource {
public:
  CSampleSource(const CBytes& file, const SNetpbmHeader& header, unsigned sampleBytes)
      : m_File(file), m_Header(header), m_SampleBytes(sampleBytes), m_Position(header.DataOffset) {}

  unsigned long long Next() {
    switch (m_Header.Magic) {
      case '4': return NextPackedBit();
      case '1': return NextTextBit();
      default: return m_Header.Plain ? NextDecimal() : NextBinary();
    }
  }

private:
  unsigned long long NextBinary() {
    const unsigned char* at = m_File.data() + m_Position;
    m_Position += m_SampleBytes;
    return m_SampleBytes == 2 ? (static_cast<unsigned long long>(at[0]) << 8) | at[1] : at[0];
  }

  void SkipBlanks() {
    while (m_Position < m_File.size() && IsSpace(m_File[m_Position])) ++m_Position;
    if (m_Position >= m_File.size()) throw CIoError("file is truncated in its pixels");
  }

  unsigned long long NextDecimal() {
    SkipBlanks();
    unsigned long long value = 0;
    std::size_t digits = 0;
    while (m_Position < m_File.size() && !IsSpace(m_File[m_Position])) {
      const unsigned char c = m_File[m_Position++];
      if (!std::isdigit(c)) throw CIoError("bad character in plain pixels");
      if (value <= 65535) value = value * 10 + (c - '0');
      ++digits;
    }
    return digits > 0 ? value : 0;
  }

  // A bitmap stores 1 for black; it reads as 0, white as 1 (maxval 1).
  unsigned long long NextTextBit() {
    SkipBlanks();
    const unsigned char c = m_File[m_Position++];
    if (c != '0' && c != '1') throw CIoError("bad character in plain bitmap");
    return c == '0' ? 1 : 0;
  }

  unsigned long long NextPackedBit() {
    const unsigned char byte = m_File[m_Position];
    const unsigned bit = 7 - m_Column % 8;
    if (++m_Column == m_Header.Width || m_Column % 8 == 0) ++m_Position;
    if (m_Column == m_Header.Width) m_Column = 0;
    return ((byte >> bit) & 1u) != 0 ? 0 : 1;
  }

  const CBytes& m_File;
  const SNetpbmHeader& m_Header;
  unsigned m_SampleBytes;
  std::size_t m_Position;
  unsigned long long m_Column = 0;
};

// Integer samples into an image of T, each checked against maxval and
// rescaled to the full range of T.
template <class T>
void ReadIntegerSamples(const CBytes& file, const SNetpbmHeader& header, unsigned sampleBytes,
                        CZtImage& image) {
  constexpr unsigned long long full = std::numeric_limits<T>::max();
  CSampleSource source(file, header, sampleBytes);
  auto* out = static_cast<T*>(image.GetDataPtr());
  const std::size_t count = static_cast<std::size_t>(header.Width * header.Height * header.Depth);
  for (std::size_t i = 0; i < count; ++i) {
    const unsigned long long value = source.Next();
    if (value > header.MaxVal) {
      throw CIoError("sample " + std::to_string(value) + " above maxval " +
                     std::to_string(header.MaxVal));
    }
    out[i] = static_cast<T>(
        header.MaxVal == full ? value : (value * full + header.MaxVal / 2) / header.MaxVal);
  }
}

// PFM rows run bottom-up, in the byte order the scale declares.
void ReadFloatRows(const unsigned char* data, const SNetpbmHeader& header, CZtImage& image) {
  const std::size_t rowSamples = static_cast<std::size_t>(header.Width) * header.Depth;
  auto* pixels = static_cast<float*>(image.GetDataPtr());
  for (std::size_t y = 0; y < header.Height; ++y) {
    const unsigned char* in = data + (header.Height - 1 - y) * rowSamples * sizeof(float);
    float* out = pixels + y * rowSamples;
    for (std::size_t i = 0; i < rowSamples; ++i) {
      out[i] = LoadSample<float>(in + i * sizeof(float), header.FloatBigEndian);
    }
  }
}

template <class T>
void WriteRows(const IImage& image, unsigned depth, bool bigEndian, bool bottomUp,
               std::FILE* file) {
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

void ReadNetpbm(const CBytes& file, unsigned long long maxPixels, CZtImage& image,
                std::string& details) {
  const SNetpbmHeader header = ParseHeader(file);
  const unsigned sampleBytes = header.IsFloat ? 4u : header.MaxVal > 255 ? 2u : 1u;
  const EDataType::ID dataType = header.IsFloat     ? EDataType::Float
                                 : sampleBytes == 2 ? EDataType::UShort
                                                    : EDataType::UByte;
  const EPixelType::ID pixelType = LayoutOfDepth(header.Depth);
  CheckPixelCount(header.Width, header.Height, maxPixels);
  BlockBytes(header.Width, header.Height, pixelType, dataType);
  // The file must hold the pixels it declares before any memory is taken for them.
  const unsigned long long needed = LeastPixelBytes(header, sampleBytes);
  const unsigned long long present = file.size() - header.DataOffset;
  if (present < needed) {
    throw CIoError("file is truncated: " + std::to_string(present) + " of " +
                   std::to_string(needed) + " bytes of pixels");
  }
  CreateForFile(image, header.Width, header.Height, pixelType, dataType);
  switch (dataType) {
    case EDataType::Float: ReadFloatRows(file.data() + header.DataOffset, header, image); break;
    case EDataType::UShort:
      ReadIntegerSamples<unsigned short>(file, header, sampleBytes, image);
      break;
    default: ReadIntegerSamples<unsigned char>(file, header, sampleBytes, image); break;
  }
  details = std::string("magic=P") + header.Magic;
  if (header.IsFloat) {
    details += " scale=" + header.Scale +
               (header.FloatBigEndian ? " byte-order=big" : " byte-order=little");
  } else if (!IsBitmap(header)) {
    details += " maxval=" + std::to_string(header.MaxVal);
  }
  if (!header.TupleType.empty()) details += " tupltype=" + header.TupleType;
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
    case EFileFormat::Pnm:
      written =
          std::fprintf(file, "P%c\n%d %d\n%u\n", depth == 1 ? '5' : '6', width, height, maxVal);
      break;
    case EFileFormat::Pam:
      written =
          std::fprintf(file, "P7\nWIDTH %d\nHEIGHT %d\nDEPTH %u\nMAXVAL %u\nTUPLTYPE %s\nENDHDR\n",
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
