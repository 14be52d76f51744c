#include "geometry/run_exchange.h"

#include <utility>

namespace zvk::geometry {

namespace {

[[gnu::always_inline]] inline void ExchangeRunsBody(uint8_t *__restrict run, uint8_t *__restrict other,
                                                    ptrdiff_t size) {
  for (ptrdiff_t i = 0; i < size; ++i) std::swap(run[i], other[i]);
}

}  // namespace

constexpr RunExchange ExchangeRuns = KernelOf<ExchangeRunsBody>;

}  // namespace zvk::geometry
