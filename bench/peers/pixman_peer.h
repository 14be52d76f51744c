// pixman: composition of interleaved pixels, which takes in conversions and bilinear enlargements.
#pragma once

#include <optional>

#include "bench/peers/contest.h"
#include "bench/peers/jobs.h"

namespace zvk::peers {

std::string PixmanVersion();

// Nothing but enlargements of RGBA with the triangle, which are all that it has a fast form for.
std::optional<Contestant> PixmanScaling(const Scaling &scaling);
// RGB to BGRA, into an image that is there.
Preparation PixmanConversion(Size size);

}  // namespace zvk::peers
