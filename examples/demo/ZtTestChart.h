#ifndef ZT_EXAMPLES_ZTTESTCHART_H
#define ZT_EXAMPLES_ZTTESTCHART_H

// The demo's synthetic pictures, made in code so that the demo needs no
// input file.

#include "ZtCoreEx.h"

namespace ZtDemo {

// A test chart in RGBA Double, from top to bottom:
//   a hue sweep across, fading from full colour to black downwards;
//   a grey ramp, in 16 steps above and smooth below;
//   a red and blue checkerboard under an alpha ramp from 0 (left) to 1;
//   patches of red, green, blue, cyan, magenta, yellow, white and black.
// Outside the alpha ramp, alpha is 1.
bool MakeTestChart(Zt::CZtImage& chart, int width, int height);

// What a sensor with an RGGB colour filter would record of the chart: one
// UShort sample a pixel, red at even rows and columns, blue at odd ones,
// green between. The result has the BayerRG layout.
bool MakeBayerMosaic(const Zt::CZtImage& chart, Zt::CZtImage& mosaic);

}  // namespace ZtDemo

#endif
