#ifndef ZT_BENCH_CONVERTBENCHCASES_H
#define ZT_BENCH_CONVERTBENCHCASES_H

#include "ZtCoreEx.h"

namespace ZtBench {

// One measured conversion and its plain scalar loop (null for equal formats,
// which are measured against memcpy alone).
struct Case {
  const char* name;
  Zt::EPixelType::ID sourcePixel;
  Zt::EDataType::ID sourceData;
  Zt::EPixelType::ID targetPixel;
  Zt::EDataType::ID targetData;
  void (*scalar)(unsigned count, void* target, const void* source);
};

extern const Case kCases[];
extern const int kCaseCount;

}  // namespace ZtBench

#endif
