#include "ZtImageIo.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <vector>

#include "ZtAtomicFile.h"
#include "ZtImageCodecs.h"

namespace ZtTools {
namespace {

struct SFileFormatInfo {
  EFileFormat Format;
  const char* Name;
  const char* Extension;
  std::vector<EPixelType::ID> PixelTypes;
  std::vector<EDataType::ID> DataTypes;
};

const std::vector<SFileFormatInfo>& FileFormats() {
  using P = EPixelType;
  using D = EDataType;
  static const std::vector<SFileFormatInfo> formats = {
      {EFileFormat::Png, "PNG", ".png", {P::Lum, P::LumA, P::RGB, P::RGBA, P::BGR, P::BGRA}, {D::UByte, D::UShort}},
      {EFileFormat::Pgm, "PGM", ".pgm", {P::Lum}, {D::UByte, D::UShort}},
      {EFileFormat::Ppm, "PPM", ".ppm", {P::RGB}, {D::UByte, D::UShort}},
      {EFileFormat::Pam, "PAM", ".pam", {P::Lum, P::LumA, P::RGB, P::RGBA}, {D::UByte, D::UShort}},
      {EFileFormat::Pfm, "PFM", ".pfm", {P::Lum, P::RGB}, {D::Float}},
      {EFileFormat::Raw, "raw", ".raw",
       std::vector<EPixelType::ID>(std::begin(kAllPixelTypes), std::end(kAllPixelTypes)),
       std::vector<EDataType::ID>(std::begin(kAllDataTypes), std::end(kAllDataTypes))},
  };
  return formats;
}

const SFileFormatInfo& InfoOf(EFileFormat format) {
  for (const auto& info : FileFormats()) {
    if (info.Format == format) return info;
  }
  throw CIoError("unknown file format");
}

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

std::string Trim(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::string PixelTypeText(EPixelType::ID type) {
  return CZtImageFormat::PixelType2String(type).ToCString();
}
std::string DataTypeText(EDataType::ID type) { return CZtImageFormat::DataType2String(type).ToCString(); }

// "A, B or C".
template <class T, class Name>
std::string JoinList(const std::vector<T>& items, Name name) {
  std::string text;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i > 0) text += i + 1 == items.size() ? " or " : ", ";
    text += name(items[i]);
  }
  return text;
}

bool HasColour(EPixelType::ID type) { return Detail::SampleCount(type) >= 3; }
bool HasAlpha(EPixelType::ID type) {
  return type == EPixelType::LumA || type == EPixelType::RGBA || type == EPixelType::BGRA;
}

// Matches a display name of the library's closed list without regard to case.
template <class Id, std::size_t N, class Name>
Id ParseName(const std::string& text, const Id (&all)[N], Name name, const char* what) {
  const std::string wanted = Lower(Trim(text));
  std::vector<Id> known(std::begin(all), std::end(all));
  for (Id id : known) {
    if (Lower(name(id)) == wanted) return id;
  }
  throw CIoError("unknown " + std::string(what) + " '" + text + "' (known: " + JoinList(known, name) + ")");
}

Detail::CBytes LoadFile(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) throw CIoError("cannot open '" + path + "': " + std::strerror(errno));
  Detail::CBytes bytes;
  unsigned char chunk[65536];
  std::size_t count = 0;
  while ((count = std::fread(chunk, 1, sizeof chunk, file)) > 0) {
    bytes.insert(bytes.end(), chunk, chunk + count);
  }
  const bool failed = std::ferror(file) != 0;
  const int error = errno;
  std::fclose(file);
  if (failed) throw CIoError("cannot read '" + path + "': " + std::strerror(error));
  return bytes;
}

void ReadRaw(const Detail::CBytes& file, const CZtImageFormat& format, CZtImage& image) {
  const unsigned long long needed = Detail::BlockBytes(static_cast<unsigned long long>(format.Width),
                                                       static_cast<unsigned long long>(format.Height),
                                                       format.PixelType, format.DataType);
  if (file.size() != needed) {
    throw CIoError("holds " + std::to_string(file.size()) + " bytes, but " + FormatText(format) +
                   " takes " + std::to_string(needed));
  }
  Detail::CreateForFile(image, static_cast<unsigned long long>(format.Width),
                        static_cast<unsigned long long>(format.Height), format.PixelType,
                        format.DataType);
  if (needed > 0) std::memcpy(image.GetDataPtr(), file.data(), file.size());
}

void CheckHoldable(const std::string& path, EFileFormat format, EPixelType::ID pixelType,
                   EDataType::ID dataType) {
  if (!CanHold(format, pixelType, dataType)) {
    throw CIoError(path + ": " + FileFormatName(format) + " files hold " + DescribeHoldable(format) +
                   ", not " + PixelTypeText(pixelType) + ", " + DataTypeText(dataType));
  }
}

