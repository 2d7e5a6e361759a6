#include <gtest/gtest.h>

#include "CGuid.h"

using Zt::Interop::Runtime30::CGuid;

namespace {

TEST(CGuid, ParsesTheBracedTextIntoItsFields) {
  constexpr CGuid guid("{3500903C-1B00-4CDB-AFC3-53C91539D6F9}");
  static_assert(guid.Data1 == 0x3500903Cu, "built by the compiler");
  EXPECT_EQ(guid.Data2, 0x1B00);
  EXPECT_EQ(guid.Data3, 0x4CDB);
  const unsigned char tail[8] = {0xAF, 0xC3, 0x53, 0xC9, 0x15, 0x39, 0xD6, 0xF9};
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(guid.Data4[i], tail[i]) << i;
  }
  EXPECT_EQ(sizeof(CGuid), 16u);
}

TEST(CGuid, HexDigitsOfEitherCaseGiveTheSameGuid) {
  EXPECT_EQ(CGuid("{944d12c7-608c-4509-9755-66a898b5432c}"),
            CGuid("{944D12C7-608C-4509-9755-66A898B5432C}"));
}

TEST(CGuid, EveryByteTakesPartInTheComparison) {
  const CGuid base("{2C95F24C-6098-4354-A291-A8A3C0D0EFAE}");
  // Change one hex digit at each of the 32 digit positions in turn.
  const char* text = "{2C95F24C-6098-4354-A291-A8A3C0D0EFAE}";
  for (int i = 1; i < 37; ++i) {
    if (text[i] == '-') {
      continue;
    }
    char changed[39];
    for (int k = 0; k < 39; ++k) {
      changed[k] = text[k];
    }
    changed[i] = text[i] == '0' ? '1' : '0';
    EXPECT_NE(CGuid(changed), base) << "digit " << i;
    EXPECT_FALSE(CGuid(changed) == base);
  }
  CGuid copy = base;
  EXPECT_EQ(copy, base);
}

TEST(CGuid, MalformedTextGivesTheZeroGuid) {
  const CGuid zero;
  const char* bad[] = {nullptr,
                       "",
                       "3500903C-1B00-4CDB-AFC3-53C91539D6F9",
                       "{3500903C-1B00-4CDB-AFC3-53C91539D6F}",
                       "{3500903C-1B00-4CDB-AFC3-53C91539D6F9}x",
                       "{3500903C_1B00-4CDB-AFC3-53C91539D6F9}",
                       "{3500903G-1B00-4CDB-AFC3-53C91539D6F9}"};
  for (const char* text : bad) {
    EXPECT_EQ(CGuid(text), zero) << (text != nullptr ? text : "null");
  }
}

}  // namespace
