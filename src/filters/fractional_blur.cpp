#include "filters/fractional_blur.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "host/resources.h"
#include "pixels/dispatch.h"
#include "pixels/filter_frame.h"
#include "pixels/layouts.h"
#include "pixels/neighbourhood.h"
#include "pixels/overlap.h"
#include "pixels/row_walker.h"

namespace zvk::filters {

namespace {

// The weight of the outer taps against 1 of the middle one, and what makes the sum of all three 1.
struct Taps {
  double outer;
  double norm;

  explicit Taps(double radius) : outer(radius - std::floor(radius)), norm(1.0 / (outer + outer + 1.0)) {
    // Not-a-number as an integer is the most negative one, of which a byte keeps 0.
    if (std::isnan(outer)) outer = norm = 0.0;
  }
};

// blurred[i] = (outer x (a[i] + b[i]) + middle[i]) x norm, truncated. Blurred must be other bytes than the rest.
[[gnu::always_inline]] inline void BlendBody(const uint8_t *a, const uint8_t *b, const uint8_t *middle, ptrdiff_t count,
                                             Taps taps, uint8_t *__restrict blurred) {
  for (ptrdiff_t i = 0; i < count; ++i) {
    const int32_t neighbours = a[i] + b[i];
    const double value = (neighbours * taps.outer + middle[i]) * taps.norm;
    blurred[i] = static_cast<uint8_t>(static_cast<int32_t>(value));
  }
}
constexpr auto Blend = KernelOf<BlendBody>;

template <class Layout>
class FractionalBlur {
 public:
  FractionalBlur(ImageClassData &source, ImageClassData &dest, Taps taps)
      : source_(source),
        dest_(dest),
        taps_(taps),
        width_(source.Width),
        rowBytes_(std::max(source.RowSize, 0)),
        rows_(source, dest) {
    // The limit is that of a whole row with a margin of 20 bytes.
    const int64_t room = int64_t{source.RowSize} + 20;
    if (room < 1 || room > kLargestAllocation) return;
    for (ZeroedBuffer<uint8_t> *buffer : {&above_, &middle_, &below_, &line_, &made_}) {
      *buffer = ZeroedBuffer<uint8_t>(int64_t{width_} * kChannels);
    }
  }

  // False if there is no memory to work in.
  explicit operator bool() const { return above_ && middle_ && below_ && line_ && made_; }

  void Run() {
    // Where nobody can tell, each row gets both passes before the next one gets the first.
    const bool together =
        SamplesAreApart<Layout>(dest_) && OrderIsUnobservable<Layout>(source_, dest_, width_, source_.Height);
    BlurColumns(together);
    if (!together) BlurDestAlongRows();
  }

 private:
  static constexpr ptrdiff_t kChannels = Layout::channelCount;

  // A row that cannot be had counts as zeros.
  void Take(int32_t y, const ZeroedBuffer<uint8_t> &buffer) {
    const uint8_t *row = FetchRow(source_, y);
    rows_.source.CopyWithin(row, row != nullptr ? rowBytes_ : 0, width_, buffer.Get());
  }

  void BlurColumns(bool thenAlongRows) {
    const int32_t last = source_.Height - 1;
    Take(0, middle_);
    Take(std::min(1, last), below_);  // an image of one row has no second one to fetch
    for (int32_t y = 0; y <= last; ++y) {
      HeldRow row(dest_, y, source_);
      if (y > 0 && y < last) {
        Take(y + 1, below_);
        row.Again();
      }
      if (row) {
        rows_.dest.Write(row.Get(), width_, made_.Get(), [&](uint8_t *samples) {
          if (!thenAlongRows) return BlurColumn(y, last, samples);
          BlurColumn(y, last, line_.Get());
          BlurAlong(line_.Get(), samples);
        });
      }
      std::swap(above_, middle_);
      std::swap(middle_, below_);
    }
  }

  // At the top the row itself stands for both of its neighbours, so that it passes through; at the bottom it stands for
  // the one below.
  void BlurColumn(int32_t y, int32_t last, uint8_t *blurred) {
    const uint8_t *middle = middle_.Get();
    const uint8_t *above = y == 0 ? middle : above_.Get();
    const uint8_t *below = y == 0 || y == last ? middle : below_.Get();
    Blend(above, below, middle, width_ * kChannels, taps_, blurred);
  }

  void BlurDestAlongRows() {
    ForEachRow(dest_, source_.Height, [&](uint8_t *row, int32_t /*y*/) {
      rows_.dest.Copy(row, width_, line_.Get());
      rows_.dest.Write(row, width_, made_.Get(), [&](uint8_t *samples) { BlurAlong(line_.Get(), samples); });
    });
  }

  // The other way round than along columns: at the left the pixel itself stands for the one further left, and at the
  // right it stands for both of its neighbours, so that it passes through.
  void BlurAlong(const uint8_t *line, uint8_t *blurred) const {
    const ptrdiff_t last = (ptrdiff_t{width_} - 1) * kChannels;
    if (last > 0) {
      Blend(line, line + kChannels, line, kChannels, taps_, blurred);
      Blend(line, line + 2 * kChannels, line + kChannels, last - kChannels, taps_, blurred + kChannels);
    }
    Blend(line + last, line + last, line + last, kChannels, taps_, blurred + last);
  }

  ImageClassData &source_;
  ImageClassData &dest_;
  Taps taps_;
  int32_t width_;
  int64_t rowBytes_;
  SampleRowsOfBoth<Layout> rows_;
  ZeroedBuffer<uint8_t> above_;
  ZeroedBuffer<uint8_t> middle_;
  ZeroedBuffer<uint8_t> below_;
  ZeroedBuffer<uint8_t> line_;
  ZeroedBuffer<uint8_t> made_;
};

template <class Layout>
void RunFractionalBlur(ImageClassData &source, ImageClassData &dest, Taps taps) {
  FractionalBlur<Layout> blur(source, dest, taps);
  if (blur) blur.Run();
}

void BoxBlurFractionalFilterRGB(ImageClassData &source, ImageClassData &dest, Taps taps) {
  RunFractionalBlur<Layout<ColourFamily::RGB, false>>(source, dest, taps);
}

void BoxBlurFractionalFilterRGBA(ImageClassData &source, ImageClassData &dest, Taps taps) {
  RunFractionalBlur<Layout<ColourFamily::RGB, true>>(source, dest, taps);
}

}  // namespace

REALobject BoxBlurFractionalFilter(REALobject instance, REALobject dest, double radius) {
  return RunFilter(instance, dest, NewDest::SameSize, [&](ImageClassData &source, ImageClassData &target) {
    const Taps taps(radius);
    const auto blurGray = [&]<class Layout>(Layout) { RunFractionalBlur<Layout>(source, target, taps); };
    if (VisitLayout<ColourFamily::Gray>(source, blurGray)) return true;
    // CMYK goes the way of RGB, whose three offsets are 0 in it: the first byte of each pixel is blurred.
    if (!source.IsRGB && !source.IsCMYK) return false;
    if (source.HasAlpha) {
      BoxBlurFractionalFilterRGBA(source, target, taps);
    } else {
      BoxBlurFractionalFilterRGB(source, target, taps);
    }
    return true;
  });
}

}  // namespace zvk::filters
