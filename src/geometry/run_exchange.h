// Runs of bytes that change places, at the speed of memory: what mirroring does to a pair of rows.
#pragma once

#include <cstddef>
#include <cstdint>

#include "pixels/dispatch.h"

namespace zvk::geometry {

// Lets `size` bytes of two runs change places. The runs must not overlap.
using RunExchange = Kernel<void(uint8_t *run, uint8_t *other, ptrdiff_t size)>;
extern const RunExchange ExchangeRuns;

}  // namespace zvk::geometry
