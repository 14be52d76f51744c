// Host pictures of 24 megapixels in and out, with and without a mask; and the masked drawing as plain loops, over a
// sixteenth of the pixels. Pixels a second.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <functional>

#include "bench/bench_host.h"
#include "image/image_formats.h"
#include "pictures/masked_drawing.h"
#include "pictures/picture_export.h"
#include "pictures/picture_import.h"
#include "standalone/runtime/picture.h"

namespace zvk::bench {
namespace {

constexpr int32_t kWidth = 6000, kHeight = 4000;

using OwnedPicture = standalone::Owned<standalone::Picture>;

// As a console host has them.
OwnedPicture NewPicture(int32_t width, int32_t height, uint32_t seed) {
  auto picture = OwnedPicture::Adopt(standalone::Picture::Make(width, height));
  Noise noise(seed);
  for (int32_t y = 0; y < height; ++y) std::generate_n(picture->Storage().Row(y), 4 * width, std::ref(noise));
  return picture;
}

OwnedPicture NewMaskedPicture(int32_t width, int32_t height) {
  OwnedPicture picture = NewPicture(width, height, 1);
  picture->SetMask(NewPicture(width, height, 2));
  return picture;
}

void Draw(benchmark::State &state, void (*draw)(REALobject, REALobject), int32_t format) {
  const BenchImage image(kWidth, kHeight, format);
  const OwnedPicture picture = NewPicture(kWidth, kHeight, 1);
  for (auto _ : state) draw(image.Handle(), picture->Handle());
  CountPixels(state, kWidth, kHeight);
}

void DrawRedToGray(REALobject image, REALobject picture) {
  rbDrawPictureRedToGrayChannel6(image, picture, 0, 0, kWidth, kHeight);
}

void DrawMasked(benchmark::State &state, void (*draw)(REALobject, REALobject, uint8_t), int32_t format) {
  const BenchImage image(kWidth, kHeight, format);
  const OwnedPicture picture = NewMaskedPicture(kWidth, kHeight);
  for (auto _ : state) {
    draw(image.Handle(), picture->Handle(), 0);
    picture->Mask()->Unlock();  // the reference that each call leaves
  }
  CountPixels(state, kWidth, kHeight);
}

void Copy(benchmark::State &state, REALobject (*copy)(REALobject), int32_t format) {
  const BenchImage image(kWidth, kHeight, format);
  for (auto _ : state) OwnedPicture::Adopt(standalone::ObjectAs<standalone::Picture>(copy(image.Handle())));
  CountPixels(state, kWidth, kHeight);
}

// The rows of an export alone, into a picture that is there: most of a copy's time goes into fresh memory.
void Write(benchmark::State &state, int32_t format) {
  const BenchImage image(kWidth, kHeight, format);
  const OwnedPicture picture = NewPicture(kWidth, kHeight, 1);
  for (auto _ : state) {
    pictures::PictureWriter writer;
    writer.GetPictureEditor(picture->Handle(), 0, 1);
    pictures::WriteColours(pixels::PixelWatch(image.Record()), {0, 0, kWidth, kHeight}, writer);
  }
  CountPixels(state, kWidth, kHeight);
}

template <class Pixel>
void Naive(benchmark::State &state, int32_t format, Pixel pixel) {
  const BenchImage image(kWidth / 4, kHeight / 4, format);
  ImageClassData &record = image.Record();
  const OwnedPicture picture = NewMaskedPicture(record.Width, record.Height);
  for (auto _ : state) {
    for (int32_t y = 0; y < record.Height; ++y) {
      const uint8_t *source = picture->Storage().Row(y), *mask = picture->Mask()->Storage().Row(y);
      uint8_t *dest = record.GetRow(&record, y);
      for (int32_t x = 0; x < record.Width; ++x) {
        pixel(record, dest + x * record.PixelSize, source + 4 * x, mask + 4 * x);
      }
    }
    benchmark::ClobberMemory();
  }
  CountPixels(state, record.Width, record.Height);
}

void NaiveStore(const ImageClassData &record, uint8_t *dest, const uint8_t *source, const uint8_t *mask) {
  dest[record.AlphaOffset] = mask[2];
  dest[record.RedOffset] = source[2];
  dest[record.GreenOffset] = source[1];
  dest[record.BlueOffset] = source[0];
}

void NaiveBlend(const ImageClassData &record, uint8_t *dest, const uint8_t *source, const uint8_t *mask) {
  const int32_t offsets[] = {record.BlueOffset, record.GreenOffset, record.RedOffset};
  for (int32_t i = 0; i < 3; ++i) {
    uint8_t &sample = dest[offsets[i]];
    sample = static_cast<uint8_t>(((255 - mask[i]) * source[i] + sample * mask[i]) / 255);
  }
}

BENCHMARK_CAPTURE(Draw, DrawPictureRGB_RGB, rbDrawPictureRGB2, ImageFormatRGB);
BENCHMARK_CAPTURE(Draw, DrawPictureRGB_RGBA, rbDrawPictureRGB2, ImageFormatRGBA);
BENCHMARK_CAPTURE(Draw, DrawPictureRedToGrayChannel_G, DrawRedToGray, ImageFormatG);
BENCHMARK_CAPTURE(DrawMasked, DrawMaskedPictureRGB_RGB, rbDrawMaskedPictureRGB2, ImageFormatRGB);
BENCHMARK_CAPTURE(DrawMasked, DrawMaskedPictureRGB_RGBA, rbDrawMaskedPictureRGB2, ImageFormatRGBA);
BENCHMARK_CAPTURE(Naive, DrawMaskedPictureRGB_RGBA, ImageFormatRGBA, NaiveStore);
BENCHMARK_CAPTURE(DrawMasked, DrawMaskedPictureApplyMaskRGB_RGB, rbDrawPictureApplyMaskRGB2, ImageFormatRGB);
BENCHMARK_CAPTURE(DrawMasked, DrawMaskedPictureApplyMaskRGB_RGBA, rbDrawPictureApplyMaskRGB2, ImageFormatRGBA);
BENCHMARK_CAPTURE(Naive, DrawMaskedPictureApplyMaskRGB_RGB, ImageFormatRGB, NaiveBlend);
BENCHMARK_CAPTURE(Copy, CopyPicture_RGB, rbCopyPictureAll, ImageFormatRGB);
BENCHMARK_CAPTURE(Write, WriteColours_G, ImageFormatG);
BENCHMARK_CAPTURE(Write, WriteColours_G16, ImageFormatGray16);
BENCHMARK_CAPTURE(Write, WriteColours_RGB, ImageFormatRGB);
BENCHMARK_CAPTURE(Write, WriteColours_RGBA, ImageFormatRGBA);
BENCHMARK_CAPTURE(Write, WriteColours_CMYK, ImageFormatCMYK);
BENCHMARK_CAPTURE(Copy, CopyPictureWithMask_RGBA, rbCopyPictureWithMaskAll, ImageFormatRGBA);

}  // namespace
}  // namespace zvk::bench
