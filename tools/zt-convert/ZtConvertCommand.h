#ifndef ZT_TOOLS_ZTCONVERTCOMMAND_H
#define ZT_TOOLS_ZTCONVERTCOMMAND_H

// The command line of zt-convert, apart from main so that tests run it in
// the same process.

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "ZtImageIo.h"

namespace ZtTools {

// A command line that cannot be run; exit code 2.
class CUsageError : public CRequestError {
public:
  using CRequestError::CRequestError;
};

struct SConvertOptions {
  // INPUT and OUTPUT of a conversion, or the files of --info.
  std::vector<std::string> Files;
  std::optional<EFileFormat> OutputFormat;
  std::optional<EPixelType::ID> PixelType;
  std::optional<EDataType::ID> DataType;
  std::optional<CZtImageFormat> RawFormat;
  unsigned long long MaxPixels = kDefaultMaxPixels;
  bool Info = false;
  bool Verbose = false;
  bool Help = false;
  bool Version = false;
};

// Exit codes.
enum EExitCode { kExitSuccess = 0, kExitFailure = 1, kExitUsage = 2 };

const char* ConvertUsage();
// Parses the arguments after the program name. Throws CUsageError.
SConvertOptions ParseConvertArguments(const std::vector<std::string>& arguments);
// Parses and runs; failures go to `err` as one line "zt-convert: <reason>".
// Images on standard output go to stdout itself, not to `out`.
int RunConvertCommand(const std::vector<std::string>& arguments, std::ostream& out,
                      std::ostream& err);

}  // namespace ZtTools

#endif
