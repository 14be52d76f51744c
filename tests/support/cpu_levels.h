// Kernels at every level of instructions that the machine has.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "pixels/dispatch.h"

namespace zvk {

// The levels of this machine, the lowest first.
inline std::vector<pixels::CpuLevel> MachineLevels() {
  using enum pixels::CpuLevel;
  std::vector<pixels::CpuLevel> levels;
  for (const pixels::CpuLevel level : {Baseline, SSSE3, AVX2, AVX512}) {
    if (level <= pixels::DetectedLevel()) levels.push_back(level);
  }
  return levels;
}

// Calls check(form) with the kernel's form of each level. From `firstOwn` on a level must have a form of its own, or
// the same code would be checked twice.
template <class Function, class Check>
void ForEachForm(const pixels::Kernel<Function> &kernel, const Check &check,
                 pixels::CpuLevel firstOwn = pixels::CpuLevel::AVX2) {
  std::vector<typename pixels::Kernel<Function>::Form> seen;
  for (const pixels::CpuLevel level : MachineLevels()) {
    SCOPED_TRACE(testing::Message() << "level " << static_cast<int>(level));
    const auto form = kernel.At(level);
    if (level >= firstOwn) {
      for (const auto other : seen) ASSERT_NE(form, other);
    }
    seen.push_back(form);
    check(form);
  }
}

}  // namespace zvk
