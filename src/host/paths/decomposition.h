// Canonical decomposition of Unicode text (normalization form D), the form in which paths are handed to the system.
#pragma once

#include <cstdint>

#include "host/paths/decomposition_table.h"

namespace zvk::host::paths {

// Writes the decomposition of `length` characters to `result`, which has room for kLongestDecomposition times as many
// and does not overlap `text`. Returns how many characters were written.
int64_t Decompose(const char32_t *text, int64_t length, char32_t *result);

}  // namespace zvk::host::paths
