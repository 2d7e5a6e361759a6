#ifndef ZT_TESTS_EMULATION_H
#define ZT_TESTS_EMULATION_H

// Whether the tests run under an instruction-set emulator, which runs the
// conversions 3 to 30 times slower than the processor does: ctest sets
// ZT_TEST_EMULATED=1 for every suite of a cross build run through
// CMAKE_CROSSCOMPILING_EMULATOR. A sweep that takes too long there thins
// itself with SweepStride; tests that guard against a fault on every input
// (bounds, floating-point environment, one run of every cell) never do.

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace ZtTest {

inline bool Emulated() {
  const char* value = std::getenv("ZT_TEST_EMULATED");
  return value != nullptr && *value != '\0' && std::strcmp(value, "0") != 0;
}

// The step through a sweep: 1 on the processor, `emulated` under emulation.
inline std::size_t SweepStride(std::size_t emulated) { return Emulated() ? emulated : 1; }

}  // namespace ZtTest

#endif
