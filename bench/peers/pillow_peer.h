// Pillow, in a process of its own: pillow.py.
#pragma once

#include <optional>

#include "bench/peers/contest.h"
#include "bench/peers/jobs.h"

namespace zvk::peers {

std::string PillowVersion();

// Nothing if it has no such filter, or not for such an image.
std::optional<Contestant> PillowScaling(const Scaling &scaling);

// On RGB, into a new image each time.
Preparation PillowBoxBlur(int32_t radius, Size size);
Preparation PillowRotation(double degrees, Size size);
Preparation PillowMirror(bool horizontal, Size size);

}  // namespace zvk::peers
