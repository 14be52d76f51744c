#include "geometry/rotate.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>

#include "geometry/column_shear.h"
#include "geometry/shear.h"
#include "geometry/three_shears.h"
#include "geometry/turns.h"
#include "host/resources.h"
#include "host/truncate.h"
#include "image/image_factory.h"
#include "pixels/layouts.h"
#include "pixels/pixel_watch.h"

namespace zvk::geometry {

namespace {

// The background by channel.
using Background = std::array<std::pair<ChannelOffset, uint8_t>, 9>;

template <class L>
Pixel<L> PixelOf(const Background &background) {
  Pixel<L> pixel = {};
  for (size_t i = 0; i < L::channelCount; ++i) {
    for (const auto &[channel, sample] : background) {
      if (channel == kShearChannels<L>[i]) pixel.samples[i] = sample;
    }
  }
  return pixel;
}

// --- the angle ---

// The same angle from 0 up to 360. Empty if it is not finite or beyond 2^55 in size, where taking 360 away no longer
// changes it. Up to there each single step of taking 360 away is exact, so all of them together are the exact
// remainder.
std::optional<double> Reduced(double angle) {
  constexpr double kLargest = 36028797018963968.0;
  if (!(std::fabs(angle) <= kLargest)) return std::nullopt;
  if (angle >= 360.0) angle = std::fmod(angle, 360.0);
  if (angle < 0.0) {
    angle = std::fmod(angle, 360.0);
    if (angle < 0.0) angle += 360.0;  // rounded: 360 itself for the smallest angles
  }
  return angle;
}

// An image that remains to be turned by `angle` degrees, at most 45 in size or above 315.
struct Remainder {
  ObjectReference base;
  double angle;
};

Remainder TurnRightAngles(REALobject instance, double angle) {
  if (angle > 45.0 && angle <= 135.0) return {ObjectReference(Rotate90(instance, nullptr)), angle - 90.0};
  if (angle > 135.0 && angle <= 225.0) return {ObjectReference(Rotate180(instance, nullptr)), angle - 180.0};
  if (angle > 225.0 && angle <= 315.0) return {ObjectReference(Rotate270(instance, nullptr)), angle - 270.0};
  REALLockObject(instance);
  return {ObjectReference(instance), angle};
}

// --- the shears ---

// True if both images can be worked on, after a yield on each.
bool StartStage(ImageClassData &source, ImageClassData &dest) {
  const PixelWatch watchedSource(source), watchedDest(dest);
  if (!IsUsable(source) || !IsUsable(dest)) return false;
  YieldOn(source);
  YieldOn(dest);
  // The yields let other code of the host run, which may have closed or constructed anew either image.
  return IsUsable(source) && IsUsable(dest) && watchedSource.HasStorage() && watchedDest.HasStorage();
}

// Rows that both images have, up to `rows`.
int32_t CommonRows(const ImageClassData &source, const ImageClassData &dest, int32_t rows) {
  return std::min({rows, source.Height, dest.Height});
}

// True if nobody can tell whether the shears are made one after the other, by way of two images of their own like
// `between`: these are known to nobody, no code of the host runs meanwhile, and they keep each sample as it is.
template <class L>
bool ShearsMayBeMadeAtOnce(const ImageClassData &original, const ImageClassData &between) {
  return !HasFactory(original) && original.Yield.YieldTicks == 0 && between.Yield.YieldTicks == 0 &&
         HasFixedRows(original) && SamplesAreApart<L>(between) &&
         OrderIsUnobservable<L>(original, between, between.Width, between.Height);
}

// The base turned by an angle in degrees; empty if that is refused, or a step of it.
template <class L>
ObjectReference RotateByShears(ObjectReference base, double angle, const Pixel<L> &background) {
  ImageClassData &original = *RecordOf(base.Get());
  const double r = angle * 3.141592653589793 / 180;
  const double s = std::sin(r);
  const double t = std::tan(r * 0.5);
  if (!IsUsable(original)) return {};
  const PixelWatch watch(original);
  YieldOn(original);
  if (!IsUsable(original)) return {};
  const int32_t width = original.Width;
  const int32_t height = original.Height;

  const int32_t firstWidth = width + Truncate(std::fabs(t) * height);
  ObjectReference first = CreatePicture(&original, firstWidth, height, original.ImageFormat);
  if (!first) return {};
  ImageClassData &firstRecord = *RecordOf(first.Get());
  if (!StartStage(original, firstRecord) || !watch.HasStorage()) return {};
  const double c = std::cos(r);
  const int32_t secondHeight = Truncate(height * c + width * std::fabs(s)) + 1;
  const double columnStart = s > 0.0 ? (width - 1) * s : -((width - firstWidth) * s);
  const ColumnShear columns{columnStart, s, firstWidth, secondHeight};
  const auto forEachFirstSkew = [&](int32_t rows, const auto &visit) {
    for (int32_t row = 0; row < rows; ++row) visit(row, ((t >= 0.0 ? row : row - height) + 0.5) * t);
  };

  std::optional<ThreeShears<L::channelCount>> atOnce;
  if (ShearsMayBeMadeAtOnce<L>(original, firstRecord)) {
    atOnce.emplace(height, columns, background.samples);
    if (!*atOnce) atOnce.reset();
  }
  if (!atOnce) {
    forEachFirstSkew(CommonRows(original, firstRecord, height), [&](int32_t row, double skew) {
      const int32_t offset = Truncate(std::floor(skew));
      HorizSkew<L>(original, firstRecord, row, offset, skew - offset, background);
    });
  }

  ObjectReference second = CreatePicture(&original, firstWidth, secondHeight, original.ImageFormat);
  if (!second) return {};
  ImageClassData &secondRecord = *RecordOf(second.Get());
  if (!StartStage(firstRecord, secondRecord)) return {};
  if (!atOnce) ShearColumns<L>(firstRecord, secondRecord, columns, background);
  first.Reset();

  const int32_t thirdWidth = Truncate(width * c + height * std::fabs(s)) + 1;
  const int32_t thirdHeight = Truncate(height * c + width * std::fabs(s)) + 1;
  ObjectReference third = CreatePicture(&original, thirdWidth, thirdHeight, secondRecord.ImageFormat);
  if (!third) return {};
  ImageClassData &thirdRecord = *RecordOf(third.Get());
  if (!StartStage(secondRecord, thirdRecord)) return {};
  const double x = (width - 1) * s;
  const double start = s >= 0.0 ? -(x * t) : (-(thirdHeight - 1) - x) * t;
  const auto forEachThirdSkew = [&](int32_t rows, const auto &visit) {
    double f = start;
    for (int32_t row = 0; row < rows; ++row, f = f + t) visit(row, f);
  };
  if (atOnce) {
    forEachFirstSkew(height, [&](int32_t row, double skew) { atOnce->SetFirst(row, skew); });
    forEachThirdSkew(thirdHeight, [&](int32_t row, double skew) { atOnce->SetThird(row, skew); });
    atOnce->Shear(original, shear_detail::IntoRun<L>(original), thirdRecord, shear_detail::OutOfRun<L>(thirdRecord));
    return third;
  }
  forEachThirdSkew(CommonRows(secondRecord, thirdRecord, thirdHeight), [&](int32_t row, double skew) {
    const int32_t offset = Truncate(std::floor(skew));
    HorizSkew<L>(secondRecord, thirdRecord, row, offset, skew - offset, background);
  });
  return third;
}

}  // namespace

REALobject rbRotate(REALobject instance, double angle, int32_t Red, int32_t Green, int32_t Blue, int32_t Alpha,
                    int32_t Gray, int32_t Cyan, int32_t Magenta, int32_t Yellow, int32_t Black) {
  if (instance == nullptr) return nullptr;
  const std::optional<double> reduced = Reduced(angle);
  if (!reduced) return nullptr;
  if (*reduced == 0.0) {
    REALLockObject(instance);
    return instance;
  }
  if (*reduced == 90.0) return Rotate90(instance, nullptr);
  if (*reduced == 180.0) return Rotate180(instance, nullptr);
  if (*reduced == 270.0) return Rotate270(instance, nullptr);

  Remainder remainder = TurnRightAngles(instance, *reduced);
  if (!remainder.base) return nullptr;
  const auto byte = [](int32_t argument) { return static_cast<uint8_t>(argument); };
  const Background background{{{&ImageClassData::RedOffset, byte(Red)},
                               {&ImageClassData::GreenOffset, byte(Green)},
                               {&ImageClassData::BlueOffset, byte(Blue)},
                               {&ImageClassData::AlphaOffset, byte(Alpha)},
                               {&ImageClassData::GrayOffset, byte(Gray)},
                               {&ImageClassData::CyanOffset, byte(Cyan)},
                               {&ImageClassData::MagentaOffset, byte(Magenta)},
                               {&ImageClassData::YellowOffset, byte(Yellow)},
                               {&ImageClassData::BlackOffset, byte(Black)}}};
  ObjectReference result;
  VisitLayout<ColourFamily::Gray, ColourFamily::RGB, ColourFamily::CMYK>(
      *RecordOf(remainder.base.Get()), [&]<class L>(L) {
        result = RotateByShears<L>(std::move(remainder.base), remainder.angle, PixelOf<L>(background));
      });
  return result.Release();
}

}  // namespace zvk::geometry
