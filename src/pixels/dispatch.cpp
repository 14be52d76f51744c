#include "pixels/dispatch.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace zvk::pixels {

namespace {

constexpr std::array<std::string_view, kCpuLevels> kLevelNames = {"baseline", "ssse3", "avx2", "avx512"};

bool HasAVX2() {
  return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") && __builtin_cpu_supports("bmi") &&
         __builtin_cpu_supports("bmi2");
}

bool HasAVX512() {
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
         __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
}

}  // namespace

CpuLevel DetectedLevel() {
  if (!__builtin_cpu_supports("ssse3")) return CpuLevel::Baseline;
  if (!HasAVX2()) return CpuLevel::SSSE3;
  return HasAVX512() ? CpuLevel::AVX512 : CpuLevel::AVX2;
}

CpuLevel LevelNamed(const char *name, CpuLevel machine) {
  if (name == nullptr) return machine;
  const auto *const found = std::ranges::find(kLevelNames, name);
  if (found == kLevelNames.end()) return machine;
  return std::min(static_cast<CpuLevel>(found - kLevelNames.begin()), machine);
}

CpuLevel ChosenLevel() {
  static const CpuLevel level = LevelNamed(std::getenv("PICTUREZVK_CPU"), DetectedLevel());
  return level;
}

}  // namespace zvk::pixels
