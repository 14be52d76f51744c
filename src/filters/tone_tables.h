// Tables of 256 samples that change each sample by itself, and the curves behind them.
#pragma once

#include <array>
#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::filters {

using ToneTable = std::array<uint8_t, 256>;

// A sharp V: 255 at 0, 0 at 127 and 128, 255 at 255. A table of its own, close to two straight lines and not on them.
extern const ToneTable kSolarizeTable;

// 255 x (sample / 255) to the power 1 / gamma, the only one of these that is rounded. Whatever the arithmetic yields
// for a gamma of 0 or below stands; a value beyond 32 bits gives 0.
ToneTable GammaTable(double gamma);

// Gain, which steepens or flattens the middle of the curve, then bias, which lifts or lowers it; 0.5 and 0.5 change
// nothing. Whatever the arithmetic yields for other values stands; what is not a number gives 0.
ToneTable GainTable(double gain, double bias);

// The low bytes of the array's first 256 elements; 0 behind its end. A nil array gives zeros.
ToneTable TransferTable(REALarray array);

}  // namespace zvk::filters
