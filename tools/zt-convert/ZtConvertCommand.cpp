#include "ZtConvertCommand.h"

#include <algorithm>
#include <cctype>

namespace ZtTools {

const char* ConvertUsage() {
  return "usage: zt-convert [options] INPUT OUTPUT\n"
         "       zt-convert --info FILE...\n"
         "\n"
         "Reads INPUT, converts its pixels with Zt.Core.Ex and writes OUTPUT; \"-\" is\n"
         "standard input or output. INPUT's format is recognised by its content;\n"
         "OUTPUT's follows -f or else its extension:\n"
         "  png  Lum, LumA, RGB, RGBA, BGR, BGRA with UByte or UShort samples\n"
         "  pgm  Lum     ppm  RGB     pnm  Lum or RGB     (UByte or UShort)\n"
         "  pam  Lum, LumA, RGB, RGBA with UByte or UShort samples\n"
         "  pfm  Lum or RGB with Float samples\n"
         "  raw  the bare pixel block of any format, in the machine's byte order\n"
         "  pbm  and the plain netpbm files are read, not written\n"
         "\n"
         "options:\n"
         "  -l, --layout LAYOUT     target layout: RGB, RGBA, BGR, BGRA, Lum, LumA\n"
         "                          (a Bayer layout only as a copy of a raw input)\n"
         "  -t, --type TYPE         target sample type: Byte, UByte, Short, UShort, Int,\n"
         "                          UInt, Float, Double\n"
         "  -f, --format FORMAT     format of OUTPUT, whatever its name\n"
         "  -r, --raw-format FORMAT INPUT is a raw block of FORMAT, e.g. \"640x480, BayerGR, "
         "UShort\"\n"
         "      --max-pixels N      refuse larger images (default 268435456, 16384x16384)\n"
         "      --info              print each FILE's format instead of converting\n"
         "  -v, --verbose           print the formats read and written (to stderr\n"
         "                          when OUTPUT is standard output)\n"
         "  -h, --help              print this text\n"
         "      --version           print the version\n"
         "\n"
         "Without --layout or --type, OUTPUT gets the input's layout and type where its\n"
         "format holds them, and the nearest ones it holds otherwise.\n"
         "Exit status: 0 on success, 1 when reading, converting or writing failed,\n"
         "2 for a bad command line.\n";
}

namespace {

unsigned long long ParseCount(const std::string& text, const std::string& option) {
  if (text.empty() || text.size() > 19 ||
      !std::all_of(text.begin(), text.end(),
                   [](unsigned char c) { return std::isdigit(c) != 0; })) {
    throw CUsageError(option + " needs a positive whole number, not '" + text + "'");
  }
  const unsigned long long value = std::stoull(text);
  if (value == 0) throw CUsageError(option + " needs a positive whole number, not '" + text + "'");
  return value;
}

// "FILE: FORMAT WxH, Layout, Type; details".
void PrintInfo(const std::string& path, const SConvertOptions& options, std::ostream& out) {
  SReadOptions read;
  read.RawFormat = options.RawFormat ? &*options.RawFormat : nullptr;
  read.MaxPixels = options.MaxPixels;
  CZtImage image;
  const SFileFacts facts = ReadImage(path, image, read);
  out << path << ": " << FileFormatName(facts.Format) << " " << FormatText(image) << "; "
      << facts.Details << "\n";
}

}  // namespace

SConvertOptions ParseConvertArguments(const std::vector<std::string>& arguments) {
  SConvertOptions options;
  bool optionsEnded = false;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    std::string argument = arguments[i];
    if (optionsEnded || argument.size() < 2 || argument[0] != '-') {
      options.Files.push_back(argument);
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
    const auto flag = [&](const char* shortName, const char* longName) {
      return (argument == shortName || argument == longName) && !inlineValue;
    };
    try {
      if (argument == "-l" || argument == "--layout") {
        options.PixelType = ParsePixelType(value());
      } else if (argument == "-t" || argument == "--type") {
        options.DataType = ParseDataType(value());
      } else if (argument == "-f" || argument == "--format") {
        options.OutputFormat = ParseFileFormat(value());
      } else if (argument == "-r" || argument == "--raw-format") {
        options.RawFormat = ParseImageFormat(value());
      } else if (argument == "--max-pixels") {
        options.MaxPixels = ParseCount(value(), argument);
      } else if (flag("--info", "--info")) {
        options.Info = true;
      } else if (flag("-v", "--verbose")) {
        options.Verbose = true;
      } else if (flag("-h", "--help")) {
        options.Help = true;
      } else if (flag("--version", "--version")) {
        options.Version = true;
      } else {
        throw CUsageError("unknown option " + arguments[i]);
      }
    } catch (const CUsageError&) {
      throw;
    } catch (const CIoError& e) {
      throw CUsageError(e.what());
    }
  }
  if (options.Help || options.Version) return options;
  if (options.Info) {
    if (options.Files.empty()) throw CUsageError("--info needs at least one FILE");
    if (options.OutputFormat || options.PixelType || options.DataType) {
      throw CUsageError("--info takes no --format, --layout or --type");
    }
    return options;
  }
  if (options.Files.size() != 2) {
    throw CUsageError(options.Files.size() < 2 ? "needs an INPUT and an OUTPUT file"
                                               : "too many files: " + options.Files[2]);
  }
  return options;
}

int RunConvertCommand(const std::vector<std::string>& arguments, std::ostream& out,
                      std::ostream& err) {
  try {
    const SConvertOptions options = ParseConvertArguments(arguments);
    if (options.Help) {
      out << ConvertUsage();
      return kExitSuccess;
    }
    if (options.Version) {
      out << "zt-convert (Zt.Core.Ex) " << PackageVersion() << "\n";
      return kExitSuccess;
    }
    if (options.Info) {
      // Every file is looked at; any failure makes the exit status 1.
      int status = kExitSuccess;
      for (const std::string& path : options.Files) {
        try {
          PrintInfo(path, options, out);
        } catch (const std::exception& e) {
          err << "zt-convert: " << e.what() << "\n";
          status = kExitFailure;
        }
      }
      return status;
    }
    SConvertRequest request;
    request.Input = options.Files[0];
    request.Output = options.Files[1];
    request.OutputFormat = options.OutputFormat ? &*options.OutputFormat : nullptr;
    request.PixelType = options.PixelType ? &*options.PixelType : nullptr;
    request.DataType = options.DataType ? &*options.DataType : nullptr;
    request.Read.RawFormat = options.RawFormat ? &*options.RawFormat : nullptr;
    request.Read.MaxPixels = options.MaxPixels;
    CheckRequest(request);
    const SConversion conversion = ConvertFile(request);
    if (options.Verbose) {
      // Standard output may hold the image itself.
      std::ostream& report = request.Output == "-" ? err : out;
      report << request.Input << " (" << FormatText(conversion.Source) << ") -> " << request.Output
             << " (" << FormatText(conversion.Target) << ")\n";
    }
    return kExitSuccess;
  } catch (const CRequestError& e) {
    err << "zt-convert: " << e.what() << " (see zt-convert --help)\n";
    return kExitUsage;
  } catch (const std::exception& e) {
    err << "zt-convert: " << e.what() << "\n";
    return kExitFailure;
  }
}

}  // namespace ZtTools
