#include "bench/peers/vips_peer.h"

#include <vips/vips.h>

#include <memory>
#include <stdexcept>

namespace zvk::peers {
namespace {

void Check(bool succeeded) {
  if (!succeeded) throw std::runtime_error(std::string("libvips: ") + vips_error_buffer());
}

// One thread, and nothing remembered from one call to the next.
void Start() {
  static const bool started = [] {
    Check(VIPS_INIT("bench_peers") == 0);
    vips_concurrency_set(1);
    vips_cache_set_max(0);
    return true;
  }();
  (void)started;
}

std::optional<VipsKernel> KernelOf(Filter filter) {
  switch (filter) {
    case Filter::Lanczos3:
      return VIPS_KERNEL_LANCZOS3;
    case Filter::Mitchell:
      return VIPS_KERNEL_MITCHELL;
    case Filter::Triangle:
      return VIPS_KERNEL_LINEAR;
    default:
      return std::nullopt;
  }
}

int Scale(VipsImage *source, VipsImage **dest, const Scaling &scaling) {
  const double ratio = static_cast<double>(scaling.from.width) / scaling.to.width;
  if (scaling.filter == Filter::Box) return vips_shrink(source, dest, ratio, ratio, nullptr);
  const VipsKernel kernel = *KernelOf(scaling.filter);
  if (scaling.Shrinks()) return vips_reduce(source, dest, ratio, ratio, "kernel", kernel, nullptr);
  return vips_resize(source, dest, 1 / ratio, "kernel", kernel, nullptr);
}

}  // namespace

std::string VipsVersion() { return VIPS_VERSION; }

std::optional<Contestant> VipsScaling(const Scaling &scaling) {
  const bool isBoxShrink = scaling.filter == Filter::Box && scaling.Shrinks();
  if (!isBoxShrink && !KernelOf(scaling.filter)) return std::nullopt;
  const auto prepare = [=] {
    Start();
    const Layout layout = scaling.layout;
    const size_t stride = static_cast<size_t>(scaling.from.width * PixelBytes(layout));
    const auto pixels = std::make_shared<std::vector<uint8_t>>(stride * static_cast<size_t>(scaling.from.height));
    DrawTestPicture(PackedView(pixels->data(), stride, scaling.from, layout));

    const auto result = std::make_shared<std::shared_ptr<void>>();
    return TimedTask(
        [=] {
          result->reset();
          const std::unique_ptr<VipsImage, void (*)(gpointer)> source(
              vips_image_new_from_memory(pixels->data(), pixels->size(), scaling.from.width, scaling.from.height,
                                         Channels(layout),
                                         layout == Layout::Gray16 ? VIPS_FORMAT_USHORT : VIPS_FORMAT_UCHAR),
              g_object_unref);
          Check(source != nullptr);
          VipsImage *made = nullptr;
          Check(Scale(source.get(), &made, scaling) == 0);
          const std::unique_ptr<VipsImage, void (*)(gpointer)> dest(made, g_object_unref);
          size_t bytes = 0;
          result->reset(vips_image_write_to_memory(dest.get(), &bytes), g_free);
          Check(bytes == static_cast<size_t>(scaling.to.width * scaling.to.height * PixelBytes(layout)));
        },
        [=] {
          const auto destStride = static_cast<size_t>(scaling.to.width * PixelBytes(layout));
          return PackedView(result->get(), destStride, scaling.to, layout);
        });
  };
  // Enlarging with the Lanczos kernel, it interpolates by a cubic.
  const bool hasKernel = scaling.Shrinks() || scaling.filter == Filter::Triangle;
  return Contestant{"libvips", prepare, hasKernel ? nullptr : &kOtherKernel};
}

}  // namespace zvk::peers
