#ifndef ZT_BENCH_CONVERTOPENCV_H
#define ZT_BENCH_CONVERTOPENCV_H

// The same conversions through OpenCV, as a user of it would write them:
// Mat::convertTo with the scale for a change of data type, cvtColor for a
// change of layout (both, cheaper step first, where a case changes both) and
// extractChannel for one channel. Built only when OpenCV is found.

#include <string>

namespace ZtBench {

// Converts side x side pixels from source into target, both preallocated;
// scratch holds 4 bytes a pixel for the step between two calls.
using OpenCvConversion = void (*)(int side, void* target, const void* source, void* scratch);

// The OpenCV form of the named case of kCases, or null for a case OpenCV is
// not compared on.
OpenCvConversion OpenCvFor(const char* caseName);

// Runs OpenCV on this thread only (its own worker threads off) and answers
// its version and the instruction sets it dispatches to.
std::string PrepareOpenCv();

}  // namespace ZtBench

#endif
