#include "filters/matrix_filter_kernel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "tests/support/cpu_levels.h"
#include "tests/support/fence.h"

namespace zvk::filters {
namespace {

using Way = MatrixScaling::Way;

uint8_t Byte(size_t i, size_t seed) { return static_cast<uint8_t>((i * 7 + seed * 13) ^ (i >> 3)); }

MatrixScaling ScalingOf(const std::vector<int32_t> &weights, const MatrixResult &result, bool narrow) {
  int64_t lowest = 0, highest = 0;
  for (const int32_t weight : weights) (weight < 0 ? lowest : highest) += int64_t{255} * weight;
  return {result, lowest, highest, narrow};
}

// What the byte of a sum that wraps is.
uint8_t Told(uint32_t sum, const MatrixResult &result) {
  const double value = static_cast<int32_t>(sum + static_cast<uint32_t>(result.delta)) * result.scale;
  return static_cast<uint8_t>(std::clamp(value, 0.0, 255.0));
}

const std::vector<MatrixResult> kResults = {{20, 1.0}, {20, 0.25}, {-5, 1.0 / 9}, {3, 1.5}, {0, -0.5}};

TEST(SumLines, EveryCountIsServedWithinItsBytesInEveryForm) {
  const std::vector<int32_t> weights = {2, -1, 100};
  std::vector<Way> ways;
  for (const MatrixResult &result : kResults) {
    const MatrixScaling scaling = ScalingOf(weights, result, true);
    ways.push_back(scaling.way);
    ForEachForm(SumLines(scaling.way), [&](const auto form) {
      for (size_t count = 1; count < 200; ++count) {
        const fence::Block first(count), second(count, fence::Side::kBefore), third(count), bytes(count),
            before(count, fence::Side::kBefore);
        const std::vector<uint8_t *> samples = {first.Data(), second.Data(), third.Data()};
        std::vector<WeightedLine> lines;
        for (size_t k = 0; k < 3; ++k) {
          for (size_t i = 0; i < count; ++i) samples[k][i] = Byte(i, k);
          lines.push_back({samples[k], weights[k]});
        }
        form(lines.data(), 3, scaling, static_cast<int64_t>(count), bytes.Data());
        form(lines.data(), 3, scaling, static_cast<int64_t>(count), before.Data());
        for (size_t i = 0; i < count; ++i) {
          const int32_t sum = 2 * Byte(i, 0) - Byte(i, 1) + 100 * Byte(i, 2);
          ASSERT_EQ(bytes.Data()[i], Told(static_cast<uint32_t>(sum), result)) << count << ", " << i;
        }
        ASSERT_EQ(std::memcmp(bytes.Data(), before.Data(), count), 0);
      }
    });
  }
  EXPECT_EQ(ways, (std::vector{Way::None, Way::Words, Way::Words, Way::Single, Way::Double}));
}

TEST(SumLines, AllValuesOf16BitsAreToldApart) {
  const std::vector<uint8_t> white(70, 255), black(70, 0);
  for (int32_t above = 250; above <= 257; ++above) {
    for (const auto &[first, second] : {std::pair{200, above - 200}, {-200, 200 - above}, {-200, above - 200}}) {
      const int32_t low = std::min(first, 0) + std::min(second, 0),
                    high = above - (above - std::max(first, 0) - std::max(second, 0));
      for (const bool lowest : {true, false}) {
        const int32_t expected = 255 * (lowest ? low : high);
        const MatrixScaling scaling = ScalingOf({first, second}, {100 - expected, 1.0}, true);
        const WeightedLine lines[] = {{((first < 0) == lowest ? white : black).data(), first},
                                      {((second < 0) == lowest ? white : black).data(), second}};
        ForEachForm(SumLines(scaling.way), [&](const auto form) {
          std::vector<uint8_t> bytes(70);
          form(lines, 2, scaling, 70, bytes.data());
          EXPECT_EQ(bytes, std::vector<uint8_t>(70, 100)) << first << ", " << second;
        });
      }
    }
  }
}

// The pairs of a line and the space behind them, at the very end of which memory ends.
class PairLine {
 public:
  explicit PairLine(int64_t count) : block_(static_cast<size_t>(count + kPairsBehind) * sizeof(Pair)) {}
  Pair *Get() const { return reinterpret_cast<Pair *>(block_.Data()); }

