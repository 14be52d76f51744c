#include "tests/scenes/views.h"

#include <utility>

#include "image/views.h"
#include "tests/scenes/rectangles.h"

namespace scenes {
namespace {

using namespace zvk::image;

// Empty if the image has no such view.
ImageObject OneView(Random &random, const ImageObject &image, bool anyRectangle) {
  const ImageClassData &record = *RecordOf(image);
  switch (random.Between(0, 5)) {
    case 0:
    case 1: {
      const Rectangle part = anyRectangle ? AnyRectangle(random, record.Width, record.Height)
                                          : AnyPart(random, record.Width, record.Height);
      return Adopt(ClipImage5(image, part.x, part.y, part.width, part.height));
    }
    case 2:
      return Adopt(GetMirroredView(image));
    case 3:
      return record.ChannelCount > 0 ? Adopt(Channel(image, random.Between(0, record.ChannelCount - 1)))
                                     : ImageObject();
    case 4: {
      constexpr REALobject (*kChannels[])(REALobject) = {RedChannel,   GreenChannel,   BlueChannel,
                                                         GrayChannel,  AlphaChannel,   CyanChannel,
                                                         BlackChannel, MagentaChannel, YellowChannel};
      return Adopt(kChannels[random.Between(0, 8)](image));
    }
    default:
      return Adopt((record.IsRGB ? RGBChannel : CMYKChannel)(image));
  }
}

}  // namespace

ImageObject AnyView(Random &random, const StoredImage &stored, const ViewChances &chances) {
  ImageObject image = stored.Image();
  if (!stored.HasRowTable()) {
    for (int32_t steps = random.Between(0, 3); steps > 0; --steps) {
      if (RecordOf(image)->Width < 1 || RecordOf(image)->Height < 1) break;
      ImageObject view = OneView(random, image, chances.emptyClips);
      if (view) image = std::move(view);
    }
  }
  ImageClassData &record = *RecordOf(image);
  if (chances.movedOffsets && record.BitsPerComponent == 8 && random.OneIn(6)) {
    for (int32_t ImageClassData::*offset :
         {&ImageClassData::RedOffset, &ImageClassData::GreenOffset, &ImageClassData::BlueOffset,
          &ImageClassData::GrayOffset, &ImageClassData::AlphaOffset}) {
      if (random.OneIn(3)) record.*offset = random.Between(0, record.PixelSize - 1);
    }
  }
  return image;
}

ImageObject AnyViewOfSize(Random &random, const StoredImage &stored, int32_t width, int32_t height) {
  const ImageClassData &whole = stored.Record();
  if (whole.Width < width || whole.Height < height) return {};
  if (whole.Width == width && whole.Height == height && random.OneIn(2)) return stored.Image();
  if (stored.HasRowTable()) return {};
  ImageObject view = Adopt(ClipImage5(stored, random.Between(0, whole.Width - width),
                                      random.Between(0, whole.Height - height), width, height));
  if (random.OneIn(3)) view = Adopt(GetMirroredView(view));
  if (random.OneIn(3) && RecordOf(view)->ChannelCount > 0) {
    view = Adopt(Channel(view, random.Between(0, RecordOf(view)->ChannelCount - 1)));
  }
  return view;
}

}  // namespace scenes
