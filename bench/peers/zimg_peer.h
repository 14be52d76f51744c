// zimg: scaling of planes.
#pragma once

#include <optional>

#include "bench/peers/contest.h"
#include "bench/peers/jobs.h"

namespace zvk::peers {

std::string ZimgVersion();

// The widest registers that zimg knows of on this machine, or those of AVX2.
enum class ZimgLevel : uint8_t { Best, AVX2 };

// Nothing if it has no such filter.
std::optional<Contestant> ZimgScaling(const Scaling &scaling, ZimgLevel level = ZimgLevel::Best);

}  // namespace zvk::peers
