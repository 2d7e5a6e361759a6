#ifndef ZT_TOOLS_ZTCONVERTCOMMAND_H
#define ZT_TOOLS_ZTCONVERTCOMMAND_H

// The command line of zt-convert, apart from main so that tests run it in
// the same process.

#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "ZtImageIo.h"

namespace ZtTools {

// A command line that cannot be run; exit code 2.
class CUsageError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

struct SConvertOptions {
  std::string Input;
  std::string Output;
  std::optional<EPixelType::ID> PixelType;
  std::optional<EDataType::ID> DataType;
  std::optional<CZtImageFormat> RawFormat;
  bool Verbose = false;
  bool Help = false;
};

// Exit codes.
enum EExitCode { kExitSuccess = 0, kExitFailure = 1, kExitUsage = 2 };

const char* ConvertUsage();
// Parses the arguments after the program name. Throws CUsageError.
SConvertOptions ParseConvertArguments(const std::vector<std::string>& arguments);
// Parses and runs; failures go to `err` as one line "zt-convert: <reason>".
int RunConvertCommand(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);

}  // namespace ZtTools

#endif
