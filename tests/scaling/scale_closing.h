// A host whose code closes images of a scale in a yield and constructs them anew. The pixels lie between pages that
// nobody may touch, and stay there when their image is closed.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <list>
#include <utility>
#include <vector>

#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/image_storage.h"
#include "tests/support/plugin_host.h"

namespace zvk::scaling {

using standalone::Owned;

using Bytes = std::vector<uint8_t>;

struct Size {
  int32_t width;
  int32_t height;
};

class ScaleClosing : public testing::Test {
 protected:
  using Image = Owned<standalone::Object>;
  using Block = Owned<standalone::MemoryBlock>;

  ScaleClosing() {
    static uint32_t ticks;
    ticks = 100;
    host_->SetEntry(
        "TickCount", +[]() -> uint32_t { return ++ticks; });
    host_->onYield = [this] {
      if (++yields_ != yieldToActIn_) return;
      const auto act = act_;  // which may set another one
      act();
    };
  }

  // An image over a block that ends with its last row, all bytes of which are `value`.
  Image New(Size size, int32_t format, uint8_t value = 99) {
    auto image = host_.New("PictureZVK");
    Construct(image, size, format, value);
    return image;
  }

  // Gives an image such a block, in place of what it has.
  const Block &ConstructAnew(REALobject image, Size size, int32_t format, uint8_t value = 99) {
    ImageDestructor(image);
    return Construct(image, size, format, value);
  }

  static Bytes All(const Block &block) { return Bytes(block->Data(), block->Data() + block->Size()); }
  // The bytes of an image as New makes it.
  static Bytes All(REALobject image) {
    const ImageClassData &record = *RecordOf(image);
    return Bytes(record.Buffer, record.Buffer + record.TotalSize);
  }

  static void YieldOnRows(REALobject image) { RecordOf(image)->Yield.YieldTicks = 1; }
  // Has `act` run in the yield with the given number, counted from 1, of what comes next.
  void ActInYield(int32_t number, std::function<void()> act) {
    yields_ = 0;
    yieldToActIn_ = number;
    act_ = std::move(act);
  }

  // What host code may make of an image.
  using Spoil = std::function<void(REALobject image, int32_t format)>;
  std::vector<Spoil> Spoils() {
    std::vector<Spoil> spoils;
    for (const Size size : {Size{1, 1}, {1, 9}, {9, 1}, {2, 30}, {30, 2}, {3, 3}, {30, 30}}) {
      spoils.emplace_back([=, this](REALobject image, int32_t format) { ConstructAnew(image, size, format); });
    }
    // In other formats than before: of smaller pixels, without a family, with wide samples.
    for (const int32_t format : {ImageFormatG, ImageFormatScaling8, ImageFormatGray16}) {
      spoils.emplace_back([=, this](REALobject image, int32_t) { ConstructAnew(image, {4, 4}, format); });
    }
    spoils.emplace_back([](REALobject image, int32_t) { ImageDestructor(image); });
    spoils.emplace_back([](REALobject image, int32_t format) {
      ImageDestructor(image);
      ImageConstructor(image, 1, 1, format);
    });
    spoils.emplace_back([](REALobject image, int32_t format) {
      ImageDestructor(image);
      ImageConstructorFile(image, 1, 1, format, 0, nullptr);
    });
    spoils.emplace_back([](REALobject image, int32_t format) {
      ImageDestructor(image);
      ImageConstructor(image, 0, 0, format);  // which gives up
    });
    return spoils;
  }

  // Runs a method on images in which each of them is spoilt in turn in each of the yields, which all of them give.
  using Scale = std::function<void(REALobject dest, REALobject source, REALobject temp, Size size)>;
  void SpoilAnyImageInAnyYield(const Scale &scale) {
    for (const auto &[format, tempFormat] : {std::pair{ImageFormatG, ImageFormatScaling1},
                                             {ImageFormatRGB, ImageFormatScaling4},
                                             {ImageFormatCMYKA, ImageFormatScaling5},
                                             {ImageFormatGray16, ImageFormatScaling2}}) {
      for (const Size size : {Size{7, 4}, Size{4, 9}}) {
        for (int32_t which = 0; which < 3; ++which) {
          for (const Spoil &spoil : Spoils()) {
            for (int32_t number = 1;; ++number) {
              blocks_.clear();
              const Image images[] = {New({5, 6}, format), New({size.width, 6}, tempFormat), New(size, format)};
              for (const Image &image : images) YieldOnRows(image);
              const int32_t spoiltFormat = which == 1 ? tempFormat : format;
              ActInYield(number, [&] { spoil(images[which], spoiltFormat); });
              scale(images[2], images[0], images[1], size);
              if (yields_ < number) break;
            }
          }
        }
      }
    }
  }

  PluginHost host_{{.fenced = true}};
  std::list<Block> blocks_;
  int32_t yields_ = 0;

 private:
  const Block &Construct(REALobject image, Size size, int32_t format, uint8_t value) {
    ImageClassData described{};
    InitImageClassData(&described, 1, 1, format);
    const int32_t rowSize = size.width * described.PixelSize;
    const Block &block =
        blocks_.emplace_back(host_.NewMemoryBlock(Bytes(static_cast<size_t>(rowSize) * size.height, value)));
    ImageConstructorMemory(image, block, size.width, size.height, format, rowSize);
    return block;
  }

  int32_t yieldToActIn_ = 0;
  std::function<void()> act_;
};

}  // namespace zvk::scaling
