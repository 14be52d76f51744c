// Integer arrays of the host language, read element by element.
#pragma once

#include <cstdint>
#include <span>

#include "abi/host_layouts.h"
#include "host/layers.h"

namespace zvk::host {

// Copies the first elements of the host's array into `entries`, as many as both have. The entries behind the array's
// end stay as they are; so do all if the host gives a negative last index. A nil array is the host's affair.
void ReadIntegerArray(REALarray array, std::span<int32_t> entries);

}  // namespace zvk::host
