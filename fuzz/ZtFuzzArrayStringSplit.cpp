// CZtArrayString's split constructor against the field rules: the first
// byte is the delimiter, the rest the text, which a CZtString ends at its
// first NUL.

#include <cstdint>
#include <string>

#include "ZtArrayString.h"
#include "ZtFuzzCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const char delimiter = char(data[0]);
  const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::string text = input.substr(0, input.find('\0'));
  const std::vector<std::string> fields = ZtFuzz::SplitFields(text, delimiter);
  const Zt::CZtArrayString array(Zt::CZtString(input.c_str()), delimiter);
  const std::string context =
      "split of \"" + text + "\" at byte " + std::to_string(std::uint8_t(delimiter));
  ZT_FUZZ_CHECK(array.IsValid() && array.Length() == fields.size(), context);
  for (std::size_t i = 0; i < fields.size(); ++i) {
    ZT_FUZZ_CHECK(fields[i] == array[i].ToCString() && array[i].Length() == fields[i].size(),
                  context + ": field " + std::to_string(i));
  }
  return 0;
}
