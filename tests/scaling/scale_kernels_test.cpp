#include "scaling/scale_kernels.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "tests/naive/scale.h"
#include "tests/support/cpu_levels.h"

namespace zvk::scaling {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(ScaleKernels, AValueIsRoundedByTruncationAfterAHalfIsAdded) {
  EXPECT_EQ(Finish<uint8_t>(37.49, 1.0, 0.5), 37);
  EXPECT_EQ(Finish<uint8_t>(37.5, 1.0, 0.5), 38);
  EXPECT_EQ(Finish<uint8_t>(75.0, 2.0, 0.5), 38);
  EXPECT_EQ(Finish<uint8_t>(37.99, 1.0, 0.0), 37);
  EXPECT_EQ(Finish<uint16_t>(40000.5, 1.0, 0.5), 40001);
}

TEST(ScaleKernels, AValueIsCutToWhatASampleHolds) {
  EXPECT_EQ(Finish<uint8_t>(-0.4, 1.0, 0.5), 0);
  EXPECT_EQ(Finish<uint8_t>(-1.6, 1.0, 0.5), 0);
  EXPECT_EQ(Finish<uint8_t>(255.4, 1.0, 0.5), 255);
  EXPECT_EQ(Finish<uint8_t>(256.0, 1.0, 0.5), 255);
  EXPECT_EQ(Finish<uint8_t>(65536.0, 1.0, 0.5), 255);
  EXPECT_EQ(Finish<uint16_t>(65536.0, 1.0, 0.5), 65535);
}

TEST(ScaleKernels, NotANumberAndWhatIs32BitsTooLargeGiveZeroAndNot255) {
  EXPECT_EQ(Finish<uint8_t>(0.0, 0.0, 0.5), 0);
  EXPECT_EQ(Finish<uint8_t>(kNaN, 1.0, 0.5), 0);
  EXPECT_EQ(Finish<uint8_t>(1.0, 0.0, 0.5), 0);
  EXPECT_EQ(Finish<uint8_t>(-1.0, 0.0, 0.5), 0);
  EXPECT_EQ(Finish<uint8_t>(kInfinity, 1.0, 0.5), 0);
  EXPECT_EQ(Finish<uint8_t>(2147483648.0, 1.0, 0.0), 0);
  EXPECT_EQ(Finish<uint8_t>(2147483647.0, 1.0, 0.0), 255);
  EXPECT_EQ(Finish<uint16_t>(2147483647.6, 1.0, 0.5), 0);
}

TEST(ScaleKernels, GrayIsBlueThenGreenAndRed) {
  // Chosen so that another order of the sums, or one product for each part, comes out differently.
  int32_t otherwise = 0;
  std::mt19937 random(5);
  for (int32_t i = 0; i < 1000; ++i) {
    const double r = random() % 256, g = random() % 256, b = random() % 256;
    const double w = static_cast<float>(random()) / 4e9f;
    const double start = random() % 1000 / 7.0;
    double sum = start;
    const double samples[] = {r * SamplePart<ScaleValues::kGrayOfColour>(0),
                              g * SamplePart<ScaleValues::kGrayOfColour>(1),
                              b * SamplePart<ScaleValues::kGrayOfColour>(2)};
    AddTap<3, ScaleValues::kGrayOfColour, 1>(samples, w, &sum);
    ASSERT_EQ(sum, start + ((b * 0.11 * w) + ((g * 0.59 * w) + (r * 0.3 * w))));
    otherwise += sum != start + r * 0.3 * w + g * 0.59 * w + b * 0.11 * w;
  }
  EXPECT_GT(otherwise, 0);
}

// At whatever level of instructions, the kernels' bytes are those of the plain formula.
template <class Sample>
void ExpectPlainRowSums(int32_t rowCount, int64_t count) {
  std::mt19937 random(static_cast<uint32_t>(rowCount * 1000 + count));
  std::vector<std::vector<uint8_t>> storage;
  std::vector<const uint8_t *> rows;
  std::vector<double> weights;
  for (int32_t k = 0; k < rowCount; ++k) {
    storage.emplace_back(1 + count * sizeof(Sample));  // one byte off, so that wide samples are misaligned
    for (uint8_t &byte : storage.back()) byte = static_cast<uint8_t>(random() % 4 == 0 ? 255 : random());
    weights.push_back(static_cast<float>(static_cast<double>(random()) / 4e9 - 0.3));
  }
  for (const auto &bytes : storage) rows.push_back(bytes.data() + 1);
  const double weightSum = static_cast<float>(0.17 * rowCount);
  std::vector<Sample> expected;
  for (int64_t i = 0; i < count; ++i) {
    double sum = 0.0;
    for (int32_t k = 0; k < rowCount; ++k) {
      Sample sample;
      std::memcpy(&sample, rows[k] + i * sizeof(Sample), sizeof sample);
      sum += static_cast<double>(sample) * weights[k];
    }
    expected.push_back(
        static_cast<Sample>(naive::Finished(sum, static_cast<float>(weightSum), 0.5, sizeof(Sample) == 2)));
  }
  expected.push_back(77);  // not to be written
  ForEachForm(RowSummation<Sample>(), [&](auto sumRows) {
    std::vector<Sample> values(expected.size(), Sample{77});
    sumRows(rows.data(), weights.data(), rowCount, weightSum, 0.5, count, values.data());
    ASSERT_EQ(values, expected);
  });
}

TEST(ScaleKernels, RowsAreSummedInOrderWhateverTheirNumberAndLength) {
  for (const int32_t rowCount : {0, 1, 2, 3, 8, 25}) {
    for (const int64_t count : {1, 2, 31, 32, 33, 64, 100, 257}) {
      ExpectPlainRowSums<uint8_t>(rowCount, count);
      ExpectPlainRowSums<uint16_t>(rowCount, count);
    }
  }
}

template <int32_t SampleCount, ScaleValues Values, int32_t Rows, class Sample>
void ExpectPlainColumnSums() {
  constexpr int32_t kValues = ValueCount(SampleCount, Values);
  constexpr int32_t kFirstColumn = 5;
  constexpr int32_t kColumns = 40;
  constexpr double kParts[] = {0.3, 0.59, 0.11};
  constexpr bool kGray = Values == ScaleValues::kGrayOfColour;
  std::mt19937 random(SampleCount * 100 + Rows);
  std::vector<double> raw(kColumns * SampleCount * Rows);
  for (double &sample : raw) sample = random() % (uint32_t{std::numeric_limits<Sample>::max()} + 1);
  std::vector<double> samples = raw;
  if (kGray) {
    for (size_t i = 0; i < samples.size(); ++i) {
      const size_t sample = i / Rows % SampleCount;
      if (sample < 3) samples[i] *= kParts[sample];
    }
  }
  std::vector<ScaleTap> taps(60);
  for (ScaleTap &tap : taps) {
    tap = {static_cast<float>(static_cast<double>(random()) / 4e9 - 0.2),
           kFirstColumn + static_cast<int32_t>(random() % kColumns)};
  }
  const ScaleTapList lists[] = {
      {taps.data(), 10, 3.1f}, {nullptr, 0, 0.0f}, {taps.data() + 10, 1, 0.3f}, {taps.data() + 11, 49, 14.0f}};
  std::vector<Sample> expected(4 * kValues * Rows + 1, Sample{77});  // the last one is not to be written
  for (int32_t x = 0; x < 4; ++x) {
    for (int32_t row = 0; row < Rows; ++row) {
      for (int32_t v = 0; v < kValues; ++v) {
        double sum = 0.0;
        for (int32_t t = 0; t < lists[x].TapCount; ++t) {
          const double w = lists[x].Taps[t].Weight;
          const double *column = &raw[(lists[x].Taps[t].SourceIndex - kFirstColumn) * SampleCount * Rows + row];
          if (kGray && v == 0) {
            sum += (column[2 * Rows] * 0.11 * w) + ((column[Rows] * 0.59 * w) + (column[0] * 0.3 * w));
          } else {
            sum += column[(kGray ? v + 2 : v) * Rows] * w;
          }
        }
        expected[(x * kValues + v) * Rows + row] =
            static_cast<Sample>(naive::Finished(sum, lists[x].WeightSum, 0.5, sizeof(Sample) == 2));
      }
    }
  }
  ForEachForm(ColumnSummation<Sample>(SampleCount, Values, Rows), [&](auto sumColumns) {
    std::vector<Sample> values(expected.size(), Sample{77});
    sumColumns({samples.data(), kFirstColumn, lists, 4, 0.5, values.data()});
    ASSERT_EQ(values, expected) << SampleCount << " samples, " << Rows << " rows";
  });
}

TEST(ScaleKernels, ColumnsAreSummedInOrderWhateverTheSamplesAndRows) {
  using enum ScaleValues;
  ExpectPlainColumnSums<1, kSamples, 1, uint8_t>();
  ExpectPlainColumnSums<1, kSamples, RowBatch(1, kSamples), uint8_t>();
  ExpectPlainColumnSums<2, kSamples, 1, uint8_t>();
  ExpectPlainColumnSums<2, kSamples, RowBatch(2, kSamples), uint8_t>();
  ExpectPlainColumnSums<3, kSamples, 1, uint8_t>();
  ExpectPlainColumnSums<3, kSamples, RowBatch(3, kSamples), uint8_t>();
  ExpectPlainColumnSums<4, kSamples, 1, uint8_t>();
  ExpectPlainColumnSums<4, kSamples, RowBatch(4, kSamples), uint8_t>();
  ExpectPlainColumnSums<5, kSamples, 1, uint8_t>();
  ExpectPlainColumnSums<5, kSamples, RowBatch(5, kSamples), uint8_t>();
  ExpectPlainColumnSums<3, kGrayOfColour, 1, uint8_t>();
  ExpectPlainColumnSums<3, kGrayOfColour, RowBatch(3, kGrayOfColour), uint8_t>();
  ExpectPlainColumnSums<4, kGrayOfColour, 1, uint8_t>();
  ExpectPlainColumnSums<4, kGrayOfColour, RowBatch(4, kGrayOfColour), uint8_t>();
  ExpectPlainColumnSums<1, kSamples, 1, uint16_t>();
  ExpectPlainColumnSums<1, kSamples, RowBatch(1, kSamples), uint16_t>();
}

}  // namespace
}  // namespace zvk::scaling
