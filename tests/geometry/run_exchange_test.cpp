#include "geometry/run_exchange.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/geometry/turn_testing.h"
#include "tests/support/cpu_levels.h"
#include "tests/support/fence.h"

namespace zvk::geometry {
namespace {

using namespace turn_testing;

// All lengths that a run of vectors may end in, between bytes that fault.
TEST(RunExchange, RunsChangePlacesAndNothingElseIsTouched) {
  for (size_t size = 0; size <= 300; ++size) {
    const Bytes first = Noise(size, static_cast<uint32_t>(size)),
                second = Noise(size, static_cast<uint32_t>(size + 999));
    for (const fence::Side side : {fence::Side::kBefore, fence::Side::kAfter}) {
      // The odd byte is on the side away from the fence.
      const size_t start = side == fence::Side::kAfter ? 1 : 0, odd = start == 1 ? 0 : size;
      ForEachForm(ExchangeRuns, [&](auto exchange) {
        const fence::Block run(size + 1, side), other(size + 1, side);
        std::ranges::copy(first, run.Data() + start);
        std::ranges::copy(second, other.Data() + start);
        run.Data()[odd] = 17;
        other.Data()[odd] = 18;
        exchange(run.Data() + start, other.Data() + start, static_cast<ptrdiff_t>(size));
        EXPECT_EQ(Bytes(run.Data() + start, run.Data() + start + size), second) << size;
        EXPECT_EQ(Bytes(other.Data() + start, other.Data() + start + size), first) << size;
        EXPECT_EQ(run.Data()[odd], 17);
        EXPECT_EQ(other.Data()[odd], 18);
      });
    }
  }
}

}  // namespace
}  // namespace zvk::geometry
