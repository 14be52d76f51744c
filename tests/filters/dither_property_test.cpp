#include <gtest/gtest.h>
#include <rapidcheck.h>

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
  EXPECT_TRUE(rc::check([&] {
    const int32_t matrix = Any(0, 11);
    const int32_t levels = *rc::gen::element(2, 2, 3, 4, 255, 256, Any(0, 258));
    CheckFilter(
        host, [&](REALobject self, REALobject dest) { return DitherFilter(self, dest, matrix, levels); },
        [&](ImageClassData &source, ImageClassData &dest, bool) {
          if (matrix < 1 || matrix > 10 || levels < 2 || levels > 256 || source.IsCMYK) return;
          const DitherList &list = lists[static_cast<size_t>(matrix - 1)];
          naive::MapPixels(source, dest, [&](char, int sample, int32_t x, int32_t y) {
            return naive::DitheredSample(list.thresholds, list.size, levels, sample, x, y);
          });
        });
  }));
}

}  // namespace
}  // namespace zvk::filters
