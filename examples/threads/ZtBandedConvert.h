#ifndef ZT_EXAMPLES_ZTBANDEDCONVERT_H
#define ZT_EXAMPLES_ZTBANDEDCONVERT_H

// Scaling a conversion out over the caller's own threads.
//
// The library starts no thread; it does not need to. Images are dense, with
// no row padding, so rows first..first+n-1 of an image are one contiguous
// block, and a block of whole rows is itself an image of n rows. Converting
// each such band with CZtImage::ConvertMemory, each on its own thread, gives
// exactly the bytes of one conversion of the whole image: every pixel is
// converted on its own, and the bands share no memory.

#include <cstddef>
#include <thread>
#include <vector>

#include "ZtCoreEx.h"

namespace ZtThreads {

struct SBand {
  int FirstRow;
  int Rows;
};

// Splits `height` rows into at most `bands` bands of nearly equal size (the
// first ones one row larger), never into empty bands.
inline std::vector<SBand> SplitRows(int height, unsigned bands) {
  std::vector<SBand> result;
  if (height < 1) return result;
  const unsigned count = bands < 1u                              ? 1u
                         : bands > static_cast<unsigned>(height) ? static_cast<unsigned>(height)
                                                                 : bands;
  const int base = height / static_cast<int>(count);
  const int larger = height % static_cast<int>(count);
  int row = 0;
  for (int i = 0; i < static_cast<int>(count); ++i) {
    const int rows = base + (i < larger ? 1 : 0);
    result.push_back({row, rows});
    row += rows;
  }
  return result;
}

// Converts source into target as ConvertMemory does, in `threads` row bands
// at once: the caller's thread takes the first band, new threads the others.
// Both formats must have the same size. False when they do not, or when the
// library refuses the conversion.
inline bool ConvertInBands(void* target, const void* source, const Zt::CZtImageFormat& targetFormat,
                           const Zt::CZtImageFormat& sourceFormat, unsigned threads) {
  if (targetFormat.Width != sourceFormat.Width || targetFormat.Height != sourceFormat.Height)
    return false;
  const std::vector<SBand> bands = SplitRows(sourceFormat.Height, threads);
  // Bytes per row, in the pointer's width: a band's offset may pass 2^32.
  const std::size_t width = static_cast<std::size_t>(sourceFormat.Width);
  const std::size_t sourceRow = width * static_cast<std::size_t>(sourceFormat.GetBytesPerPixel());
  const std::size_t targetRow = width * static_cast<std::size_t>(targetFormat.GetBytesPerPixel());
  std::vector<char> done(bands.size(), 0);

  const auto convertBand = [&](std::size_t i) {
    const SBand band = bands[i];
    const Zt::CZtImageFormat bandTarget(targetFormat.Width, band.Rows, targetFormat.PixelType,
                                        targetFormat.DataType);
    const Zt::CZtImageFormat bandSource(sourceFormat.Width, band.Rows, sourceFormat.PixelType,
                                        sourceFormat.DataType);
    const std::size_t row = static_cast<std::size_t>(band.FirstRow);
    done[i] =
        Zt::CZtImage::ConvertMemory(static_cast<unsigned char*>(target) + row * targetRow,
                                    static_cast<const unsigned char*>(source) + row * sourceRow,
                                    bandTarget, bandSource)
            ? 1
            : 0;
  };

  std::vector<std::thread> workers;
  workers.reserve(bands.size());
  for (std::size_t i = 1; i < bands.size(); ++i) workers.emplace_back(convertBand, i);
  if (!bands.empty()) convertBand(0);
  for (std::thread& worker : workers) worker.join();
  for (char ok : done) {
    if (!ok) return false;
  }
  return !bands.empty();
}

}  // namespace ZtThreads

#endif
