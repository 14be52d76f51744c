#include "pixels/dispatch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/cpu_levels.h"

namespace zvk::pixels {
namespace {

using enum CpuLevel;

// What the system tells of the machine, word by word.
std::set<std::string> FeaturesOfMachine() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    if (line.rfind("flags", 0) != 0) continue;
    std::istringstream words(line);
    return {std::istream_iterator<std::string>(words), {}};
  }
  return {};
}

TEST(Dispatch, TheLevelOfTheMachineIsTheHighestWhoseInstructionsItHasAll) {
  const std::set<std::string> features = FeaturesOfMachine();
  if (features.empty()) GTEST_SKIP() << "this system does not tell";
  const auto hasAll = [&](const std::set<std::string> &wanted) {
    return std::includes(features.begin(), features.end(), wanted.begin(), wanted.end());
  };
  CpuLevel expected = Baseline;
  if (hasAll({"ssse3"})) expected = SSSE3;
  if (expected == SSSE3 && hasAll({"avx2", "fma", "bmi1", "bmi2"})) expected = AVX2;
  if (expected == AVX2 && hasAll({"avx512f", "avx512bw", "avx512dq", "avx512vl"})) expected = AVX512;
  EXPECT_EQ(DetectedLevel(), expected);
}

TEST(Dispatch, ALevelIsNamedInSmallLetters) {
  EXPECT_EQ(LevelNamed("baseline", AVX512), Baseline);
  EXPECT_EQ(LevelNamed("ssse3", AVX512), SSSE3);
  EXPECT_EQ(LevelNamed("avx2", AVX512), AVX2);
  EXPECT_EQ(LevelNamed("avx512", AVX512), AVX512);
}

TEST(Dispatch, ANamedLevelIsNeverAboveTheMachines) {
  EXPECT_EQ(LevelNamed("avx512", AVX2), AVX2);
  EXPECT_EQ(LevelNamed("avx512", Baseline), Baseline);
  EXPECT_EQ(LevelNamed("avx2", SSSE3), SSSE3);
  EXPECT_EQ(LevelNamed("ssse3", Baseline), Baseline);
  EXPECT_EQ(LevelNamed("ssse3", AVX2), SSSE3);
}

TEST(Dispatch, AnyOtherNameCountsAsNone) {
  for (const char *name : {static_cast<const char *>(nullptr), "", "AVX2", "avx", "avx2 ", "avx5120", "2", "best"}) {
    EXPECT_EQ(LevelNamed(name, AVX512), AVX512);
    EXPECT_EQ(LevelNamed(name, AVX2), AVX2);
    EXPECT_EQ(LevelNamed(name, Baseline), Baseline);
  }
}

// --- the environment; each of these tests is the first in its process to ask for the level ---

constexpr auto kVariable = "PICTUREZVK_CPU";

// Tells which of its forms has run.
constexpr Kernel<int()> kLevelThatRuns({[] { return 0; }, [] { return 1; }, [] { return 2; }, [] { return 3; }});

struct Pin {
  const char *value;  // nil: none
  CpuLevel highest;   // that the machine may have and that is chosen then

  std::string Name() const { return value == nullptr ? "None" : value; }
};
void PrintTo(const Pin &pin, std::ostream *stream) { *stream << pin.Name(); }

class PinnedLevel : public testing::TestWithParam<Pin> {};
INSTANTIATE_TEST_SUITE_P(, PinnedLevel,
                         testing::Values(Pin{nullptr, AVX512}, Pin{"baseline", Baseline}, Pin{"ssse3", SSSE3},
                                         Pin{"avx2", AVX2}, Pin{"avx512", AVX512}, Pin{"other", AVX512}),
                         [](const auto &info) { return info.param.Name(); });

TEST_P(PinnedLevel, IsWhatKernelsRunAtForTheRestOfTheProcess) {
  if (GetParam().value == nullptr) {
    unsetenv(kVariable);
  } else {
    setenv(kVariable, GetParam().value, 1);
  }
  const CpuLevel expected = std::min(GetParam().highest, DetectedLevel());
  EXPECT_EQ(kLevelThatRuns(), static_cast<int>(expected));
  EXPECT_EQ(ChosenLevel(), expected);
  for (const char *other : {"baseline", "avx2", "avx512"}) {
    setenv(kVariable, other, 1);
    EXPECT_EQ(ChosenLevel(), expected);
    EXPECT_EQ(kLevelThatRuns(), static_cast<int>(expected));
  }
  unsetenv(kVariable);
  EXPECT_EQ(ChosenLevel(), expected);
}

// --- compiled forms ---

[[gnu::always_inline]] inline int64_t SumOfProducts(const int32_t *__restrict a, const int32_t *__restrict b,
                                                    ptrdiff_t count, int64_t &products) {
  int64_t sum = 0;
  for (ptrdiff_t i = 0; i < count; ++i) sum += int64_t{a[i]} * b[i];
  products += count;
  return sum;
}

TEST(CompiledForms, EachLevelThatHasOneRunsTheWholeBody) {
  std::vector<int32_t> a, b;
  int64_t expected = 0;
  for (int32_t i = 0; i < 1000; ++i) {
    a.push_back(i * 7919 - 3000000);
    b.push_back(5000000 - i * 104729);
    expected += int64_t{a.back()} * b.back();
  }
  int64_t products = 0, expectedProducts = 0;
  ForEachForm(KernelOf<SumOfProducts>, [&](auto sum) {
    EXPECT_EQ(sum(a.data(), b.data(), 1000, products), expected);
    expectedProducts += 1000;
  });
  EXPECT_EQ(products, expectedProducts);
}

[[gnu::always_inline]] inline std::unique_ptr<int> Passed(std::unique_ptr<int> value, int &&other) {
  *value += other;
  return value;
}

TEST(CompiledForms, ArgumentsAreMovedThrough) { EXPECT_EQ(*KernelOf<Passed>(std::make_unique<int>(40), 2), 42); }

// A sum of products that comes out otherwise where product and sum are fused.
[[gnu::always_inline]] inline void AddProducts(const double *__restrict a, const double *__restrict b, ptrdiff_t count,
                                               double *__restrict sums) {
  for (ptrdiff_t i = 0; i < count; ++i) sums[i] += a[i] * b[i];
}

TEST(CompiledForms, NoLevelFusesAProductWithASum) {
  // (1 + e)(1 - e) is 1 - e e, which is rounded to 1 unless it is fused with the sum.
  const double e = 1.0 / (1 << 28);
  const std::vector<double> a(67, 1.0 + e), b(67, 1.0 - e);
  ForEachForm(KernelOf<AddProducts>, [&](auto add) {
    std::vector<double> sums(67, -1.0);
    add(a.data(), b.data(), 67, sums.data());
    EXPECT_EQ(sums, std::vector<double>(67, 0.0));
  });
}

}  // namespace
}  // namespace zvk::pixels
