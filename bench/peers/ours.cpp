#include "bench/peers/ours.h"

#include <memory>
#include <stdexcept>

#include "bench/bench_images.h"
#include "compositing/combine.h"
#include "compositing/copy_pixels.h"
#include "exchange/row_conversion.h"
#include "filters/box_blur.h"
#include "filters/matrix_filter.h"
#include "geometry/mirror.h"
#include "geometry/rotate.h"
#include "image/file_storage.h"
#include "image/image_formats.h"
#include "pictures/picture_export.h"
#include "scaling/fast_scale.h"
#include "scaling/scale_engine.h"
#include "standalone/runtime/memory_block.h"
#include "standalone/runtime/picture.h"
#include "standalone/runtime/standard_input.h"

namespace zvk::peers {
namespace {

using standalone::Owned;

int32_t FormatOf(Layout layout) {
  switch (layout) {
    case Layout::Gray:
      return plugin::ImageFormatG;
    case Layout::Gray16:
      return plugin::ImageFormatGray16;
    case Layout::RGB:
      return plugin::ImageFormatRGB;
    case Layout::RGBA:
      return plugin::ImageFormatRGBA;
    case Layout::BGRA:
      return plugin::ImageFormatBGRA;
  }
  throw std::logic_error("no such layout");
}

int32_t ModeOf(Filter filter) {
  switch (filter) {
    case Filter::Triangle:
      return 1;
    case Filter::Box:
      return 2;
    case Filter::Lanczos3:
      return 3;
    case Filter::Lanczos8:
      return 4;
    case Filter::Mitchell:
      return 5;
    case Filter::Nearest:
      break;
  }
  throw std::logic_error("the filter has no mode");
}

void Demand(bool done) {
  if (!done) throw std::runtime_error("a handler has refused its task");
}

// An image of the plug-in's, empty or with the test picture in it.
class Image {
 public:
  explicit Image(REALobject owned) : object_(Owned<standalone::Object>::Adopt(owned)) {}
  Image(Size size, Layout layout, Storage storage = Storage::Memory)
      : object_(Owned<standalone::Object>::Adopt(bench::BenchHost().Classes().NewInstance("PictureZVK"))) {
    if (storage == Storage::Memory) {
      plugin::ImageConstructor(object_, size.width, size.height, FormatOf(layout));
    } else {
      plugin::ImageConstructorFile(object_, size.width, size.height, FormatOf(layout), 0, nullptr);
    }
    Demand(Record().GetRow(&Record(), 0) != nullptr);
  }

  Image(const Image &) = default;
  Image &operator=(const Image &) = delete;
  ~Image() {
    object_.Reset();
    standalone::KeepDescriptorZeroTaken();
  }

  static Image WithTestPicture(Size size, Layout layout, Storage storage = Storage::Memory) {
    Image image(size, layout, storage);
    DrawTestPicture(image.Pixels());
    return image;
  }

  // NOLINTNEXTLINE(google-explicit-constructor): handlers take the opaque address.
  operator REALobject() const { return object_; }

  View Pixels() const {
    plugin::ImageClassData &record = Record();
    std::vector<ptrdiff_t> channels;
    if (record.HasGray) {
      channels = {record.GrayOffset};
    } else {
      channels = {record.RedOffset, record.GreenOffset, record.BlueOffset};
    }
    if (record.HasAlpha) channels.push_back(record.AlphaOffset);
    return {{record.Width, record.Height},
            record.ImageFormat == plugin::ImageFormatGray16 ? 2 : 1,
            record.PixelSize,
            std::move(channels),
            [&record](int32_t y) { return record.GetRow(&record, y); }};
  }

 private:
  plugin::ImageClassData &Record() const { return *plugin::RecordOf(object_); }

