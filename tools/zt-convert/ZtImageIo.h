#ifndef ZT_TOOLS_ZTIMAGEIO_H
#define ZT_TOOLS_ZTIMAGEIO_H

// Image files for the tools and examples: reading a file into a CZtImage,
// choosing a target format a file can hold, converting with the library and
// writing the result without ever leaving a partial file behind.
//
// File formats, as written:
//
//   .png               Lum, LumA, RGB, RGBA, BGR, BGRA   UByte, UShort   (libpng)
//   .pgm               Lum                               UByte, UShort
//   .ppm               RGB                               UByte, UShort
//   .pnm               Lum, RGB                          UByte, UShort
//   .pam               Lum, LumA, RGB, RGBA              UByte, UShort
//   .pfm               Lum, RGB                          Float
//   .raw               every layout                      every type
//   .pbm               read only (as Lum, UByte: black 0, white 255)
//
// An input's format is recognised by its content (the PNG signature, the
// netpbm and PFM magic); its extension counts only when the content says
// nothing, which leaves .raw. The netpbm files are read whatever their
// member of the family, plain or binary; a maxval other than 255 or 65535
// is rescaled to the full range of UByte or UShort. A .raw file is the bare
// pixel block in the machine's byte order; its format travels outside it.
// The name "-" stands for standard input or output.
//
// Samples are taken as stored: no gamma, no colour management. Failures are
// CIoError, whose what() is one line naming the file.

#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "ZtCoreEx.h"

