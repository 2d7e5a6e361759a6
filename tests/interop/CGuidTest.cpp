#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CGuid.h"

using Zt::Interop::Runtime30::CGuid;

namespace {

TEST(CGuid, ParsesTheBracedTextOfEitherCaseIntoItsFields) {
  constexpr CGuid guid("{3500903C-1B00-4CDB-AFC3-53C91539D6F9}");
  static_assert(guid.Data1 == 0x3500903Cu && sizeof(CGuid) == 16, "built by the compiler");
  std::vector<unsigned> fields{guid.Data2, guid.Data3};
  fields.insert(fields.end(), guid.Data4, guid.Data4 + 8);
  EXPECT_EQ(fields, (std::vector<unsigned>{0x1B00, 0x4CDB, 0xAF, 0xC3, 0x53, 0xC9, 0x15, 0x39, 0xD6,
                                           0xF9}));
  EXPECT_EQ(CGuid("{944d12c7-608c-4509-9755-66a898b5432c}"),
            CGuid("{944D12C7-608C-4509-9755-66A898B5432C}"));
}

TEST(CGuid, EveryDigitTakesPartInTheComparison) {
  const std::string text = "{2C95F24C-6098-4354-A291-A8A3C0D0EFAE}";
  const CGuid base(text.c_str());
  for (std::size_t i = 1; i < 37; ++i) {
    std::string changed = text;
    changed[i] = text[i] == '0' ? '1' : '0';
    if (text[i] == '-') continue;
    EXPECT_TRUE(CGuid(changed.c_str()) != base && !(CGuid(changed.c_str()) == base)) << i;
  }
}

TEST(CGuid, MalformedTextGivesTheZeroGuid) {
  for (const char* text :
       {static_cast<const char*>(nullptr), "", "3500903C-1B00-4CDB-AFC3-53C91539D6F9",
        "{3500903C-1B00-4CDB-AFC3-53C91539D6F}", "{3500903C-1B00-4CDB-AFC3-53C91539D6F9}x",
        "{3500903C_1B00-4CDB-AFC3-53C91539D6F9}", "{3500903G-1B00-4CDB-AFC3-53C91539D6F9}"}) {
    EXPECT_EQ(CGuid(text), CGuid()) << (text != nullptr ? text : "null");
  }
}

}  // namespace
