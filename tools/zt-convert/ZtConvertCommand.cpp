#include "ZtConvertCommand.h"

namespace ZtTools {

const char* ConvertUsage() {
  return "usage: zt-convert [options] INPUT OUTPUT\n"
         "\n"
         "Reads INPUT, converts its pixels with Zt.Core.Ex and writes OUTPUT. The file\n"
         "formats follow the extensions:\n"
         "  .png  Lum, LumA, RGB, RGBA, BGR, BGRA with UByte or UShort samples\n"
         "  .pgm  Lum          .ppm  RGB          (UByte or UShort)\n"
         "  .pam  Lum, LumA, RGB, RGBA with UByte or UShort samples\n"
         "  .pfm  Lum or RGB with Float samples\n"
         "  .raw  the bare pixel block of any format, in the machine's byte order\n"
         "\n"
         "options:\n"
         "  -l, --layout LAYOUT     target layout: RGB, RGBA, BGR, BGRA, Lum, LumA\n"
         "                          (a Bayer layout only as a copy of a Bayer input)\n"
         "  -t, --type TYPE         target sample type: Byte, UByte, Short, UShort, Int,\n"
         "                          UInt, Float, Double\n"
         "  -r, --raw-format FORMAT format of a .raw INPUT, e.g. \"640x480, BayerGR, UShort\"\n"
         "  -v, --verbose           print the formats read and written\n"
         "  -h, --help              print this text\n"
         "\n"
         "Without --layout or --type, OUTPUT gets the input's layout and type where its\n"
         "format holds them, and the nearest ones it holds otherwise.\n"
         "Exit status: 0 on success, 1 when reading, converting or writing failed,\n"
         "2 for a bad command line.\n";
}

SConvertOptions ParseConvertArguments(const std::vector<std::string>& arguments) {
  SConvertOptions options;
  std::vector<std::string> files;
  bool optionsEnded = false;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    std::string argument = arguments[i];
    if (optionsEnded || argument.size() < 2 || argument[0] != '-') {
      files.push_back(argument);
      continue;
    }
    if (argument == "--") {
      optionsEnded = true;
      continue;
    }
    // --name=value is the same as --name value.
    std::optional<std::string> inlineValue;
    const std::size_t equals = argument.find('=');
    if (argument.compare(0, 2, "--") == 0 && equals != std::string::npos) {
      inlineValue = argument.substr(equals + 1);
      argument.resize(equals);
    }
    const auto value = [&]() -> std::string {
      if (inlineValue) return *inlineValue;
      if (i + 1 >= arguments.size()) throw CUsageError(argument + " needs a value");
      return arguments[++i];
    };
    try {
      if (argument == "-l" || argument == "--layout") {
        options.PixelType = ParsePixelType(value());
      } else if (argument == "-t" || argument == "--type") {
        options.DataType = ParseDataType(value());
      } else if (argument == "-r" || argument == "--raw-format") {
        options.RawFormat = ParseImageFormat(value());
      } else if ((argument == "-v" || argument == "--verbose") && !inlineValue) {
        options.Verbose = true;
      } else if ((argument == "-h" || argument == "--help") && !inlineValue) {
        options.Help = true;
      } else {
        throw CUsageError("unknown option " + arguments[i]);
      }
    } catch (const CIoError& e) {
      throw CUsageError(e.what());
    }
  }
  if (options.Help) return options;
  if (files.size() != 2) {
    throw CUsageError(files.size() < 2 ? "needs an INPUT and an OUTPUT file" : "too many files: " + files[2]);
  }
  options.Input = files[0];
  options.Output = files[1];
  if (options.RawFormat && FileFormatOf(options.Input) != EFileFormat::Raw) {
    throw CUsageError("--raw-format is for a .raw INPUT only");
  }
  return options;
}

int RunConvertCommand(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
  try {
    const SConvertOptions options = ParseConvertArguments(arguments);
    if (options.Help) {
      out << ConvertUsage();
      return kExitSuccess;
    }
    const SConversion conversion =
        ConvertFile(options.Input, options.Output, options.PixelType ? &*options.PixelType : nullptr,
                    options.DataType ? &*options.DataType : nullptr,
                    options.RawFormat ? &*options.RawFormat : nullptr);
    if (options.Verbose) {
      out << options.Input << " (" << FormatText(conversion.Source) << ") -> " << options.Output << " ("
          << FormatText(conversion.Target) << ")\n";
    }
    return kExitSuccess;
  } catch (const CUsageError& e) {
    err << "zt-convert: " << e.what() << " (see zt-convert --help)\n";
    return kExitUsage;
  } catch (const std::exception& e) {
    err << "zt-convert: " << e.what() << "\n";
    return kExitFailure;
  }
}

}  // namespace ZtTools