 private:
  fence::Block block_;
};

TEST(SumPairs, EveryCountIsServedWithinItsBytesInEveryForm) {
  std::vector<Way> ways;
  for (const MatrixResult &result : kResults) {
    const MatrixScaling scaling({result.delta, result.scale}, -3000000, 3000000, false);
    ways.push_back(scaling.way);
    ForEachForm(SumPairs(scaling.way), [&](const auto form) {
      for (int64_t count = 1; count < 200; ++count) {
        const PairLine first(count), second(count);
        const fence::Block bytes(static_cast<size_t>(count)), before(static_cast<size_t>(count), fence::Side::kBefore);
        for (int64_t i = 0; i < count; ++i) {
          first.Get()[i] = PairOf(Byte(static_cast<size_t>(i), 0), Byte(static_cast<size_t>(i), 1));
          second.Get()[i] = PairOf(-static_cast<int32_t>(i * 163), static_cast<int32_t>(i * 150));
        }
        const std::vector<WeightedPairs> low = {{first.Get(), PairOf(300, -299)}, {second.Get(), PairOf(1, 2)}};
        form({{}, low, -500}, scaling, count, bytes.Data());
        form({{}, low, -500}, scaling, count, before.Data());
        for (int64_t i = 0; i < count; ++i) {
          const int64_t sum =
              300 * Byte(static_cast<size_t>(i), 0) - 299 * Byte(static_cast<size_t>(i), 1) - i * 163 + i * 300 - 500;
          ASSERT_EQ(bytes.Data()[i], Told(static_cast<uint32_t>(sum), result)) << count << ", " << i;
        }
        ASSERT_EQ(std::memcmp(bytes.Data(), before.Data(), static_cast<size_t>(count)), 0);
      }
    });
  }
  EXPECT_EQ(ways, (std::vector{Way::None, Way::Single, Way::Single, Way::Single, Way::Double}));
}

// Extremes of all numbers of 16 bits: sums wrap in 32 bits, and high ones count 65536 times.
TEST(SumPairs, SumsWrapIn32Bits) {
  const std::vector<int32_t> extremes = {INT16_MIN, INT16_MIN + 1, -1, 0, 1, 255, INT16_MAX};
  constexpr int64_t kCount = 5;
  for (const int32_t a : extremes) {
    for (const int32_t b : extremes) {
      for (const int32_t weight : extremes) {
        for (const int32_t other : {INT16_MIN, 3}) {
          const std::vector<Pair> line(kCount + kPairsBehind, PairOf(a, b));
          const std::vector<WeightedPairs> high = {{line.data(), PairOf(other, weight)}},
                                           low = {{line.data(), PairOf(weight, other)}, {line.data(), PairOf(1, 1)}};
          const auto wraps = [](int64_t number) { return static_cast<uint32_t>(number); };
          const uint32_t sum = wraps(int64_t{a} * other + int64_t{b} * weight) * 65536u + 77u +
                               wraps(int64_t{a} * weight + int64_t{b} * other + a + b);
          const MatrixResult seen{static_cast<int32_t>(100u - sum), 1.0};
          const MatrixScaling scaling(seen, INT32_MIN, INT32_MAX, false);
          ForEachForm(SumPairs(Way::None), [&](const auto form) {
            std::vector<uint8_t> bytes(kCount);
            form({high, low, 77}, scaling, kCount, bytes.data());
            ASSERT_EQ(bytes, std::vector<uint8_t>(kCount, 100)) << a << ", " << b << ", " << weight;
          });
        }
      }
    }
  }
}

template <class Sum>
void CheckColumns(const Kernel<LinesToSums<Sum>> &kernel, const std::vector<int32_t> &weights) {
  ForEachForm(kernel, [&](const auto form) {
    for (size_t count = 1; count < 200; ++count) {
      std::vector<WeightedLine> lines;
      std::vector<std::vector<uint8_t>> samples(weights.size(), std::vector<uint8_t>(count));
      for (size_t k = 0; k < weights.size(); ++k) {
        for (size_t i = 0; i < count; ++i) samples[k][i] = Byte(i, k);
        lines.push_back({samples[k].data(), weights[k]});
      }
      const fence::Block block(count * sizeof(Sum));
      auto *sums = reinterpret_cast<Sum *>(block.Data());
      form(lines.data(), lines.size(), 9, static_cast<int64_t>(count), sums);
      for (size_t i = 0; i < count; ++i) {
        uint32_t sum = 9;
        for (size_t k = 0; k < weights.size(); ++k) sum += samples[k][i] * static_cast<uint32_t>(weights[k]);
        ASSERT_EQ(sums[i], static_cast<Sum>(sum)) << count << ", " << i;
      }
    }
  });
}

TEST(SumColumns, GivesTheSumsOfEveryCountWithinThem) {
  CheckColumns(SumNarrowColumns, {1, 2, 254, -3});
  CheckColumns(SumNarrowColumns, {});
  CheckColumns(SumColumns, {1, INT32_MIN, -16843010, 254, -70000});
  CheckColumns(SumColumns, {});
}

TEST(Pairs, HoldWhatIsAtAPlaceAndADistanceFurtherOn) {
  for (const int64_t distance : {1, 3, 5}) {
    for (int64_t count = 1; count < 90; ++count) {
      const auto size = static_cast<size_t>(count);
      const fence::Block samples(size), words(2 * size), sums(4 * size);
      auto *word = reinterpret_cast<uint16_t *>(words.Data());
      auto *sum = reinterpret_cast<int32_t *>(sums.Data());
      for (size_t i = 0; i < size; ++i) {
        samples.Data()[i] = Byte(i, 1);
        word[i] = static_cast<uint16_t>(i * 1009);
        sum[i] = static_cast<int32_t>(static_cast<uint32_t>(i) * 123456789u);
      }
      const auto expect = [&](const Pair *pairs, auto number) {
        for (int64_t i = 0; i < count; ++i) {
          ASSERT_EQ(pairs[i], PairOf(number(i), i + distance < count ? number(i + distance) : 0)) << count << ", " << i;
        }
      };
      const fence::Block first(4 * size), second(4 * size);
      auto *low = reinterpret_cast<Pair *>(first.Data()), *high = reinterpret_cast<Pair *>(second.Data());
      ForEachForm(PairSamples, [&](const auto form) {
        form(samples.Data(), distance, count, low);
        expect(low, [&](int64_t i) { return int32_t{samples.Data()[i]}; });
      });
      ForEachForm(PairSums, [&](const auto form) {
        form(word, distance, count, low);
        expect(low, [&](int64_t i) { return word[i] - 32768; });
      });
      ForEachForm(PairHalves, [&](const auto form) {
        form(sum, distance, count, low, high);
        expect(low, [&](int64_t i) { return static_cast<int32_t>(static_cast<uint32_t>(sum[i]) % 65536u) - 32768; });
        expect(high, [&](int64_t i) { return static_cast<int32_t>(static_cast<uint32_t>(sum[i]) / 65536u); });
      });
    }
  }
}

}  // namespace
}  // namespace zvk::filters
