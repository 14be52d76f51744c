#include "compositing/combine_kernels.h"

#include "compositing/blend.h"

namespace zvk::compositing {

namespace {

// Calls blend(layout, source, mask) with the destination's layout and the operands; not if one is neither gray nor RGB.
template <class BlendThem>
void WithOperands(const BlendJob &job, const BlendThem &blend) {
  const auto dest = BlendLayoutOf(job.dest);
  const auto source = BlendLayoutOf(job.first);
  const auto mask = BlendLayoutOf(*job.second);
  if (dest && source && mask) {
    blend(*dest, BlendOperand::Image(*source, *dest), BlendOperand::Image(*mask, *dest));
  }
}

}  // namespace

void Case2pt(ImageClassData &dest, ImageClassData &source, ImageClassData &mask, int32_t destX, int32_t destY,
             int32_t width, int32_t height, int32_t sourceX, int32_t sourceY) {
  const BlendJob job{dest, source, &mask, false, {destX, destY, width, height, sourceX, sourceY}};
  WithOperands(job, [&](const PixelLayout &layout, const BlendOperand &laidOn, const BlendOperand &through) {
    // A gray destination is scaled itself, with its alpha; of an RGB one only alpha is read, and scales all channels.
    if (layout.family == ColourFamily::Gray) {
      Blend(job, layout, Sum<Scaled::Own>{}, laidOn, through);
    } else if (layout.hasAlpha) {
      Blend(job, layout, Sum<Scaled::Alpha>{}, laidOn, through);
    } else {
      Blend(job, layout, Sum<Scaled::Full>{}, laidOn, through);
    }
  });
}

void Case2pf(ImageClassData &dest, ImageClassData &source, ImageClassData &mask, int32_t destX, int32_t destY,
             int32_t width, int32_t height, int32_t sourceX, int32_t sourceY) {
  const BlendJob job{dest, source, &mask, false, {destX, destY, width, height, sourceX, sourceY}};
  WithOperands(job, [&](const PixelLayout &layout, const BlendOperand &laidOn, const BlendOperand &through) {
    Blend(job, layout, Interpolation{}, laidOn, through);
  });
}

}  // namespace zvk::compositing