  Owned<standalone::Object> object_;
};

// A task that calls the plug-in.
Task PluginTask(std::function<void()> work, std::function<View()> result) {
  return TimedTask(
      [work = std::move(work)] {
        const standalone::PluginCall call;
        work();
      },
      std::move(result));
}

// Without alpha, for copies that leave alpha alone.
View ColoursOf(View view) {
  view.channels.resize(3);
  return view;
}

}  // namespace

Preparation OurScaling(const Scaling &scaling, Storages storages) {
  return [=] {
    const Image source = Image::WithTestPicture(scaling.from, scaling.layout, storages.source);
    const Image dest(scaling.to, scaling.layout, storages.dest);
    return PluginTask(
        [=] {
          const auto [width, height] = scaling.to;
          if (scaling.filter == Filter::Nearest) {
            Demand(plugin::ScalePictureFast(dest, source, width, height));
          } else {
            Demand(plugin::PictureScaleZVK(dest, source, nullptr, ModeOf(scaling.filter), width, height));
          }
        },
        [=] { return dest.Pixels(); });
  };
}

Preparation OurThreadedScaling(const Scaling &scaling, int32_t threads) {
  return [=] {
    const Image source = Image::WithTestPicture(scaling.from, scaling.layout), dest(scaling.to, scaling.layout);
    return PluginTask(
        [=] {
          Demand(plugin::PictureScaleZVKMT(dest, threads, source, nullptr, ModeOf(scaling.filter), scaling.to.width,
                                           scaling.to.height));
        },
        [=] { return dest.Pixels(); });
  };
}

Preparation OurMatrix(const Matrix &matrix, Size size, Storages storages) {
  return [=] {
    const Image source = Image::WithTestPicture(size, Layout::RGB, storages.source);
    const Image dest(size, Layout::RGB, storages.dest);
    const auto weights = std::make_shared<bench::BenchArray>(matrix.weights);
    return PluginTask(
        [=] {
          bench::Drop(plugin::PictureMatrix5(source, dest, matrix.dimension, weights->Handle(), 0, matrix.scale));
        },
        [=] { return dest.Pixels(); });
  };
}

Preparation OurBoxBlur(int32_t radius, Size size) {
  return [=] {
    const Image source = Image::WithTestPicture(size, Layout::RGB), dest(size, Layout::RGB);
    return PluginTask([=] { bench::Drop(plugin::BoxBlurFilter(source, dest, radius, true, true)); },
                      [=] { return dest.Pixels(); });
  };
}

Preparation OurRotation(double degrees, Size size) {
  return [=] {
    const Image source = Image::WithTestPicture(size, Layout::RGB);
    const auto result = std::make_shared<std::unique_ptr<Image>>();
    return PluginTask(
        [=] {
          result->reset();
          *result = std::make_unique<Image>(plugin::rbRotate(source, degrees, 0, 0, 0, 0, 0, 0, 0, 0, 0));
        },
        [=] { return (*result)->Pixels(); });
  };
}

Preparation OurMirror(bool horizontal, Size size) {
  return [=] {
    const Image image = Image::WithTestPicture(size, Layout::RGB);
    return PluginTask(
        [=] {
          if (horizontal) {
            plugin::HMirrorSelf(image);
          } else {
            plugin::VMirrorSelf(image);
          }
        },
        [=] { return image.Pixels(); });
  };
}

Preparation OurBlend(Size size, Storages storages) {
  return [=] {
    const Image source = Image::WithTestPicture(size, Layout::RGB, storages.source);
    const Image mask = Image::WithTestPicture(size, Layout::Gray), dest(size, Layout::RGB, storages.dest);
    return PluginTask(
        [=] { Demand(plugin::PictureCombine3(dest, source, mask, 0, 0, 0, 0, size.width, size.height, false)); },
        [=] { return dest.Pixels(); });
  };
}

Preparation OurRowReads(Layout image, Layout rows, Size size) {
  return [=] {
    const Image source = Image::WithTestPicture(size, image);
    const auto last = std::make_shared<Owned<standalone::MemoryBlock>>();
    return PluginTask(
        [=] {
          for (int32_t y = 0; y < size.height; ++y) {
            *last = Owned<standalone::MemoryBlock>::Adopt(
                standalone::ObjectAs<standalone::MemoryBlock>(plugin::rbGetRowF(source, y, FormatOf(rows))));
          }
        },
        [=] {
          return ColoursOf(PackedView((*last)->Data(), 0, {size.width, 1}, rows));
        });
  };
}

Preparation OurRowWrites(Layout rows, Layout image, Size size) {
  return [=] {
    const auto block = Owned<standalone::MemoryBlock>::Adopt(
        (bench::BenchHost(), standalone::MemoryBlock::Make(PixelBytes(rows) * size.width)));
    DrawTestPicture(PackedView(block->Data(), 0, {size.width, 1}, rows));
    const Image dest(size, image);
    return PluginTask(
        [=] {
          for (int32_t y = 0; y < size.height; ++y) plugin::rbSetRowF(dest, y, FormatOf(rows), block);
        },
        [=] { return ColoursOf(dest.Pixels()); });
  };
}

Preparation OurPictureCopy(Size size) {
  return [=] {
    const Image source = Image::WithTestPicture(size, Layout::RGB);
    const auto result = std::make_shared<Owned<standalone::Picture>>();
    return PluginTask(
        [=] {
          result->Reset();
          *result = Owned<standalone::Picture>::Adopt(
              standalone::ObjectAs<standalone::Picture>(plugin::rbCopyPictureAll(source)));
        },
        [=] {
          View view = ColoursOf(PackedView(nullptr, 0, size, Layout::BGRA));
          view.row = [=](int32_t y) { return (*result)->Storage().Row(y); };
          return view;
        });
  };
}

Preparation OurPixelCopy(Layout from, Layout to, Size size, Storages storages) {
  return [=] {
    const Image source = Image::WithTestPicture(size, from, storages.source), dest(size, to, storages.dest);
    return PluginTask([=] { Demand(plugin::rbCopyPixels2(dest, source)); }, [=] { return ColoursOf(dest.Pixels()); });
  };
}

}  // namespace zvk::peers
