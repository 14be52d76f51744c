#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <vector>

#include "filters/tone_filters.h"
#include "tests/filters/filter_scenes.h"
#include "tests/filters/tone_lists.h"

namespace zvk::filters {
namespace {

using namespace filter_testing;

// Numbers for samples, by channel; a channel without is not written. Only gray and RGB images, or all.
struct Tables {
  std::map<char, std::vector<int32_t>> byChannel;
  bool inks = false;

  void Map(ImageClassData &source, ImageClassData &dest) const {
    if (source.IsCMYK && !inks) return;
    naive::MapPixels(source, dest, [&](char channel, int sample, int32_t, int32_t) {
      const auto found = byChannel.find(channel);
      return found == byChannel.end() ? -1 : found->second[static_cast<size_t>(sample)] & 0xFF;
    });
  }
};

std::vector<int32_t> AnyArray(Random &random) {
  std::vector<int32_t> values;
  const int32_t count = random.Of({0, 1, 100, 255, 256, 256, 256, 300});
  for (int32_t i = 0; i < count; ++i) values.push_back(static_cast<int32_t>(random.Bits()));
  return values;
}

std::vector<int32_t> Padded(std::vector<int32_t> values) {
  values.resize(256);
  return values;
}

TEST(ToneFiltersProperty, AnySolarizedImagesGiveTheNaiveBytes) {
  PluginHost host({.fenced = true});
  const std::vector<int> list = SolarizeList();
  Tables tables;
  tables.inks = true;
  for (const char channel : {'g', 'R', 'G', 'B', 'C', 'M', 'Y', 'K', 'A'}) {
    tables.byChannel[channel].assign(list.begin(), list.end());
  }
  CheckCases([&](Random &random) {
    CheckFilter(random, host, SolarizeFilter,
                [&](ImageClassData &source, ImageClassData &dest, bool) { tables.Map(source, dest); });
  });
}

TEST(ToneFiltersProperty, AnyArraysOnAnyImagesGiveTheNaiveBytes) {
  PluginHost host({.fenced = true});
  CheckCases([&](Random &random) {
    const std::vector<int32_t> one = AnyArray(random), two = random.Between(0, 2) == 0 ? one : AnyArray(random);
    const std::vector<int32_t> three = random.Between(0, 2) == 0 ? one : AnyArray(random),
                               four = random.Between(0, 2) == 0 ? one : AnyArray(random);
    const auto first = host.NewArray(one), second = host.NewArray(two), third = host.NewArray(three);
    const auto fourth = host.NewArray(four);
    Tables tables;
    Filter filter;
    switch (random.Between(0, 3)) {
      case 0:
        filter = [&](REALobject self, REALobject dest) { return TransferFilterG(self, dest, first->ArrayHandle()); };
        tables.byChannel = {{'g', Padded(one)}, {'R', Padded(one)}, {'G', Padded(one)}, {'B', Padded(one)}};
        break;
      case 1:
        filter = [&](REALobject self, REALobject dest) {
          return TransferFilterGA(self, dest, first->ArrayHandle(), fourth->ArrayHandle());
        };
        tables.byChannel = {
            {'g', Padded(one)}, {'R', Padded(one)}, {'G', Padded(one)}, {'B', Padded(one)}, {'A', Padded(four)}};
        break;
      case 2:
        filter = [&](REALobject self, REALobject dest) {
          return TransferFilterRGB(self, dest, first->ArrayHandle(), second->ArrayHandle(), third->ArrayHandle());
        };
        tables.byChannel = {{'g', Padded(two)}, {'R', Padded(one)}, {'G', Padded(two)}, {'B', Padded(three)}};
        break;
      default:
        filter = [&](REALobject self, REALobject dest) {
          return TransferFilterRGBA(self, dest, first->ArrayHandle(), second->ArrayHandle(), third->ArrayHandle(),
                                    fourth->ArrayHandle());
        };
        tables.byChannel = {
            {'g', Padded(two)}, {'R', Padded(one)}, {'G', Padded(two)}, {'B', Padded(three)}, {'A', Padded(four)}};
    }
    CheckFilter(random, host, filter,
                [&](ImageClassData &source, ImageClassData &dest, bool) { tables.Map(source, dest); });
  });
}

std::vector<int32_t> GammaList(double gamma) {
  std::vector<int32_t> list;
  for (int v = 0; v < 256; ++v) {
    const double value = std::pow(v / 255.0, 1.0 / gamma) * 255.0 + 0.5;
    list.push_back(!(value > -2147483649.0 && value < 2147483648.0) || value < 0 ? 0
                   : value > 255                                                 ? 255
                                                                                 : static_cast<int32_t>(value));
  }
  return list;
}

TEST(ToneFiltersProperty, AnyGammasOnAnyImagesGiveTheNaiveBytes) {
  PluginHost host({.fenced = true});
  CheckCases([&](Random &random) {
    // Whole numbers, so that the gray one is exact.
    const int32_t red = random.Between(-3, 5), green = random.Between(-3, 5), blue = random.Between(-3, 5),
                  alpha = random.Between(-3, 5);
    const bool withAlpha = random.Between(0, 1) == 0;
    Tables tables;
    tables.byChannel = {{'g', GammaList((red * 77 + green * 151 + blue * 28) / 256)},
                        {'R', GammaList(red)},
                        {'G', GammaList(green)},
                        {'B', GammaList(blue)}};
    if (withAlpha) tables.byChannel['A'] = GammaList(alpha);
    CheckFilter(
        random, host,
        [&](REALobject self, REALobject dest) {
          return withAlpha ? GammaFilterRGBA(self, dest, red, green, blue, alpha)
                           : GammaFilterRGB(self, dest, red, green, blue);
        },
        [&](ImageClassData &source, ImageClassData &dest, bool) { tables.Map(source, dest); });
  });
}

}  // namespace
}  // namespace zvk::filters
