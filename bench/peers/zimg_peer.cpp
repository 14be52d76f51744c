#include "bench/peers/zimg_peer.h"

#include <zimg.h>

#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace zvk::peers {
namespace {

// Rows and planes begin where zimg wants them.
constexpr size_t kAlignment = 64;
constexpr size_t Aligned(size_t bytes) { return (bytes + kAlignment - 1) / kAlignment * kAlignment; }

std::shared_ptr<uint8_t> AlignedBytes(size_t count) {
  return {static_cast<uint8_t *>(std::aligned_alloc(kAlignment, Aligned(count))), std::free};
}

// A plane for each channel, one after the other.
struct Planes {
  Planes(Size size_, Layout layout_)
      : size(size_),
        layout(layout_),
        stride(Aligned(static_cast<size_t>(size.width * SampleBytes(layout)))),
        bytes(AlignedBytes(PlaneBytes() * static_cast<size_t>(Channels(layout)))) {}

  size_t PlaneBytes() const { return stride * static_cast<size_t>(size.height); }
  uint8_t *Plane(int32_t channel) const { return bytes.get() + PlaneBytes() * static_cast<size_t>(channel); }

  View Pixels() const {
    std::vector<ptrdiff_t> channels;
    for (int32_t c = 0; c < Channels(layout); ++c) channels.push_back(Plane(c) - bytes.get());
    return {size, SampleBytes(layout), SampleBytes(layout), std::move(channels),
            [*this](int32_t y) { return bytes.get() + stride * static_cast<size_t>(y); }};
  }

  zimg_image_format Format() const {
    zimg_image_format format;
    zimg_image_format_default(&format, ZIMG_API_VERSION);
    format.width = static_cast<unsigned>(size.width);
    format.height = static_cast<unsigned>(size.height);
    format.pixel_type = layout == Layout::Gray16 ? ZIMG_PIXEL_WORD : ZIMG_PIXEL_BYTE;
    format.depth = static_cast<unsigned>(8 * SampleBytes(layout));
    format.pixel_range = ZIMG_RANGE_FULL;
    format.color_family = Channels(layout) == 1 ? ZIMG_COLOR_GREY : ZIMG_COLOR_RGB;
    // Alpha is filtered like a colour: straight alpha would be multiplied in.
    format.alpha = Channels(layout) == 4 ? ZIMG_ALPHA_PREMULTIPLIED : ZIMG_ALPHA_NONE;
    return format;
  }

  // As a zimg_image_buffer, or as one that is only read.
  template <class Buffer>
  Buffer AsBuffer() const {
    Buffer buffer{};
    buffer.version = ZIMG_API_VERSION;
    for (int32_t c = 0; c < Channels(layout); ++c) {
      buffer.plane[c].data = Plane(c);
      buffer.plane[c].stride = static_cast<ptrdiff_t>(stride);
      buffer.plane[c].mask = ZIMG_BUFFER_MAX;
    }
    return buffer;
  }

  Size size;
  Layout layout;
  size_t stride;
  std::shared_ptr<uint8_t> bytes;
};

struct Kernel {
  zimg_resample_filter_e filter;
  double a;
  double b;
};

std::optional<Kernel> KernelOf(Filter filter) {
  switch (filter) {
    case Filter::Lanczos3:
      return Kernel{ZIMG_RESIZE_LANCZOS, 3, 0};
    case Filter::Lanczos8:
      return Kernel{ZIMG_RESIZE_LANCZOS, 8, 0};
    case Filter::Mitchell:
      return Kernel{ZIMG_RESIZE_BICUBIC, 1.0 / 3, 1.0 / 3};
    case Filter::Triangle:
      return Kernel{ZIMG_RESIZE_BILINEAR, 0, 0};
    case Filter::Nearest:
      return Kernel{ZIMG_RESIZE_POINT, 0, 0};
    case Filter::Box:
      break;
  }
  return std::nullopt;
}

void Check(bool succeeded) {
  if (succeeded) return;
  char text[256] = "";
  zimg_get_last_error(text, sizeof text);
  throw std::runtime_error(std::string("zimg: ") + text);
}

}  // namespace

std::string ZimgVersion() {
  unsigned version[3] = {};
  zimg_get_version_info(&version[0], &version[1], &version[2]);
  return std::to_string(version[0]) + "." + std::to_string(version[1]) + "." + std::to_string(version[2]);
}

std::optional<Contestant> ZimgScaling(const Scaling &scaling, ZimgLevel level) {
  const auto kernel = KernelOf(scaling.filter);
  if (!kernel) return std::nullopt;
  const auto prepare = [scaling, level, kernel = *kernel] {
    const Planes source(scaling.from, scaling.layout), dest(scaling.to, scaling.layout);
    DrawTestPicture(source.Pixels());

    zimg_graph_builder_params parameters;
    zimg_graph_builder_params_default(&parameters, ZIMG_API_VERSION);
    parameters.resample_filter = kernel.filter;
    parameters.filter_param_a = kernel.a;
    parameters.filter_param_b = kernel.b;
    parameters.cpu_type = level == ZimgLevel::AVX2 ? ZIMG_CPU_X86_AVX2 : ZIMG_CPU_AUTO_64B;

    const zimg_image_format from = source.Format(), to = dest.Format();
    const std::shared_ptr<zimg_filter_graph> graph(zimg_filter_graph_build(&from, &to, &parameters),
                                                   zimg_filter_graph_free);
    Check(graph != nullptr);
    size_t temporaryBytes = 0;
    Check(zimg_filter_graph_get_tmp_size(graph.get(), &temporaryBytes) == ZIMG_ERROR_SUCCESS);
    const auto temporary = AlignedBytes(temporaryBytes);
    return TimedTask(
        [=] {
          const auto read = source.AsBuffer<zimg_image_buffer_const>();
          const auto written = dest.AsBuffer<zimg_image_buffer>();
          Check(zimg_filter_graph_process(graph.get(), &read, &written, temporary.get(), nullptr, nullptr, nullptr,
                                          nullptr) == ZIMG_ERROR_SUCCESS);
        },
        [=] { return dest.Pixels(); });
  };
  return Contestant{"zimg", prepare, scaling.filter == Filter::Nearest ? &kCentres : &kPlanes};
}

}  // namespace zvk::peers