void WriteRaw(const IImage& image, std::FILE* file) {
  const std::size_t size = image.GetByteCount();
  if (std::fwrite(image.GetDataPtr(), 1, size, file) != size) {
    throw CIoError(std::string("write failed: ") + std::strerror(errno));
  }
}

}  // namespace

namespace Detail {

unsigned long long BlockBytes(unsigned long long width, unsigned long long height,
                              EPixelType::ID pixelType, EDataType::ID dataType) {
  constexpr unsigned long long limit = std::numeric_limits<unsigned int>::max();
  const unsigned long long pixelBytes = SampleCount(pixelType) * SampleBytes(dataType);
  const unsigned long long extent = static_cast<unsigned long long>(std::numeric_limits<int>::max());
  if (width > extent || height > extent || width * height > limit || width * height * pixelBytes > limit) {
    throw CIoError("image of " + std::to_string(width) + "x" + std::to_string(height) + ", " +
                   PixelTypeText(pixelType) + ", " + DataTypeText(dataType) +
                   " is too large: the library sizes images in 32 bits");
  }
  return width * height * pixelBytes;
}

void CreateForFile(CZtImage& image, unsigned long long width, unsigned long long height,
                   EPixelType::ID pixelType, EDataType::ID dataType) {
  BlockBytes(width, height, pixelType, dataType);
  if (!image.Create(static_cast<int>(width), static_cast<int>(height), pixelType, dataType)) {
    throw CIoError("cannot allocate an image of " +
                   FormatText(CZtImageFormat(static_cast<int>(width), static_cast<int>(height),
                                             pixelType, dataType)));
  }
}

}  // namespace Detail

EFileFormat FileFormatOf(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  const std::size_t dot = path.find_last_of('.');
  const std::string extension =
      dot == std::string::npos || (slash != std::string::npos && dot < slash) ? "" : Lower(path.substr(dot));
  std::vector<std::string> known;
  for (const auto& info : FileFormats()) {
    if (extension == info.Extension) return info.Format;
    known.emplace_back(info.Extension);
  }
  throw CIoError("unknown file format of '" + path + "' (known: " +
                 JoinList(known, [](const std::string& s) { return s; }) + ")");
}

const char* FileFormatName(EFileFormat format) { return InfoOf(format).Name; }

bool CanHold(EFileFormat format, EPixelType::ID pixelType, EDataType::ID dataType) {
  const SFileFormatInfo& info = InfoOf(format);
  return std::find(info.PixelTypes.begin(), info.PixelTypes.end(), pixelType) != info.PixelTypes.end() &&
         std::find(info.DataTypes.begin(), info.DataTypes.end(), dataType) != info.DataTypes.end();
}

std::string DescribeHoldable(EFileFormat format) {
  const SFileFormatInfo& info = InfoOf(format);
  return JoinList(info.PixelTypes, PixelTypeText) + " with " + JoinList(info.DataTypes, DataTypeText) +
         " samples";
}

void ChooseTarget(EFileFormat format, EPixelType::ID sourcePixelType, EDataType::ID sourceDataType,
                  EPixelType::ID& pixelType, EDataType::ID& dataType) {
  const SFileFormatInfo& info = InfoOf(format);
  int best = -1;
  for (EPixelType::ID candidate : info.PixelTypes) {
    const int score = (candidate == sourcePixelType ? 4 : 0) +
                      (HasColour(candidate) == HasColour(sourcePixelType) ? 2 : 0) +
                      (HasAlpha(candidate) == HasAlpha(sourcePixelType) ? 1 : 0);
    if (score > best) {
      best = score;
      pixelType = candidate;
    }
  }
  const auto holds = [&](EDataType::ID type) {
    return std::find(info.DataTypes.begin(), info.DataTypes.end(), type) != info.DataTypes.end();
  };
  if (holds(sourceDataType)) {
    dataType = sourceDataType;
  } else if (holds(EDataType::Float)) {
    dataType = EDataType::Float;
  } else if (holds(EDataType::UShort) && Detail::SampleBytes(sourceDataType) > 1) {
    dataType = EDataType::UShort;
  } else {
    dataType = info.DataTypes.front();
  }
}

EPixelType::ID ParsePixelType(const std::string& text) {
  return ParseName(text, kAllPixelTypes, PixelTypeText, "layout");
}

EDataType::ID ParseDataType(const std::string& text) {
  return ParseName(text, kAllDataTypes, DataTypeText, "sample type");
}

