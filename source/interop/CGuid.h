#ifndef ZT_INTEROP_CGUID_H
#define ZT_INTEROP_CGUID_H

#include "ZtInteropExport.h"

namespace Zt {
namespace Interop {
namespace Runtime30 {

// A 16-byte globally unique identifier, copied as plain data.
//
// The text constructor is constexpr, so a GUID named in code is built by the
// compiler and never needs code that runs when a library is loaded.
class ZT_INTEROP_API CGuid {
public:
  unsigned int Data1;
  unsigned short Data2;
  unsigned short Data3;
  unsigned char Data4[8];

  // The all-zero GUID.
  constexpr CGuid() : Data1(0), Data2(0), Data3(0), Data4{0, 0, 0, 0, 0, 0, 0, 0} {}

  // Parses the braced form "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}", hex digits
  // of either case. Any other text, null included, gives the all-zero GUID.
  constexpr CGuid(const char* text) : CGuid() {
    if (!IsWellFormed(text)) {
      return;
    }
    // Positions of the 32 hex digits inside the braced text.
    constexpr int groups[5][2] = {{1, 8}, {10, 4}, {15, 4}, {20, 4}, {25, 12}};
    unsigned char bytes[16] = {};
    int byteIndex = 0;
    for (const auto& group : groups) {
      for (int i = 0; i < group[1]; i += 2) {
        bytes[byteIndex++] = static_cast<unsigned char>(HexValue(text[group[0] + i]) * 16 +
                                                        HexValue(text[group[0] + i + 1]));
      }
    }
    Data1 = (static_cast<unsigned int>(bytes[0]) << 24) |
            (static_cast<unsigned int>(bytes[1]) << 16) |
            (static_cast<unsigned int>(bytes[2]) << 8) | bytes[3];
    Data2 = static_cast<unsigned short>((bytes[4] << 8) | bytes[5]);
    Data3 = static_cast<unsigned short>((bytes[6] << 8) | bytes[7]);
    for (int i = 0; i < 8; ++i) {
      Data4[i] = bytes[8 + i];
    }
  }

  constexpr bool operator==(const CGuid& other) const {
    if (Data1 != other.Data1 || Data2 != other.Data2 || Data3 != other.Data3) {
      return false;
    }
    for (int i = 0; i < 8; ++i) {
      if (Data4[i] != other.Data4[i]) {
        return false;
      }
    }
    return true;
  }
  constexpr bool operator!=(const CGuid& other) const { return !(*this == other); }

private:
  static constexpr int HexValue(char c) {
    return (c >= '0' && c <= '9')   ? c - '0'
           : (c >= 'a' && c <= 'f') ? c - 'a' + 10
           : (c >= 'A' && c <= 'F') ? c - 'A' + 10
                                    : -1;
  }
  static constexpr bool IsWellFormed(const char* text) {
    if (text == nullptr) {
      return false;
    }
    for (int i = 0; i < 38; ++i) {
      const char c = text[i];
      const bool ok = (i == 0)                                    ? c == '{'
                      : (i == 37)                                 ? c == '}'
                      : (i == 9 || i == 14 || i == 19 || i == 24) ? c == '-'
                                                                  : HexValue(c) >= 0;
      if (!ok) {
        return false;  // also stops at a terminating NUL before position 38
      }
    }
    return text[38] == '\0';
  }
};

}  // namespace Runtime30
}  // namespace Interop
}  // namespace Zt

#endif
