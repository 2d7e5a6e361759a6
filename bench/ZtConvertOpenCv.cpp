// The OpenCV column of zt-convert-bench (see ZtConvertOpenCv.h). Every Mat
// is a header over the caller's buffers, so no call allocates.

#include "ZtConvertOpenCv.h"

#include <cstring>
#include <opencv2/core.hpp>
#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>

namespace ZtBench {
namespace {

cv::Mat In(int side, int type, const void* data) {
  return cv::Mat(side, side, type, const_cast<void*>(data));
}
cv::Mat Out(int side, int type, void* data) { return cv::Mat(side, side, type, data); }

// Adding the alpha channel to the bytes first keeps the wide step to one pass.
void UByteRgbToFloatRgba(int side, void* target, const void* source, void* scratch) {
  cv::Mat rgba = Out(side, CV_8UC4, scratch);
  cv::cvtColor(In(side, CV_8UC3, source), rgba, cv::COLOR_RGB2RGBA);
  cv::Mat out = Out(side, CV_32FC4, target);
  rgba.convertTo(out, CV_32F, 1.0 / 255.0);
}

void UShortLumToUByteLum(int side, void* target, const void* source, void*) {
  cv::Mat out = Out(side, CV_8UC1, target);
  In(side, CV_16UC1, source).convertTo(out, CV_8U, 255.0 / 65535.0);
}

void UByteRgbToUByteBgr(int side, void* target, const void* source, void*) {
  cv::Mat out = Out(side, CV_8UC3, target);
  cv::cvtColor(In(side, CV_8UC3, source), out, cv::COLOR_RGB2BGR);
}

void UByteRgbToUByteBgra(int side, void* target, const void* source, void*) {
  cv::Mat out = Out(side, CV_8UC4, target);
  cv::cvtColor(In(side, CV_8UC3, source), out, cv::COLOR_RGB2BGRA);
}

// Narrowing to bytes first leaves the channel swap a quarter of the traffic.
void FloatRgbaToUByteBgra(int side, void* target, const void* source, void* scratch) {
  cv::Mat rgba = Out(side, CV_8UC4, scratch);
  In(side, CV_32FC4, source).convertTo(rgba, CV_8U, 255.0);
  cv::Mat out = Out(side, CV_8UC4, target);
  cv::cvtColor(rgba, out, cv::COLOR_RGBA2BGRA);
}

void DoubleLumToShortLum(int side, void* target, const void* source, void*) {
  cv::Mat out = Out(side, CV_16SC1, target);
  In(side, CV_64FC1, source).convertTo(out, CV_16S, 32767.0);
}

void UByteLumToUShortLum(int side, void* target, const void* source, void*) {
  cv::Mat out = Out(side, CV_16UC1, target);
  In(side, CV_8UC1, source).convertTo(out, CV_16U, 65535.0 / 255.0);
}

void FloatLumToDoubleLum(int side, void* target, const void* source, void*) {
  cv::Mat out = Out(side, CV_64FC1, target);
  In(side, CV_32FC1, source).convertTo(out, CV_64F);
}

void UByteRgbaToUByteLum(int side, void* target, const void* source, void*) {
  cv::Mat out = Out(side, CV_8UC1, target);
  cv::extractChannel(In(side, CV_8UC4, source), out, 0);
}

struct SOpenCvCase {
  const char* name;
  OpenCvConversion run;
};

const SOpenCvCase kOpenCvCases[] = {
    {"UByte RGB -> Float RGBA", UByteRgbToFloatRgba},
    {"UShort Lum -> UByte Lum", UShortLumToUByteLum},
    {"UByte RGB -> UByte BGR", UByteRgbToUByteBgr},
    {"UByte RGB -> UByte BGRA", UByteRgbToUByteBgra},
    {"Float RGBA -> UByte BGRA", FloatRgbaToUByteBgra},
    {"Double Lum -> Short Lum", DoubleLumToShortLum},
    {"UByte Lum -> UShort Lum", UByteLumToUShortLum},
    {"Float Lum -> Double Lum", FloatLumToDoubleLum},
    {"UByte RGBA -> UByte Lum", UByteRgbaToUByteLum},
};

}  // namespace

OpenCvConversion OpenCvFor(const char* caseName) {
  for (const SOpenCvCase& c : kOpenCvCases) {
    if (std::strcmp(c.name, caseName) == 0) {
      return c.run;
    }
  }
  return nullptr;
}

std::string PrepareOpenCv() {
  cv::setNumThreads(0);
  return std::string("OpenCV ") + CV_VERSION + ", " + cv::getCPUFeaturesLine();
}

}  // namespace ZtBench
