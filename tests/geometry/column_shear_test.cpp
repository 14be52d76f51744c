#include "geometry/column_shear.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/geometry/turn_testing.h"
#include "tests/support/faults.h"

namespace zvk::geometry {
namespace {

using namespace turn_testing;
using enum ColourFamily;
using GrayOnly = Layout<Gray, false>;

class ColumnShears : public testing::Test {
 protected:
  // The columns of a gray image sheared into one of the given size, by all forms. All its bytes were 0xEE.
  std::vector<Bytes> Sheared(const std::vector<Bytes> &rows, int32_t width, int32_t height, const ColumnShear &shear,
                             uint8_t background) {
    const StoredImage source = Stored(host_, Kind::Block, static_cast<int32_t>(rows[0].size()),
                                      static_cast<int32_t>(rows.size()), ImageFormatG);
    SetGrid(source.Image(), 'g', rows);
    std::vector<Bytes> results[3];
    for (int form = 0; form < 3; ++form) {
      // Packed alike, of unlike layouts, and like a mapped file.
      const StoredImage dest = Stored(host_, Kind::Block, width, height, form == 1 ? ImageFormat2of3 : ImageFormatG);
      dest.SetBytes(Bytes(dest.Bytes().size(), 0xEE));
      dest.Record().IsMapping = form == 2;
      ShearColumns<GrayOnly>(source.Record(), dest.Record(), shear, {{background}});
      results[form] = Grid(dest.Image(), 'g');
      dest.Record().IsMapping = false;
    }
    EXPECT_EQ(results[0], results[1]);
    EXPECT_EQ(results[0], results[2]);
    return results[0];
  }

