#include "compositing/flat_colours.h"

#include "compositing/blend.h"

namespace zvk::compositing {

namespace {

Samples<3> ComponentsOf(int32_t colour) {
  return {static_cast<uint8_t>(colour >> 16), static_cast<uint8_t>(colour >> 8), static_cast<uint8_t>(colour)};
}

// The colour as a destination takes it: a gray one as Luma.
BlendOperand FlatColour(const Samples<3> &colour, const PixelLayout &dest) {
  if (dest.family == ColourFamily::RGB) return BlendOperand::Flat(colour);
  return BlendOperand::Flat({static_cast<uint8_t>(Luma(colour[0], colour[1], colour[2]))});
}

// The layout of the colours of a gray or RGB image; empty for another one.
std::optional<PixelLayout> ColoursOf(const ImageClassData &image) {
  auto layout = BlendLayoutOf(image);
  if (layout) layout->hasAlpha = false;
  return layout;
}

// The premultiplied source is added to what the mask leaves of the dest; another one is interpolated.
void BlendFlat(const BlendJob &job, const PixelLayout &layout, bool premultiplied, const BlendOperand &source,
               const BlendOperand &mask) {
  if (premultiplied) {
    Blend(job, layout, Sum<Scaled::Own>{}, source, mask);
  } else {
    Blend(job, layout, Interpolation{}, source, mask);
  }
}

}  // namespace

void BlendFlatForeground(ImageClassData &dest, ImageClassData &image, bool premultiplied, const Transfer &transfer,
                         int32_t colour) {
  const auto layout = ColoursOf(dest);
  const auto coverage = ColoursOf(image);
  if (!layout || !coverage) return;
  const BlendJob job{dest, image, nullptr, true, transfer};
  const Samples<3> components = ComponentsOf(colour);
  const BlendOperand source = FlatColour(components, *layout);
  const BlendOperand mask = BlendOperand::Coverage(*coverage, *layout);
  if (!premultiplied && layout->family == ColourFamily::Gray) {
    Blend(job, *layout, GrayOfInterpolation{components}, source, mask);
  } else {
    // A premultiplied one in a gray destination: the weights of gray add up to 256, so the gray of a scaled sample and
    // a colour added to it is that sample and the gray of the colour.
    BlendFlat(job, *layout, premultiplied, source, mask);
  }
}

void BlendThroughFlatMask(ImageClassData &dest, ImageClassData &image, bool premultiplied, const Transfer &transfer,
                          int32_t colour) {
  const auto layout = ColoursOf(dest);
  const auto colours = ColoursOf(image);
  if (!layout || !colours) return;
  const BlendJob job{dest, image, nullptr, false, transfer};
  const BlendOperand source = BlendOperand::Image(*colours, *layout);
  const BlendOperand mask = FlatColour(ComponentsOf(colour), *layout);
  BlendFlat(job, *layout, premultiplied, source, mask);
}

}  // namespace zvk::compositing
