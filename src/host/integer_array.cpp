#include "host/integer_array.h"

#include <algorithm>

#include "host/host_services.h"

namespace zvk::host {

void ReadIntegerArray(REALarray array, std::span<int32_t> entries) {
  const int64_t count = std::min(int64_t{REALGetArrayUBound(array)} + 1, static_cast<int64_t>(entries.size()));
  for (int32_t i = 0; i < count; ++i) entries[static_cast<size_t>(i)] = REALGetArrayInt(array, i);
}

}  // namespace zvk::host
