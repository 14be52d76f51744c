#include <gtest/gtest.h>

#include <vector>

#include "filters/dither.h"
#include "tests/filters/dither_lists.h"
#include "tests/filters/filter_scenes.h"

namespace zvk::filters {
namespace {

using namespace filter_testing;

TEST(DitherProperty, AnyMatrixAndLevelsOnAnyImagesGiveTheNaiveBytes) {
  PluginHost host({.fenced = true});
  const std::vector<DitherList> lists = DitherLists();
  CheckCases([&](Random &random) {
    const int32_t matrix = random.Between(0, 11);
    const int32_t levels = random.Of({2, 2, 3, 4, 255, 256, random.Between(0, 258)});
    CheckFilter(
        random, host, [&](REALobject self, REALobject dest) { return DitherFilter(self, dest, matrix, levels); },
        [&](ImageClassData &source, ImageClassData &dest, bool) {
          if (matrix < 1 || matrix > 10 || levels < 2 || levels > 256 || source.IsCMYK) return;
          const DitherList &list = lists[static_cast<size_t>(matrix - 1)];
          naive::MapPixels(source, dest, [&](char, int sample, int32_t x, int32_t y) {
            return naive::DitheredSample(list.thresholds, list.size, levels, sample, x, y);
          });
        });
  });
}

}  // namespace
}  // namespace zvk::filters