namespace ZtTools {

using Zt::CZtImage;
using Zt::CZtImageFormat;
using Zt::EDataType;
using Zt::EPixelType;
using Zt::IImage;

// A failure of reading, converting or writing, with a one-line message.
class CIoError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

// A request that cannot be carried out whatever the files hold: an unknown
// output format, a layout or type the output cannot hold. Found before any
// input is read.
class CRequestError : public CIoError {
public:
  using CIoError::CIoError;
};

enum class EFileFormat { Png, Pbm, Pgm, Ppm, Pnm, Pam, Pfm, Raw };

// Images larger than this are refused unless the caller allows more:
// 16384 x 16384.
inline constexpr unsigned long long kDefaultMaxPixels = 268435456ULL;

// The closed lists of the library, in its display order.
inline constexpr EPixelType::ID kAllPixelTypes[] = {
    EPixelType::RGB,     EPixelType::RGBA,    EPixelType::Lum,     EPixelType::LumA,
    EPixelType::BayerRG, EPixelType::BayerBG, EPixelType::BayerGR, EPixelType::BayerGB,
    EPixelType::BGR,     EPixelType::BGRA};
inline constexpr EDataType::ID kAllDataTypes[] = {
    EDataType::Byte, EDataType::UByte, EDataType::Short, EDataType::UShort,
    EDataType::Int,  EDataType::UInt,  EDataType::Float, EDataType::Double};

// The version of the library and its tools, "1.0.0".
const char* PackageVersion();

// The format of a file name, by its extension (case-insensitive). Throws
// CIoError for any other extension.
EFileFormat FileFormatOf(const std::string& path);
// The format a name of a format ("png", "PGM", ...) or its extension names.
// Throws CIoError for others.
EFileFormat ParseFileFormat(const std::string& name);
// The format the first bytes of a file show, if any (never Raw or Pnm).
bool DetectFileFormat(const unsigned char* bytes, std::size_t size, EFileFormat& format);
// "PNG", "PGM", ... for messages.
const char* FileFormatName(EFileFormat format);
// Whether the format holds the layout with some sample type, or the type with some layout.
bool HoldsLayout(EFileFormat format, EPixelType::ID pixelType);
bool HoldsDataType(EFileFormat format, EDataType::ID dataType);
// Whether files of the format hold images of this layout and sample type.
bool CanHold(EFileFormat format, EPixelType::ID pixelType, EDataType::ID dataType);
// "Lum, LumA, RGB or RGBA with UByte or UShort samples": what CanHold accepts.
std::string DescribeHoldable(EFileFormat format);

// The nearest format the file can hold, for a source of the given types:
// the source's own types where the file holds them; else the holdable layout
// that keeps colour and alpha best, and UShort for sources wider than 8 bits
// (UByte otherwise) or Float for PFM.
void ChooseTarget(EFileFormat format, EPixelType::ID sourcePixelType, EDataType::ID sourceDataType,
                  EPixelType::ID& pixelType, EDataType::ID& dataType);

// Layout and sample type names as the library displays them ("BayerGR",
// "UShort"), matched without regard to case. Throw CIoError for others.
EPixelType::ID ParsePixelType(const std::string& text);
EDataType::ID ParseDataType(const std::string& text);
// "640x480, BayerGR, UShort" (the library's own format text; blanks after the
// commas optional). Throws CIoError unless both sizes are at least 1.
CZtImageFormat ParseImageFormat(const std::string& text);
// The format text of the library ("640x480, RGB, UByte").
std::string FormatText(const CZtImageFormat& format);
std::string FormatText(const IImage& image);

struct SReadOptions {
  // With a format here the input is a raw block of it, whatever its content.
  const CZtImageFormat* RawFormat = nullptr;
  unsigned long long MaxPixels = kDefaultMaxPixels;
};

// What reading found: the format, and its own facts as "key=value" pairs
// ("bit-depth=8 colour=palette interlace=none transparency=trns").
struct SFileFacts {
  EFileFormat Format = EFileFormat::Raw;
  std::string Details;
};

// Reads an image held in memory; name is for the extension and messages.
SFileFacts ReadImageBytes(const std::vector<unsigned char>& bytes, const std::string& name,
                          CZtImage& image, const SReadOptions& options);
// Reads a file ("-": standard input) into image, in the layout and sample
// type the file holds.
SFileFacts ReadImage(const std::string& path, CZtImage& image, const SReadOptions& options);
// The same, for a file whose content or .raw extension gives its format;
// rawFormat is required for a .raw file and ignored for the others.
void ReadImageFile(const std::string& path, CZtImage& image,
                   const CZtImageFormat* rawFormat = nullptr);
// Writes image to path ("-": standard output) in the given format, which
// must hold the image's types (CanHold). A file is written under a temporary
// name in the same directory and renamed into place only when complete.
void WriteImage(const std::string& path, EFileFormat format, const IImage& image);
// The same in the format of the path's extension.
void WriteImageFile(const std::string& path, const IImage& image);
// Writes image in the format to an open stream.
void WriteImageTo(std::FILE* file, EFileFormat format, const IImage& image);

// The library's conversion of source into target; CIoError when the library
// refuses the pair of formats.
void ConvertImage(const CZtImage& source, CZtImage& target, EPixelType::ID pixelType,
                  EDataType::ID dataType);

// The whole job of zt-convert: read Input, convert it to the given types (or,
// where none is given, the one ChooseTarget picks for the output's format)
// and write Output.
struct SConvertRequest {
  std::string Input;
  std::string Output;
  const EFileFormat* OutputFormat = nullptr;  // else the extension of Output
  const EPixelType::ID* PixelType = nullptr;
  const EDataType::ID* DataType = nullptr;
  SReadOptions Read;
};
// Checks what the request alone shows and gives the output's format; throws
// CRequestError.
EFileFormat CheckRequest(const SConvertRequest& request);
// Gives the formats read and written. Throws CRequestError as CheckRequest
// does, before reading, and CIoError for a failure of the files.
struct SConversion {
  CZtImageFormat Source;
  CZtImageFormat Target;
};
SConversion ConvertFile(const SConvertRequest& request);
SConversion ConvertFile(const std::string& input, const std::string& output,
                        const EPixelType::ID* pixelType, const EDataType::ID* dataType,
                        const CZtImageFormat* rawFormat = nullptr);

}  // namespace ZtTools

#endif
