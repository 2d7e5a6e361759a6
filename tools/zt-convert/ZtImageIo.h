#ifndef ZT_TOOLS_ZTIMAGEIO_H
#define ZT_TOOLS_ZTIMAGEIO_H

// Image files for the tools and examples: reading a file into a CZtImage,
// choosing a target format a file can hold, converting with the library and
// writing the result without ever leaving a partial file behind.
//
// File formats (chosen by the file name's extension):
//
//   .png               Lum, LumA, RGB, RGBA, BGR, BGRA   UByte, UShort   (libpng)
//   .pgm               Lum                               UByte, UShort
//   .ppm               RGB                               UByte, UShort
//   .pam               Lum, LumA, RGB, RGBA              UByte, UShort
//   .pfm               Lum, RGB                          Float
//   .raw               every layout                      every type
//
// The netpbm files are read whatever their magic within the family (a .ppm
// file holding P5 reads as Lum); a maxval other than 255 or 65535 is
// rescaled to the full range of UByte or UShort. A .raw file is the bare
// pixel block in the machine's byte order; its format travels outside it.
//
// Samples are taken as stored: no gamma, no colour management. Failures are
// CIoError, whose what() is one line naming the file.

#include <stdexcept>
#include <string>

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

enum class EFileFormat { Png, Pgm, Ppm, Pam, Pfm, Raw };

// The closed lists of the library, in its display order.
inline constexpr EPixelType::ID kAllPixelTypes[] = {
    EPixelType::RGB,     EPixelType::RGBA,    EPixelType::Lum,     EPixelType::LumA,
    EPixelType::BayerRG, EPixelType::BayerBG, EPixelType::BayerGR, EPixelType::BayerGB,
    EPixelType::BGR,     EPixelType::BGRA};
inline constexpr EDataType::ID kAllDataTypes[] = {
    EDataType::Byte, EDataType::UByte, EDataType::Short, EDataType::UShort,
    EDataType::Int,  EDataType::UInt,  EDataType::Float, EDataType::Double};

// The format of a file name, by its extension (case-insensitive). Throws
// CIoError for any other extension.
EFileFormat FileFormatOf(const std::string& path);
// "PNG", "PGM", ... for messages.
const char* FileFormatName(EFileFormat format);
// Whether files of the format hold images of this layout and sample type.
bool CanHold(EFileFormat format, EPixelType::ID pixelType, EDataType::ID dataType);
// "Lum, LumA, RGB or RGBA with UByte or UShort samples": what CanHold accepts.
std::string DescribeHoldable(EFileFormat format);

// The nearest format the file can hold, for a source of the given types:
// the source's own types where the file holds them; else the holdable layout
// that keeps colour and alpha best, and UShort for sources wider than 8 bits
// (UByte otherwise) or Float for PFM.
void ChooseTarget(EFileFormat format, EPixelType::ID sourcePixelType,
                  EDataType::ID sourceDataType, EPixelType::ID& pixelType,
                  EDataType::ID& dataType);

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

// Reads a file into image, in the layout and sample type the file holds.
// rawFormat is required for .raw files and ignored for the others.
void ReadImageFile(const std::string& path, CZtImage& image,
                   const CZtImageFormat* rawFormat = nullptr);
// Writes image to path in the format of its extension, which must hold the
// image's types (CanHold). The file is written under a temporary name in the
// same directory and renamed into place only when complete.
void WriteImageFile(const std::string& path, const IImage& image);

// The library's conversion of source into target; CIoError when the library
// refuses the pair of formats.
void ConvertImage(const CZtImage& source, CZtImage& target, EPixelType::ID pixelType,
                  EDataType::ID dataType);

// Reads input, converts it to the given types (or, for a null type, the one
// ChooseTarget picks for the output's format) and writes output: the whole
// job of zt-convert. Gives the formats read and written.
struct SConversion {
  CZtImageFormat Source;
  CZtImageFormat Target;
};
SConversion ConvertFile(const std::string& input, const std::string& output,
                        const EPixelType::ID* pixelType, const EDataType::ID* dataType,
                        const CZtImageFormat* rawFormat = nullptr);

}  // namespace ZtTools

#endif
