#include "compositing/combine_kernels.h"

#include "compositing/blend.h"

namespace zvk::compositing {

namespace {

struct KernelOfCase2pf {
  template <class D>
  using For = Interpolation;
};

// A gray destination is scaled itself, with its alpha; of an RGB one only alpha is read, and scales all channels.
struct KernelOfCase2pt {
  template <class D>
  using For = Sum<D::family == ColourFamily::Gray ? Scaled::Own
                  : D::hasAlpha                   ? Scaled::Alpha
                                                  : Scaled::Full>;
};

template <class Visitor>
void VisitGrayOrRGB(const ImageClassData &image, Visitor &&visit) {
  VisitLayout<ColourFamily::Gray, ColourFamily::RGB>(image, visit);
}

// The 64 combinations of layouts.
template <class Kernel>
void BlendThroughMask(const BlendJob &job) {
  VisitGrayOrRGB(job.dest, [&]<class D>(D) {
    VisitGrayOrRGB(*job.source, [&]<class S>(S) {
      VisitGrayOrRGB(*job.mask, [&]<class M>(M) {
        Blend<D>(job, typename Kernel::template For<D>{}, ImageSamples<D, S>(*job.source),
                 ImageSamples<D, M>(*job.mask));
      });
    });
  });
}

}  // namespace

void Case2pt(ImageClassData &dest, ImageClassData &source, ImageClassData &mask, int32_t destX, int32_t destY,
             int32_t width, int32_t height, int32_t sourceX, int32_t sourceY) {
  BlendThroughMask<KernelOfCase2pt>({dest, &source, &mask, {destX, destY, width, height, sourceX, sourceY}});
}

void Case2pf(ImageClassData &dest, ImageClassData &source, ImageClassData &mask, int32_t destX, int32_t destY,
             int32_t width, int32_t height, int32_t sourceX, int32_t sourceY) {
  BlendThroughMask<KernelOfCase2pf>({dest, &source, &mask, {destX, destY, width, height, sourceX, sourceY}});
}

}  // namespace zvk::compositing
