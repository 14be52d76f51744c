#include "compositing/flat_colours.h"

#include "compositing/blend.h"

namespace zvk::compositing {

namespace {

Samples<3> ComponentsOf(int32_t colour) {
  return {static_cast<uint8_t>(colour >> 16), static_cast<uint8_t>(colour >> 8), static_cast<uint8_t>(colour)};
}

// The colour as a destination of layout D takes it.
template <class D>
FlatSamples<D> FlatColour(const Samples<3> &colour) {
  if constexpr (D::family == ColourFamily::RGB) {
    return FlatSamples<D>(colour);
  } else {
    return FlatSamples<D>({static_cast<uint8_t>(Luma(colour[0], colour[1], colour[2]))});
  }
}

// Calls visit with the layout of the colours of a gray or RGB image.
template <class Visitor>
void VisitColours(const ImageClassData &image, Visitor &&visit) {
  VisitLayout<ColourFamily::Gray, ColourFamily::RGB>(
      image, [&]<class Found>(Found) { visit(Layout<Found::family, false>{}); });
}

}  // namespace

void BlendFlatForeground(ImageClassData &dest, ImageClassData &image, bool premultiplied, const Transfer &transfer,
                         int32_t colour) {
  const BlendJob job{dest, nullptr, &image, transfer};
  const Samples<3> components = ComponentsOf(colour);
  VisitColours(dest, [&]<class D>(D) {
    VisitColours(image, [&]<class Image>(Image) {
      const FlatSamples<D> source = FlatColour<D>(components);
      const CoverageSamples<D, Image> mask(image);
      if (premultiplied) {
        // In a gray destination the weights of gray add up to 256: the gray of a scaled sample and a colour added to it
        // is that sample and the gray of the colour.
        Blend<D>(job, Sum<Scaled::Own>{}, source, mask);
      } else if constexpr (D::family == ColourFamily::Gray) {
        Blend<D>(job, GrayOfInterpolation{components}, source, mask);
      } else {
        Blend<D>(job, Interpolation{}, source, mask);
      }
    });
  });
}

void BlendThroughFlatMask(ImageClassData &dest, ImageClassData &image, bool premultiplied, const Transfer &transfer,
                          int32_t colour) {
  const BlendJob job{dest, &image, nullptr, transfer};
  const Samples<3> components = ComponentsOf(colour);
  VisitColours(dest, [&]<class D>(D) {
    VisitColours(image, [&]<class Image>(Image) {
      const ImageSamples<D, Image> source(image);
      const FlatSamples<D> mask = FlatColour<D>(components);
      if (premultiplied) {
        Blend<D>(job, Sum<Scaled::Own>{}, source, mask);
      } else {
        Blend<D>(job, Interpolation{}, source, mask);
      }
    });
  });
}

}  // namespace zvk::compositing
