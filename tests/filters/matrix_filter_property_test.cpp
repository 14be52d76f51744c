#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "filters/matrix_filter.h"
#include "tests/filters/filter_scenes.h"

namespace zvk::filters {
namespace {

using namespace filter_testing;

int32_t AnyEntry(Random &random, bool usual) {
  if (usual) return random.Between(-4, 6);
  return random.Of(
      {0, 1, -1, 2, 100, 254, 255, 256, -1000, INT32_MIN, INT32_MAX, random.Between(INT32_MIN, INT32_MAX - 1)});
}

naive::Matrix AnyMatrix(Random &random, int32_t dimension) {
  naive::Matrix matrix;
  matrix.dimension = dimension;
  const int32_t count = std::max(0, dimension * dimension + random.Between(-2, 3));
  const bool usual = random.Between(0, 3) > 0;
  const int32_t zeros = random.Between(0, 2);  // how many of ten are 0
  for (int32_t i = 0; i < count; ++i)
    matrix.entries.push_back(random.Between(0, 9) < zeros ? 0 : AnyEntry(random, usual));
  matrix.delta = random.Of({0, 0, 128, -128, random.Between(-2000, 2000), INT32_MAX, INT32_MIN});
  const double infinity = std::numeric_limits<double>::infinity();
  matrix.scale = random.Of({1.0, 1.0, 1.0, 0.5, 1.0 / 9, 1.0 / dimension, -0.25, 0.0, 1e300, infinity, std::nan("")});
  return matrix;
}

// A column times a row, but now and then for one entry.
naive::Matrix AnyProduct(Random &random, int32_t dimension) {
  naive::Matrix matrix = AnyMatrix(random, dimension);
  const bool usual = random.Between(0, 3) > 0;
  std::vector<int32_t> column, row;
  for (int32_t i = 0; i < dimension; ++i) {
    column.push_back(random.OneIn(4) ? 0 : AnyEntry(random, usual));
    row.push_back(random.OneIn(4) ? 0 : AnyEntry(random, true));
  }
  matrix.entries.clear();
  for (const int32_t c : column) {
    for (const int32_t r : row) matrix.entries.push_back(static_cast<int32_t>(int64_t{c} * r));
  }
  if (random.OneIn(4)) matrix.entries[static_cast<size_t>(random.Between(0, dimension * dimension - 1))] -= 1;
  return matrix;
}

void Check(Random &random, PluginHost &host, const naive::Matrix &matrix, const Limits &limits) {
  const auto array = host.NewArray(matrix.entries);
  CheckFilter(
      random, host,
      [&](REALobject instance, REALobject dest) {
        return PictureMatrix5(instance, dest, matrix.dimension, array->ArrayHandle(), matrix.delta, matrix.scale);
      },
      [&](ImageClassData &source, ImageClassData &dest, bool isNew) {
        naive::ApplyMatrix(source, dest, isNew ? std::min(source.Width, dest.Width) : source.Width,
                           isNew ? std::min(source.Height, dest.Height) : source.Height, matrix);
      },
      true, limits);
}

TEST(MatrixFilterProperty, AnyMatrixOnAnyImagesGivesTheNaiveBytes) {
  PluginHost host({.fenced = true});
  CheckCases([&](Random &random) { Check(random, host, AnyMatrix(random, random.Between(-1, 7)), {}); });
}

TEST(MatrixFilterProperty, AColumnTimesARowOnAnyImagesGivesTheNaiveBytes) {
  PluginHost host({.fenced = true});
  CheckCases([&](Random &random) { Check(random, host, AnyProduct(random, random.Between(1, 9)), {60, 9}); });
}

TEST(MatrixFilterProperty, ALargeMatrixOnSmallImagesGivesTheNaiveBytes) {
  PluginHost host({.fenced = true});
  CheckCases([&](Random &random) {
    Check(random, host, AnyMatrix(random, random.Of({8, 20, 49, 50, 51, 53, 70})), {5, 4});
  });
}

}  // namespace
}  // namespace zvk::filters