CZtImageFormat ParseImageFormat(const std::string& text) {
  const std::string expected = "format '" + text + "': expected WIDTHxHEIGHT, LAYOUT, TYPE";
  const std::size_t comma1 = text.find(',');
  const std::size_t comma2 = comma1 == std::string::npos ? comma1 : text.find(',', comma1 + 1);
  if (comma2 == std::string::npos || text.find(',', comma2 + 1) != std::string::npos) {
    throw CIoError("bad " + expected);
  }
  const std::string size = Lower(Trim(text.substr(0, comma1)));
  const std::size_t x = size.find('x');
  const auto extent = [&](const std::string& digits) {
    if (digits.empty() || digits.size() > 10 ||
        !std::all_of(digits.begin(), digits.end(), [](unsigned char c) { return std::isdigit(c) != 0; })) {
      throw CIoError("bad " + expected);
    }
    const unsigned long long value = std::stoull(digits);
    if (value < 1 || value > static_cast<unsigned long long>(std::numeric_limits<int>::max())) {
      throw CIoError("bad size in " + expected);
    }
    return static_cast<int>(value);
  };
  if (x == std::string::npos) throw CIoError("bad " + expected);
  const int width = extent(size.substr(0, x));
  const int height = extent(size.substr(x + 1));
  return CZtImageFormat(width, height, ParsePixelType(text.substr(comma1 + 1, comma2 - comma1 - 1)),
                        ParseDataType(text.substr(comma2 + 1)));
}

std::string FormatText(const CZtImageFormat& format) { return format.ToString().ToCString(); }

std::string FormatText(const IImage& image) {
  CZtImageFormat format;
  image.GetSize(format.Width, format.Height);
  image.GetType(format.PixelType, format.DataType);
  return FormatText(format);
}

void ReadImageFile(const std::string& path, CZtImage& image, const CZtImageFormat* rawFormat) {
  const EFileFormat format = FileFormatOf(path);
  if (format == EFileFormat::Raw && rawFormat == nullptr) {
    throw CIoError(path + ": a .raw file needs its format given, such as \"640x480, BayerGR, UShort\"");
  }
  const Detail::CBytes bytes = LoadFile(path);
  try {
    switch (format) {
      case EFileFormat::Png: Detail::ReadPng(bytes, image); break;
      case EFileFormat::Raw: ReadRaw(bytes, *rawFormat, image); break;
      default: Detail::ReadNetpbm(bytes, image); break;
    }
  } catch (const CIoError& e) {
    throw CIoError(path + ": " + e.what());
  }
}

void WriteImageFile(const std::string& path, const IImage& image) {
  const EFileFormat format = FileFormatOf(path);
  EPixelType::ID pixelType{};
  EDataType::ID dataType{};
  image.GetType(pixelType, dataType);
  CheckHoldable(path, format, pixelType, dataType);
  CAtomicFile file(path);
  try {
    switch (format) {
      case EFileFormat::Png: Detail::WritePng(image, file.File()); break;
      case EFileFormat::Raw: WriteRaw(image, file.File()); break;
      default: Detail::WriteNetpbm(format, image, file.File()); break;
    }
  } catch (const CIoError& e) {
    throw CIoError(path + ": " + e.what());
  }
  file.Commit();
}

void ConvertImage(const CZtImage& source, CZtImage& target, EPixelType::ID pixelType,
                  EDataType::ID dataType) {
  const CZtImageFormat& format = source.GetFormat();
  const std::string refused = "cannot convert " + FormatText(source) + " to " + PixelTypeText(pixelType) +
                              ", " + DataTypeText(dataType);
  try {
    // Conversion addresses the target by the pixel count, past a wrapped block size.
    Detail::BlockBytes(static_cast<unsigned long long>(format.Width),
                       static_cast<unsigned long long>(format.Height), pixelType, dataType);
  } catch (const CIoError& e) {
    throw CIoError(refused + ": " + e.what());
  }
  if (!source.ConvertType(target, pixelType, dataType)) throw CIoError(refused);
}

SConversion ConvertFile(const std::string& input, const std::string& output,
                        const EPixelType::ID* pixelType, const EDataType::ID* dataType,
                        const CZtImageFormat* rawFormat) {
  // Both names are checked before any work, so a bad output name costs no read.
  FileFormatOf(input);
  const EFileFormat outputFormat = FileFormatOf(output);
  CZtImage source;
  ReadImageFile(input, source, rawFormat);

  SConversion conversion{source.GetFormat(), source.GetFormat()};
  ChooseTarget(outputFormat, conversion.Source.PixelType, conversion.Source.DataType,
               conversion.Target.PixelType, conversion.Target.DataType);
  if (pixelType != nullptr) conversion.Target.PixelType = *pixelType;
  if (dataType != nullptr) conversion.Target.DataType = *dataType;
  CheckHoldable(output, outputFormat, conversion.Target.PixelType, conversion.Target.DataType);
  if (conversion.Target == conversion.Source) {
    WriteImageFile(output, source);
  } else {
    CZtImage target;
    ConvertImage(source, target, conversion.Target.PixelType, conversion.Target.DataType);
    WriteImageFile(output, target);
  }
  return conversion;
}

}  // namespace ZtTools
