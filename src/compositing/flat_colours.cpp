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

// The layouts of the colours of two gray or RGB images.
struct FlatLayouts {
  PixelLayout dest;
  PixelLayout image;
};

// Empty if one of the images has no such colours.
std::optional<FlatLayouts> ColoursOf(const ImageClassData &dest, const ImageClassData &image) {
  auto destLayout = BlendLayoutOf(dest), imageLayout = BlendLayoutOf(image);
  if (!destLayout || !imageLayout) return std::nullopt;
  destLayout->hasAlpha = imageLayout->hasAlpha = false;
  return FlatLayouts{*destLayout, *imageLayout};
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
  const auto layouts = ColoursOf(dest, image);
  if (!layouts) return;
  const PixelLayout &layout = layouts->dest;
  const BlendJob job{dest, image, nullptr, true, transfer};
  const Samples<3> components = ComponentsOf(colour);
  const BlendOperand source = FlatColour(components, layout);
  const BlendOperand mask = BlendOperand::Coverage(layouts->image, layout);
  if (!premultiplied && layout.family == ColourFamily::Gray) {
    Blend(job, layout, GrayOfInterpolation{components}, source, mask);
  } else {
    // A premultiplied one in a gray destination: the weights of gray add up to 256, so the gray of a scaled sample and
    // a colour added to it is that sample and the gray of the colour.
    BlendFlat(job, layout, premultiplied, source, mask);
  }
}

void BlendThroughFlatMask(ImageClassData &dest, ImageClassData &image, bool premultiplied, const Transfer &transfer,
                          int32_t colour) {
  const auto layouts = ColoursOf(dest, image);
  if (!layouts) return;
  const BlendOperand source = BlendOperand::Image(layouts->image, layouts->dest);
  const BlendOperand mask = FlatColour(ComponentsOf(colour), layouts->dest);
  BlendFlat({dest, image, nullptr, false, transfer}, layouts->dest, premultiplied, source, mask);
}

}  // namespace zvk::compositing
