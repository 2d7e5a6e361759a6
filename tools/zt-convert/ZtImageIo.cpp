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
      {EFileFormat::Png,
       "PNG",
       ".png",
       {P::Lum, P::LumA, P::RGB, P::RGBA, P::BGR, P::BGRA},
       {D::UByte, D::UShort}},
      {EFileFormat::Pbm, "PBM", ".pbm", {}, {}},
      {EFileFormat::Pgm, "PGM", ".pgm", {P::Lum}, {D::UByte, D::UShort}},
      {EFileFormat::Ppm, "PPM", ".ppm", {P::RGB}, {D::UByte, D::UShort}},
      {EFileFormat::Pnm, "PNM", ".pnm", {P::Lum, P::RGB}, {D::UByte, D::UShort}},
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
std::string DataTypeText(EDataType::ID type) {
  return CZtImageFormat::DataType2String(type).ToCString();
}

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
  throw CIoError("unknown " + std::string(what) + " '" + text +
                 "' (known: " + JoinList(known, name) + ")");
}

const char* const kStandardInput = "standard input";
const char* const kStandardOutput = "standard output";

bool IsStandardStream(const std::string& path) { return path == "-"; }

Detail::CBytes LoadFile(const std::string& path) {
  const bool standard = IsStandardStream(path);
  std::FILE* file = standard ? stdin : std::fopen(path.c_str(), "rb");
  if (file == nullptr) throw CIoError("cannot open '" + path + "': " + std::strerror(errno));
  Detail::CBytes bytes;
  unsigned char chunk[65536];
  std::size_t count = 0;
  while ((count = std::fread(chunk, 1, sizeof chunk, file)) > 0) {
    bytes.insert(bytes.end(), chunk, chunk + count);
  }
  const bool failed = std::ferror(file) != 0;
  const int error = errno;
  if (!standard) std::fclose(file);
  if (failed) {
    throw CIoError("cannot read " + (standard ? std::string(kStandardInput) : "'" + path + "'") +
                   ": " + std::strerror(error));
  }
  return bytes;
}

