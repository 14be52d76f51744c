// libvips: scaling, into new memory each time.
#pragma once

#include <optional>

#include "bench/peers/contest.h"
#include "bench/peers/jobs.h"

namespace zvk::peers {

std::string VipsVersion();

// Nothing if it has no such filter.
std::optional<Contestant> VipsScaling(const Scaling &scaling);

}  // namespace zvk::peers
