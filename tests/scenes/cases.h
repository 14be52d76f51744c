// The one driver of all random tests. RapidCheck makes the numbers of the cases and judges them; all else about a case
// follows from its number, which a failure tells, and so does the end of the process by a signal.
#pragma once

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <functional>

#include "tests/scenes/random.h"

namespace scenes {

// Expects that the property (a function with RC_ASSERT in it) holds in many cases. To repeat a single case set
// PICTUREZVK_CASE to its number.
void CheckCases(const std::function<void(Random &)> &property);

}  // namespace scenes