  PluginHost host_{{.fenced = true}};
};

TEST_F(ColumnShears, TheEndOfAColumnReplacesItsLastSample) {
  // Shares of a quarter: of the background 10, then 25 and 50. 40 - (10 - 50) takes the place of 200 + 25 - 50, where a
  // sheared row would have it one pixel further on.
  EXPECT_EQ(Sheared({{100}, {200}}, 1, 5, {1.25, 0.0, 1, 5}, 40), (std::vector<Bytes>{{40}, {85}, {80}, {40}, {40}}));
}

TEST_F(ColumnShears, EveryColumnMovesBySlopeLess) {
  EXPECT_EQ(Sheared({{10, 20, 30}, {11, 21, 31}}, 3, 4, {2.0, 1.0, 3, 4}, 0),
            (std::vector<Bytes>{{0, 0, 30}, {0, 20, 0}, {10, 0, 0}, {0, 0, 0}}));
}

TEST_F(ColumnShears, ColumnsBeyondTheirNumberAreNotTouched) {
  EXPECT_EQ(Sheared({{10, 20, 30}}, 4, 2, {0.0, 0.0, 2, 2}, 9),
            (std::vector<Bytes>{{9, 9, 0xEE, 0xEE}, {9, 9, 0xEE, 0xEE}}));
}

TEST_F(ColumnShears, RowsBeyondTheResultGetTheBackgroundAndNoSamples) {
  EXPECT_EQ(Sheared({{10}, {20}, {30}}, 1, 4, {1.0, 0.0, 1, 2}, 9), (std::vector<Bytes>{{9}, {10}, {9}, {9}}));
}

TEST_F(ColumnShears, WhatFallsOutsideIsLeftOut) {
  EXPECT_EQ(Sheared({{10}, {20}, {30}}, 1, 2, {-1.0, 0.0, 1, 2}, 0), (std::vector<Bytes>{{20}, {0}}));
  EXPECT_EQ(Sheared({{10}, {20}, {30}}, 1, 2, {1.0, 0.0, 1, 2}, 0), (std::vector<Bytes>{{0}, {10}}));
  EXPECT_EQ(Sheared({{10}, {20}, {30}}, 1, 2, {2.0, 0.0, 1, 2}, 0), (std::vector<Bytes>{{0}, {0}}));
  EXPECT_EQ(Sheared({{10}, {20}, {30}}, 1, 2, {900.0, 0.0, 1, 2}, 0), (std::vector<Bytes>{{0}, {0}}));
}

TEST_F(ColumnShears, AnEndAboveTheImageIsLeftOut) {
  EXPECT_EQ(Sheared({{10}, {20}, {30}}, 1, 2, {-3.0, 0.0, 1, 2}, 7), (std::vector<Bytes>{{7}, {7}}));
  EXPECT_EQ(Sheared({{10}, {20}, {30}}, 1, 2, {-900.5, 0.0, 1, 2}, 7), (std::vector<Bytes>{{7}, {7}}));
}

TEST_F(ColumnShears, ManyColumnsOfAnySlopeAgreeInAllForms) {
  std::vector<Bytes> rows;
  for (uint32_t y = 0; y < 9; ++y) rows.push_back(Noise(300, y));
  // Also beyond 1, where a strip would have to be higher than it is wide.
  for (const double slope :
       {-1.5, -1.0, -0.7, -0.5, -0.13, -0.01, -1e-18, 0.0, 1e-18, 0.02, 0.3, 0.70710678, 1.0, 2.0}) {
    for (const double shift : {0.0, -150.3, 60.7}) {
      Sheared(rows, 301, 200, {(slope > 0 ? 299 * slope : 0.0) + shift, slope, 300, 190}, 200);
    }
  }
}

TEST_F(ColumnShears, WithoutMemoryToWorkInTheResultIsTheSame) {
  const StoredImage source = Stored(host_, Kind::Block, 9, 5, ImageFormatRGBA),
                    dest = Stored(host_, Kind::Block, 9, 9, ImageFormatRGBA);
  const ColumnShear shear{3.5, 0.4, 9, 9};
  ShearColumns<Layout<RGB, true>>(source.Record(), dest.Record(), shear, {{1, 2, 3, 4}});
  const Bytes expected = dest.Bytes();
  dest.SetBytes(Bytes(expected.size(), 0));
  faults::Heap heap;
  heap.FailCallocAt(1);
  ShearColumns<Layout<RGB, true>>(source.Record(), dest.Record(), shear, {{1, 2, 3, 4}});
  EXPECT_EQ(heap.CallocCalls(), 1);
  EXPECT_EQ(dest.Bytes(), expected);
}

TEST_F(ColumnShears, RowsOfAMappedImageAreFetchedAnewForEveryPixel) {
  const StoredImage source = Stored(host_, Kind::Block, 1, 2, ImageFormatG),
                    dest = Stored(host_, Kind::Block, 1, 3, ImageFormatG);
  ImageClassData &from = source.Record(), &to = dest.Record();
  RowLog log;
  log.WatchAsMapped(from, "s");
  log.WatchAsMapped(to, "d");
  ShearColumns<GrayOnly>(from, to, {1.0, 0.0, 1, 3}, {{0}});
  EXPECT_EQ(log.Take(), "d0 d1 d2 s0 d1 s1 d2 d2");
}

TEST_F(ColumnShears, ARowThatCannotBeHadIsLeftOut) {
  const StoredImage source = Stored(host_, Kind::Block, 2, 3, ImageFormatG),
                    dest = Stored(host_, Kind::Block, 2, 3, ImageFormatG);
  source.SetBytes({1, 2, 3, 4, 5, 6});
  RowLog rows;
  for (const bool mapped : {false, true}) {
    dest.Record().IsMapping = mapped;
    dest.SetBytes(Bytes(6, 9));
    rows.Refuse(dest.Record(), 1);
    ShearColumns<GrayOnly>(source.Record(), dest.Record(), {0.0, 0.0, 2, 3}, {{0}});
    EXPECT_EQ(dest.Bytes(), (Bytes{1, 2, 9, 9, 0, 0}));
    rows.Release(dest.Record());
    rows.Refuse(source.Record(), 1);
    ShearColumns<GrayOnly>(source.Record(), dest.Record(), {0.0, 0.0, 2, 3}, {{0}});
    EXPECT_EQ(dest.Bytes(), (Bytes{1, 2, 0, 0, 0, 0}));
    rows.Release(source.Record());
  }
}

}  // namespace
}  // namespace zvk::geometry
