#include "ZtTestChart.h"

#include <cmath>

namespace ZtDemo {
namespace {

using Zt::TPixelRGBA;

// Full-value colour of a hue in [0, 1).
TPixelRGBA<double> Hue(double hue) {
  const double h = hue * 6.0;
  const int sector = static_cast<int>(h) % 6;
  const double rise = h - std::floor(h);
  const double fall = 1.0 - rise;
  switch (sector) {
    case 0: return {{1.0, rise, 0.0, 1.0}};
    case 1: return {{fall, 1.0, 0.0, 1.0}};
    case 2: return {{0.0, 1.0, rise, 1.0}};
    case 3: return {{0.0, fall, 1.0, 1.0}};
    case 4: return {{rise, 0.0, 1.0, 1.0}};
    default: return {{1.0, 0.0, fall, 1.0}};
  }
}

}  // namespace

bool MakeTestChart(Zt::CZtImage& chart, int width, int height) {
  if (!chart.Create(width, height, Zt::EPixelType::RGBA, Zt::EDataType::Double)) return false;
  const int hueEnd = height / 2;
  const int greyEnd = hueEnd + height / 5;
  const int alphaEnd = greyEnd + height / 5;
  static const TPixelRGBA<double> kPatches[] = {{{1, 0, 0, 1}}, {{0, 1, 0, 1}}, {{0, 0, 1, 1}},
                                                {{0, 1, 1, 1}}, {{1, 0, 1, 1}}, {{1, 1, 0, 1}},
                                                {{1, 1, 1, 1}}, {{0, 0, 0, 1}}};
  const double across = width > 1 ? width - 1 : 1;

  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const double u = x / across;
      TPixelRGBA<double> pixel{};
      if (y < hueEnd) {
        pixel = Hue(x / static_cast<double>(width));
        const double value = 1.0 - y / static_cast<double>(hueEnd);
        for (int c = 0; c < 3; ++c) pixel.Samples[c] *= value;
      } else if (y < greyEnd) {
        const bool stepped = y < (hueEnd + greyEnd) / 2;
        const double grey = stepped ? std::floor(u * 15.999) / 15.0 : u;
        pixel = {{grey, grey, grey, 1.0}};
      } else if (y < alphaEnd) {
        const int square = height / 20 > 0 ? height / 20 : 1;
        const bool red = ((x / square) + ((y - greyEnd) / square)) % 2 == 0;
        pixel =
            red ? TPixelRGBA<double>{{1.0, 0.0, 0.0, u}} : TPixelRGBA<double>{{0.0, 0.0, 1.0, u}};
      } else {
        pixel = kPatches[x * 8 / width];
      }
      chart.SetPixel(pixel, x, y);
    }
  }
  return true;
}

bool MakeBayerMosaic(const Zt::CZtImage& chart, Zt::CZtImage& mosaic) {
  // The chart in 16 bits first, through the library's own conversion.
  Zt::CZtImage deep;
  if (!chart.ConvertType(deep, Zt::EPixelType::RGB, Zt::EDataType::UShort)) return false;
  int width = 0, height = 0;
  deep.GetSize(width, height);
  if (!mosaic.Create(width, height, Zt::EPixelType::BayerRG, Zt::EDataType::UShort)) return false;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      Zt::TPixelRGB<unsigned short> colour{};
      deep.GetPixel(colour, x, y);
      // R G / G B: red where both are even, blue where both are odd.
      const int channel = (y % 2) + (x % 2);
      mosaic.SetPixel(Zt::TPixelBayerRG<unsigned short>{{colour.Samples[channel]}}, x, y);
    }
  }
  return true;
}

}  // namespace ZtDemo
