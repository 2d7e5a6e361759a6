// zt-threads: one large conversion split into row bands, converted at once on
// 1 to N threads of this program, each result compared byte for byte with a
// conversion of the whole image on one thread.
//
//   zt-threads [WIDTHxHEIGHT [THREADS]]     (default: 4096x4096, this machine's cores)

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "ZtBandedConvert.h"

namespace {

using Zt::CZtImage;
using Zt::CZtImageFormat;
using Zt::EDataType;
using Zt::EPixelType;

struct SCase {
  EPixelType::ID SourceLayout;
  EDataType::ID SourceType;
  EPixelType::ID TargetLayout;
  EDataType::ID TargetType;
};

// Bytes from a fixed pseudo-random sequence: every conversion path, NaN and
// saturation included, gets exercised, and runs are repeatable.
void Scramble(CZtImage& image) {
  auto* bytes = static_cast<unsigned char*>(image.GetDataPtr());
  unsigned state = 2463534242u;
  for (unsigned i = 0; i < image.GetByteCount(); ++i) {
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    bytes[i] = static_cast<unsigned char>(state);
  }
}

double Milliseconds(std::chrono::steady_clock::duration d) {
  return std::chrono::duration<double, std::milli>(d).count();
}

}  // namespace

int main(int argc, char** argv) {
  int width = 4096, height = 4096;
  if (argc > 1 && std::sscanf(argv[1], "%dx%d", &width, &height) != 2) {
    std::fprintf(stderr, "usage: zt-threads [WIDTHxHEIGHT [THREADS]]\n");
    return 2;
  }
  unsigned maxThreads = std::max(4u, std::thread::hardware_concurrency());
  if (argc > 2) maxThreads = static_cast<unsigned>(std::max(1, std::atoi(argv[2])));

  const SCase cases[] = {
      {EPixelType::RGB, EDataType::UByte, EPixelType::RGBA, EDataType::Float},
      {EPixelType::Lum, EDataType::UShort, EPixelType::Lum, EDataType::UByte},
      {EPixelType::BGRA, EDataType::Double, EPixelType::RGB, EDataType::Short},
      {EPixelType::BayerGR, EDataType::UShort, EPixelType::RGB, EDataType::UByte},
  };
  std::printf("%dx%d pixels, 1 to %u threads (this machine has %u)\n\n", width, height, maxThreads,
              std::thread::hardware_concurrency());
  bool allIdentical = true;
  for (const SCase& c : cases) {
    const CZtImageFormat sourceFormat(width, height, c.SourceLayout, c.SourceType);
    const CZtImageFormat targetFormat(width, height, c.TargetLayout, c.TargetType);
    CZtImage source(sourceFormat);
    CZtImage reference(targetFormat);
    CZtImage banded(targetFormat);
    if (!source.IsValid() || !reference.IsValid() || !banded.IsValid()) {
      std::fprintf(stderr, "zt-threads: out of memory for %dx%d\n", width, height);
      return 1;
    }
    Scramble(source);

    // Each time is the best of three runs on memory already touched, so that
    // page faults of a fresh block do not count.
    std::memset(reference.GetDataPtr(), 0, reference.GetByteCount());
    double single = 1e300;
    for (int run = 0; run < 3; ++run) {
      const auto start = std::chrono::steady_clock::now();
      if (!CZtImage::ConvertMemory(reference.GetDataPtr(), source.GetDataPtr(), targetFormat,
                                   sourceFormat)) {
        std::fprintf(stderr, "zt-threads: the library refused the conversion\n");
        return 1;
      }
      single = std::min(single, Milliseconds(std::chrono::steady_clock::now() - start));
    }
    std::printf("%s -> %s: one ConvertMemory %.1f ms\n", sourceFormat.ToString().ToCString(),
                targetFormat.ToString().ToCString(), single);
    std::printf("  %7s %9s %9s  %s\n", "threads", "ms", "speed-up", "bytes");
    for (unsigned threads = 1; threads <= maxThreads; ++threads) {
      double took = 1e300;
      bool identical = true;
      for (int run = 0; run < 3; ++run) {
        // Garbage first, so that a band left out cannot pass for converted.
        std::memset(banded.GetDataPtr(), 0xA5, banded.GetByteCount());
        const auto start = std::chrono::steady_clock::now();
        const bool converted = ZtThreads::ConvertInBands(banded.GetDataPtr(), source.GetDataPtr(),
                                                         targetFormat, sourceFormat, threads);
        took = std::min(took, Milliseconds(std::chrono::steady_clock::now() - start));
        identical =
            identical && converted &&
            std::memcmp(banded.GetDataPtr(), reference.GetDataPtr(), reference.GetByteCount()) == 0;
      }
      allIdentical = allIdentical && identical;
      std::printf("  %7u %9.1f %8.2fx  %s\n", threads, took, single / took,
                  identical ? "identical" : "DIFFERENT");
    }
    std::printf("\n");
  }
  std::printf(allIdentical ? "Every banded result is bit-identical to the single conversion.\n"
                           : "Some banded result differs from the single conversion.\n");
  return allIdentical ? 0 : 1;
}