void ReadRaw(const Detail::CBytes& file, const CZtImageFormat& format, unsigned long long maxPixels,
             CZtImage& image) {
  Detail::CheckPixelCount(static_cast<unsigned long long>(format.Width),
                          static_cast<unsigned long long>(format.Height), maxPixels);
  const unsigned long long needed = Detail::BlockBytes(
      static_cast<unsigned long long>(format.Width), static_cast<unsigned long long>(format.Height),
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

// The name of a file or stream in messages.
std::string Shown(const std::string& path, bool output) {
  return IsStandardStream(path) ? (output ? kStandardOutput : kStandardInput) : path;
}

void CheckHoldable(const std::string& path, EFileFormat format, EPixelType::ID pixelType,
                   EDataType::ID dataType) {
  if (!CanHold(format, pixelType, dataType)) {
    throw CRequestError(Shown(path, true) + ": " + FileFormatName(format) + " files hold " +
                        DescribeHoldable(format) + ", not " + PixelTypeText(pixelType) + ", " +
                        DataTypeText(dataType));
  }
}

bool HasRawExtension(const std::string& path) {
  const std::size_t dot = path.find_last_of('.');
  const std::size_t slash = path.find_last_of('/');
  return dot != std::string::npos && (slash == std::string::npos || dot > slash) &&
         Lower(path.substr(dot)) == ".raw";
}

bool IsBayer(EPixelType::ID type) {
  return type == EPixelType::BayerRG || type == EPixelType::BayerBG ||
         type == EPixelType::BayerGR || type == EPixelType::BayerGB;
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
  const unsigned long long extent =
      static_cast<unsigned long long>(std::numeric_limits<int>::max());
  if (width > extent || height > extent || width * height > limit ||
      width * height * pixelBytes > limit) {
    throw CIoError("image of " + std::to_string(width) + "x" + std::to_string(height) + ", " +
                   PixelTypeText(pixelType) + ", " + DataTypeText(dataType) +
                   " is too large: the library sizes images in 32 bits");
  }
  return width * height * pixelBytes;
}

void CheckPixelCount(unsigned long long width, unsigned long long height,
                     unsigned long long maxPixels) {
  // Both sizes are below 2^32 wherever they come from, so the product fits.
  if (width > maxPixels || height > maxPixels || width * height > maxPixels) {
    throw CIoError("image of " + std::to_string(width) + "x" + std::to_string(height) +
                   " is larger than " + std::to_string(maxPixels) + " pixels (see --max-pixels)");
  }
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

const char* PackageVersion() { return ZT_PACKAGE_VERSION; }

EFileFormat FileFormatOf(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  const std::size_t dot = path.find_last_of('.');
  const std::string extension =
      dot == std::string::npos || (slash != std::string::npos && dot < slash)
          ? ""
          : Lower(path.substr(dot));
  std::vector<std::string> known;
  for (const auto& info : FileFormats()) {
    if (extension == info.Extension) return info.Format;
    known.emplace_back(info.Extension);
  }
  throw CIoError("unknown file format of '" + path +
                 "' (known: " + JoinList(known, [](const std::string& s) { return s; }) + ")");
}

EFileFormat ParseFileFormat(const std::string& name) {
  const std::string wanted = Lower(Trim(name));
  std::vector<std::string> known;
  for (const auto& info : FileFormats()) {
    if (wanted == info.Extension + 1 || wanted == info.Extension) return info.Format;
    known.emplace_back(info.Extension + 1);
  }
  throw CIoError("unknown file format '" + name +
                 "' (known: " + JoinList(known, [](const std::string& s) { return s; }) + ")");
}

bool DetectFileFormat(const unsigned char* bytes, std::size_t size, EFileFormat& format) {
  static const unsigned char kPngSignature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  if (size >= sizeof kPngSignature &&
      std::memcmp(bytes, kPngSignature, sizeof kPngSignature) == 0) {
    format = EFileFormat::Png;
    return true;
  }
  // A netpbm magic is 'P' and one character, followed by a blank.
  if (size < 3 || bytes[0] != 'P' || std::strchr(" \t\r\n", bytes[2]) == nullptr) return false;
  switch (bytes[1]) {
    case '1':
    case '4': format = EFileFormat::Pbm; return true;
    case '2':
    case '5': format = EFileFormat::Pgm; return true;
    case '3':
    case '6': format = EFileFormat::Ppm; return true;
    case '7': format = EFileFormat::Pam; return true;
    case 'f':
    case 'F': format = EFileFormat::Pfm; return true;
    default: return false;
  }
}

const char* FileFormatName(EFileFormat format) { return InfoOf(format).Name; }

bool HoldsLayout(EFileFormat format, EPixelType::ID pixelType) {
  const auto& types = InfoOf(format).PixelTypes;
  return std::find(types.begin(), types.end(), pixelType) != types.end();
}

bool HoldsDataType(EFileFormat format, EDataType::ID dataType) {
  const auto& types = InfoOf(format).DataTypes;
  return std::find(types.begin(), types.end(), dataType) != types.end();
}

bool CanHold(EFileFormat format, EPixelType::ID pixelType, EDataType::ID dataType) {
  return HoldsLayout(format, pixelType) && HoldsDataType(format, dataType);
}

std::string DescribeHoldable(EFileFormat format) {
  const SFileFormatInfo& info = InfoOf(format);
  if (info.PixelTypes.empty()) return "nothing written here (read only)";
  return JoinList(info.PixelTypes, PixelTypeText) + " with " +
         JoinList(info.DataTypes, DataTypeText) + " samples";
}

void ChooseTarget(EFileFormat format, EPixelType::ID sourcePixelType, EDataType::ID sourceDataType,
                  EPixelType::ID& pixelType, EDataType::ID& dataType) {
  const SFileFormatInfo& info = InfoOf(format);
  if (info.PixelTypes.empty())
    throw CRequestError(std::string(info.Name) + " files are read, not written");
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
        !std::all_of(digits.begin(), digits.end(),
                     [](unsigned char c) { return std::isdigit(c) != 0; })) {
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

SFileFacts ReadImageBytes(const std::vector<unsigned char>& bytes, const std::string& name,
                          CZtImage& image, const SReadOptions& options) {
  SFileFacts facts;
  try {
    if (options.RawFormat != nullptr) {
      facts.Format = EFileFormat::Raw;
      ReadRaw(bytes, *options.RawFormat, options.MaxPixels, image);
      facts.Details = "bytes=" + std::to_string(bytes.size());
      return facts;
    }
    if (!DetectFileFormat(bytes.data(), bytes.size(), facts.Format)) {
      EFileFormat named = EFileFormat::Raw;
      try {
        named = FileFormatOf(name);
      } catch (const CIoError&) {
        throw CIoError("not a known image format");
      }
      if (named == EFileFormat::Raw) {
        throw CIoError("a raw file needs its format given, such as \"640x480, BayerGR, UShort\"");
      }
      throw CIoError(std::string("not a ") + FileFormatName(named) + " file (bad magic)");
    }
    if (facts.Format == EFileFormat::Png) {
      Detail::ReadPng(bytes, options.MaxPixels, image, facts.Details);
    } else {
      Detail::ReadNetpbm(bytes, options.MaxPixels, image, facts.Details);
    }
  } catch (const CRequestError&) {
    throw;
  } catch (const CIoError& e) {
    throw CIoError(Shown(name, false) + ": " + e.what());
  }
  return facts;
}

SFileFacts ReadImage(const std::string& path, CZtImage& image, const SReadOptions& options) {
  return ReadImageBytes(LoadFile(path), path, image, options);
}

void ReadImageFile(const std::string& path, CZtImage& image, const CZtImageFormat* rawFormat) {
  SReadOptions options;
  if (HasRawExtension(path)) {
    if (rawFormat == nullptr) {
      throw CIoError(path +
                     ": a .raw file needs its format given, such as \"640x480, BayerGR, UShort\"");
    }
    options.RawFormat = rawFormat;
  }
  ReadImage(path, image, options);
}

void WriteImageTo(std::FILE* file, EFileFormat format, const IImage& image) {
  switch (format) {
    case EFileFormat::Png: Detail::WritePng(image, file); break;
    case EFileFormat::Raw: WriteRaw(image, file); break;
    default: Detail::WriteNetpbm(format, image, file); break;
  }
}

void WriteImage(const std::string& path, EFileFormat format, const IImage& image) {
  EPixelType::ID pixelType{};
  EDataType::ID dataType{};
  image.GetType(pixelType, dataType);
  CheckHoldable(path, format, pixelType, dataType);
  if (IsStandardStream(path)) {
    try {
      WriteImageTo(stdout, format, image);
    } catch (const CIoError& e) {
      throw CIoError(std::string(kStandardOutput) + ": " + e.what());
    }
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
      throw CIoError(std::string("cannot write ") + kStandardOutput + ": " + std::strerror(errno));
    }
    return;
  }
  CAtomicFile file(path);
  try {
    WriteImageTo(file.File(), format, image);
  } catch (const CIoError& e) {
    throw CIoError(path + ": " + e.what());
  }
  file.Commit();
}

void WriteImageFile(const std::string& path, const IImage& image) {
  WriteImage(path, FileFormatOf(path), image);
}

void ConvertImage(const CZtImage& source, CZtImage& target, EPixelType::ID pixelType,
                  EDataType::ID dataType) {
  const CZtImageFormat& format = source.GetFormat();
  const std::string refused = "cannot convert " + FormatText(source) + " to " +
                              PixelTypeText(pixelType) + ", " + DataTypeText(dataType);
  try {
    // Conversion addresses the target by the pixel count, past a wrapped block size.
    Detail::BlockBytes(static_cast<unsigned long long>(format.Width),
                       static_cast<unsigned long long>(format.Height), pixelType, dataType);
  } catch (const CIoError& e) {
    throw CIoError(refused + ": " + e.what());
  }
  if (!source.ConvertType(target, pixelType, dataType)) throw CIoError(refused);
}

EFileFormat CheckRequest(const SConvertRequest& request) {
  EFileFormat format = EFileFormat::Raw;
  if (request.OutputFormat != nullptr) {
    format = *request.OutputFormat;
  } else if (IsStandardStream(request.Output)) {
    throw CRequestError("writing to standard output needs its format given (-f)");
  } else {
    try {
      format = FileFormatOf(request.Output);
    } catch (const CIoError& e) {
      throw CRequestError(e.what());
    }
  }
  if (InfoOf(format).PixelTypes.empty()) {
    throw CRequestError(Shown(request.Output, true) + ": " + FileFormatName(format) +
                        " files are read, not written");
  }
  if (request.Read.RawFormat == nullptr && HasRawExtension(request.Input)) {
    {
      throw CRequestError(
          request.Input +
          ": a raw file needs its format given, such as \"640x480, BayerGR, UShort\"");
    }
  }
  const EPixelType::ID* pixelType = request.PixelType;
  const EDataType::ID* dataType = request.DataType;
  // The library writes a Bayer layout only as a copy of the same format.
  if (pixelType != nullptr && IsBayer(*pixelType)) {
    const CZtImageFormat* raw = request.Read.RawFormat;
    if (raw == nullptr || raw->PixelType != *pixelType ||
        (dataType != nullptr && *dataType != raw->DataType)) {
      throw CRequestError(std::string("a ") + PixelTypeText(*pixelType) +
                          " target is only a copy of a raw input of that layout and sample type");
    }
  }
  const auto refuse = [&](const std::string& what) {
    throw CRequestError(Shown(request.Output, true) + ": " + FileFormatName(format) +
                        " files hold " + DescribeHoldable(format) + ", not " + what);
  };
  if (pixelType != nullptr && dataType != nullptr) {
    if (!CanHold(format, *pixelType, *dataType))
      refuse(PixelTypeText(*pixelType) + ", " + DataTypeText(*dataType));
  } else if (pixelType != nullptr && !HoldsLayout(format, *pixelType)) {
    refuse(PixelTypeText(*pixelType));
  } else if (dataType != nullptr && !HoldsDataType(format, *dataType)) {
    refuse(DataTypeText(*dataType));
  }
  return format;
}

SConversion ConvertFile(const SConvertRequest& request) {
  const EFileFormat outputFormat = CheckRequest(request);
  CZtImage source;
  ReadImage(request.Input, source, request.Read);

  SConversion conversion{source.GetFormat(), source.GetFormat()};
  ChooseTarget(outputFormat, conversion.Source.PixelType, conversion.Source.DataType,
               conversion.Target.PixelType, conversion.Target.DataType);
  if (request.PixelType != nullptr) conversion.Target.PixelType = *request.PixelType;
  if (request.DataType != nullptr) conversion.Target.DataType = *request.DataType;
  CheckHoldable(request.Output, outputFormat, conversion.Target.PixelType,
                conversion.Target.DataType);
  if (conversion.Target == conversion.Source) {
    WriteImage(request.Output, outputFormat, source);
  } else {
    CZtImage target;
    ConvertImage(source, target, conversion.Target.PixelType, conversion.Target.DataType);
    WriteImage(request.Output, outputFormat, target);
  }
  return conversion;
}

SConversion ConvertFile(const std::string& input, const std::string& output,
                        const EPixelType::ID* pixelType, const EDataType::ID* dataType,
                        const CZtImageFormat* rawFormat) {
  SConvertRequest request;
  request.Input = input;
  request.Output = output;
  request.PixelType = pixelType;
  request.DataType = dataType;
  if (HasRawExtension(input)) request.Read.RawFormat = rawFormat;
  return ConvertFile(request);
}

}  // namespace ZtTools
