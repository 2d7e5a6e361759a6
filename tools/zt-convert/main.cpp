// zt-convert: reads an image file, converts it with Zt.Core.Ex and writes it.
// See ZtConvertCommand.cpp for the options, or run zt-convert --help.

#include <iostream>
#include <string>
#include <vector>

#include "ZtConvertCommand.h"

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  return ZtTools::RunConvertCommand(arguments, std::cout, std::cerr);
}
