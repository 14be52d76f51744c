#include "bench/peers/pixman_peer.h"

#include <pixman.h>

#include <memory>
#include <stdexcept>

namespace zvk::peers {
namespace {

using Image = std::shared_ptr<pixman_image_t>;

// pixman names channels from the highest bit of a word down.
pixman_format_code_t FormatOf(Layout layout) {
  switch (layout) {
    case Layout::RGB:
      return PIXMAN_b8g8r8;
    case Layout::RGBA:
      return PIXMAN_a8b8g8r8;
    case Layout::BGRA:
      return PIXMAN_a8r8g8b8;
    default:
      throw std::logic_error("no such format");
  }
}

Image Empty(Size size, Layout layout) {
  return {pixman_image_create_bits(FormatOf(layout), size.width, size.height, nullptr, 0), pixman_image_unref};
}

View ViewOf(const Image &image, Layout layout) {
  return PackedView(pixman_image_get_data(image.get()), static_cast<size_t>(pixman_image_get_stride(image.get())),
                    {pixman_image_get_width(image.get()), pixman_image_get_height(image.get())}, layout);
}

Image WithTestPicture(Size size, Layout layout) {
  Image image = Empty(size, layout);
  DrawTestPicture(ViewOf(image, layout));
  return image;
}

Task Composition(const Image &source, const Image &dest, Size size, const std::function<View()> &result) {
  return TimedTask(
      [=] {
        pixman_image_composite32(PIXMAN_OP_SRC, source.get(), nullptr, dest.get(), 0, 0, 0, 0, 0, 0, size.width,
                                 size.height);
      },
      result);
}

}  // namespace

std::string PixmanVersion() { return pixman_version_string(); }

std::optional<Contestant> PixmanScaling(const Scaling &scaling) {
  if (scaling.filter != Filter::Triangle || scaling.layout != Layout::RGBA || scaling.Shrinks()) return std::nullopt;
  const auto prepare = [=] {
    const Image source = WithTestPicture(scaling.from, Layout::RGBA), dest = Empty(scaling.to, Layout::RGBA);
    pixman_transform_t transform;
    pixman_transform_init_scale(&transform,
                                pixman_double_to_fixed(static_cast<double>(scaling.from.width) / scaling.to.width),
                                pixman_double_to_fixed(static_cast<double>(scaling.from.height) / scaling.to.height));
    pixman_image_set_transform(source.get(), &transform);
    pixman_image_set_filter(source.get(), PIXMAN_FILTER_BILINEAR, nullptr, 0);
    pixman_image_set_repeat(source.get(), PIXMAN_REPEAT_PAD);
    return Composition(source, dest, scaling.to, [=] { return ViewOf(dest, Layout::RGBA); });
  };
  return Contestant{"pixman", prepare};
}

Preparation PixmanConversion(Size size) {
  return [=] {
    const Image source = WithTestPicture(size, Layout::RGB), dest = Empty(size, Layout::BGRA);
    return Composition(source, dest, size, [=] {
      View view = ViewOf(dest, Layout::BGRA);
      view.channels.resize(3);
      return view;
    });
  };
}

}  // namespace zvk::peers
