// The filters with a neighbourhood over random scenes, against the naive ones: every byte of every storage.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <limits>

#include "filters/box_blur.h"
#include "filters/diffuse_filter.h"
#include "filters/engrave_filter.h"
#include "filters/fractional_blur.h"
#include "filters/neon_filter.h"
#include "filters/oil_filter.h"
#include "filters/stamp_filter.h"
#include "filters/unsharp.h"
#include "tests/filters/filter_scenes.h"
#include "tests/naive/neighbourhood.h"

namespace zvk::filters {
namespace {

using namespace filter_testing;

class NeighbourhoodProperty : public FilterTest {};

// A radius or a distance: mostly within the image, now and then far beyond it.
int32_t AnyReach(Random &random) { return random.Between(0, 5) == 0 ? random.Between(0, 400) : random.Between(0, 12); }

TEST_F(NeighbourhoodProperty, BoxBlursGiveTheNaiveBytes) {
  CheckCases([&](Random &random) {
    const int32_t radius = AnyReach(random);
    const double fraction = random.Of({0.0, 0.5, 0.99});
    const bool vertical = random.Between(0, 3) != 0, horizontal = random.Between(0, 3) != 0;
    CheckFilter(
        random, host_,
        [&](REALobject instance, REALobject dest) {
          return BoxBlurFilter(instance, dest, radius + fraction, vertical, horizontal);
        },
        [&](ImageClassData &source, ImageClassData &dest, bool) {
          if (int64_t{source.RowSize} + 20 >= 1) naive::BoxBlur(source, dest, radius, vertical, horizontal);
        });
  });
}

TEST_F(NeighbourhoodProperty, OilFiltersGiveTheNaiveBytes) {
  CheckCases([&](Random &random) {
    const int32_t levels = random.Of({1, 2, 3, 16, 17, 100, 256, 1000});
    const int32_t range = random.Of({0, 1, 2, 3, 5, 40, -1, -5, INT32_MAX, INT32_MAX - 3, INT32_MIN});
    CheckFilter(
        random, host_, [&](REALobject instance, REALobject dest) { return OilFilter(instance, dest, levels, range); },
        [&](ImageClassData &source, ImageClassData &dest, bool) { naive::Oil(source, dest, levels, range); }, false,
        {.width = 60, .height = 7});
  });
}

TEST_F(NeighbourhoodProperty, DiffuseFiltersGiveTheNaiveBytes) {
  CheckCases([&](Random &random) {
    const int32_t level = random.Of({0, 1, 2, 7, 100, -1, -2, -9, 1 << 30, INT32_MAX, INT32_MIN});
    const auto seed = static_cast<unsigned>(random.Between(0, 1000));
    CheckFilter(
        random, host_,
        [&](REALobject instance, REALobject dest) {
          std::srand(seed);
          return DifuseFilter(instance, dest, level);
        },
        [&](ImageClassData &source, ImageClassData &dest, bool) {
          std::srand(seed);
          naive::Diffuse(source, dest, level);
        });
  });
}

TEST_F(NeighbourhoodProperty, EngraveFiltersGiveTheNaiveBytes) {
  CheckCases([&](Random &random) {
    const int32_t most = random.Of({3, 20, 400});
    const int32_t level =
        random.Between(0, 9) == 0 ? random.Of({INT32_MAX, INT32_MAX - 5, INT32_MIN}) : random.Between(-most, most);
    CheckFilter(
        random, host_, [&](REALobject instance, REALobject dest) { return EngraveFilter(instance, dest, level); },
        [&](ImageClassData &source, ImageClassData &dest, bool) { naive::Engrave(source, dest, level); });
  });
}

TEST_F(NeighbourhoodProperty, NeonFiltersGiveTheNaiveBytes) {
  CheckCases([&](Random &random) {
    CheckFilter(
        random, host_, [&](REALobject instance, REALobject dest) { return NeonFilter(instance, dest); },
        [&](ImageClassData &source, ImageClassData &dest, bool) { naive::Neon(source, dest); }, false,
        {.wholeRows = true});
  });
}

TEST_F(NeighbourhoodProperty, UnsharpMasksGiveTheNaiveBytes) {
  CheckCases([&](Random &random) {
    const double amount = random.Of({0.0, 0.3, 1.0, -0.25, -1.0, 1e9, std::numeric_limits<double>::quiet_NaN()});
    const int32_t threshold = random.Of({0, 1, 5, 128, 255, 256, -3});
    const Scene scene = AnyScene(random, host_);
    RC_PRE(scene.dest);
    ImageClassData &image = Record(scene.source), &blurred = Record(scene.dest);
    const bool done = image.BitsPerComponent != 16 && blurred.BitsPerComponent != 16 && image.Width == blurred.Width &&
                      image.Height == blurred.Height && image.ImageFormat == blurred.ImageFormat;
    RC_CLASSIFY(done);
    const auto before = scene.Snapshot();
    if (done) naive::Unsharp(image, blurred, amount, threshold);
    const auto expected = scene.Snapshot();
    scene.Restore(before);
    RC_ASSERT(unsharpFilter(scene.source, scene.dest, amount, threshold) == (done ? 1 : 0));
    RC_ASSERT(scene.Snapshot() == expected);
  });
}

// Of images with a colour family; one of none gives nil.
TEST_F(NeighbourhoodProperty, FractionalBlursGiveTheNaiveBytes) {
  CheckCases([&](Random &random) {
    const double radius =
        random.Of({0.0, 0.25, 0.5, 0.999, 3.3, -0.25, 1e300, std::numeric_limits<double>::quiet_NaN()});
    CheckFilter(
        random, host_,
        [&](REALobject instance, REALobject dest) {
          const REALobject result = BoxBlurFractionalFilter(instance, dest, radius);
          const ImageClassData &record = *RecordOf(instance);
          if (result != nullptr || record.BitsPerComponent == 16 || !naive::ChannelsOf(record).empty()) return result;
          RC_DISCARD("no family");
          return result;
        },
        [&](ImageClassData &source, ImageClassData &dest, bool) { naive::FractionalBlur(source, dest, radius); }, false,
        {.wholeRows = true});
  });
}

// The stamp's own steps: three blurs, of which dest gets the first, and the curve.
TEST_F(NeighbourhoodProperty, StampsAreCurvesOverThreeBlurs) {
  CheckCases([&](Random &random) {
    const double radius = random.Of({0.0, 1.0, 3.0, 7.5}), threshold = random.Of({0.1, 0.5, 0.77, 1.5});
    const double softness = random.Of({0.0, 0.2, 1.0, -1.0, std::numeric_limits<double>::quiet_NaN()});
    const auto black = static_cast<uint32_t>(random.Between(0, INT32_MAX - 1)),
               white = static_cast<uint32_t>(random.Between(0, INT32_MAX - 1));
    const Scene scene = AnyScene(random, host_, {.width = 60});
    ImageClassData &source = Record(scene.source);
    RC_PRE(source.BitsPerComponent != 16 && (!scene.dest || Record(scene.dest).BitsPerComponent != 16));
    const auto before = scene.Snapshot();

    const auto blurred = [&](const Image &image, Image dest) {
      ImageClassData &from = Record(image);
      if (!dest) dest = New(from.Width, from.Height, from.ImageFormat);
      if (int64_t{from.RowSize} + 20 >= 1) {
        naive::BoxBlur(from, Record(dest), naive::Trunc(radius / 3.0), true, true);
      }
      return dest;
    };
    const Image third = blurred(blurred(blurred(scene.source, scene.dest), {}), {});
    const ImageClassData &size = Record(third);
    const Image expected = New(size.Width, size.Height, size.ImageFormat);
    naive::StampColours(Record(third), Record(expected), threshold, softness, black, white);
    const auto expectedStorage = scene.Snapshot();
    scene.Restore(before);

    const Image result = Adopt(StampFilter(scene.source, scene.dest, radius, threshold, softness, black, white));
    RC_ASSERT(scene.Snapshot() == expectedStorage);
    RC_ASSERT(static_cast<bool>(result));
    RC_ASSERT((result.Handle() != scene.dest.Handle() && result.Handle() != scene.source.Handle()));
    RC_ASSERT(Record(result).ImageFormat == size.ImageFormat);
    RC_ASSERT(PixelsOf(result) == PixelsOf(expected));
  });
}

}  // namespace
}  // namespace zvk::filters
