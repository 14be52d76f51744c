#include "image/views.h"

#include <algorithm>
#include <iterator>

#include "host/resources.h"
#include "image/channels.h"
#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/image_storage.h"
#include "image/rectangle.h"

namespace zvk::image {

namespace {

// --- steps that views share ---

void KeepReference(REALobject &field, REALobject object) {
  if (object != nullptr) REALLockObject(object);
  field = object;
}

// What every view takes over as it is.
void CopyGeometry(ImageClassData &view, const ImageClassData &source) {
  view.Valid = source.Valid;
  view.GetRow = source.GetRow;
  view.PixelSize = source.PixelSize;
  view.RowSize = source.RowSize;
  view.Width = source.Width;
  view.Height = source.Height;
  view.UnclippedHeight = source.UnclippedHeight;
  view.BitsPerComponent = source.BitsPerComponent;
  view.TotalSize = source.TotalSize;
  view.RowOffset = source.RowOffset;
}

// Puts the view on the source's pixels. A mapped view gets a block of its own; a row table is not taken over.
void LinkStorage(ImageClassData &view, const ImageClassData &source) {
  view.MappingBase = nullptr;
  if (!source.IsMapping) {
    view.Buffer = source.Buffer;
    view.IsAllocated = source.IsAllocated;
    return;
  }
  view.Buffer = nullptr;
  view.IsMapping = true;
  view.MappedFirstRow = view.MappedLastRow = -1;
  view.MappedRowCount = source.MappedRowCount;
  view.MappingBlockSize = source.MappingBlockSize;
  view.FileHandle = source.FileHandle;
  view.IsMapped = false;
  view.RemoveFile = false;
  view.GetRow(&view, 0);
}

// A view in the making: a new instance that will show `source`.
struct NewView {
  explicit NewView(REALobject sourceInstance)
      : source(RecordOf(sourceInstance)),
        instance(source != nullptr && HasPixels(*source) ? REALnewInstance("PictureZVK") : nullptr),
        view(RecordOf(instance.Get())),
        parent(sourceInstance) {}

  explicit operator bool() const { return view != nullptr; }

  // Ties the view to the image that it came from and, for a clip, to the caller's block under that one; hands it out.
  REALobject Finish(REALobject memoryTarget = nullptr) {
    KeepReference(view->Parent, parent);
    KeepReference(view->MemoryTarget, memoryTarget);
    KeepReference(view->Target, source->Target);
    LinkStorage(*view, *source);
    return instance.Release();
  }

  ImageClassData *source;
  ObjectReference instance;
  ImageClassData *view;
  REALobject parent;
};

}  // namespace

// --- channels ---

REALobject NewChannelImageZVK(REALobject source, int32_t offset) {
  NewView made(source);
  if (!made) return nullptr;
  ImageClassData &view = *made.view;
  CopyGeometry(view, *made.source);
  view.IsGray = view.HasGray = true;
  view.OwnsBuffer = false;
  view.ChannelCount = 1;
  view.ChannelOffsets[0] = view.GrayOffset = offset;
  // The number of a packed gray image, with the PixelSize of the parent.
  view.ImageFormat = view.BitsPerComponent == 16 ? ImageFormatGray16 : ImageFormatG;
  return made.Finish();
}

REALobject Channel(REALobject source, int32_t index) {
  const ImageClassData *record = RecordOf(source);
  if (record == nullptr) return nullptr;
  if (index < 0 || index >= record->ChannelCount) {
    RaiseOutOfBoundsException(index, 0, record->ChannelCount, "index", "Channel");
    return nullptr;
  }
  return NewChannelImageZVK(source, record->ChannelOffsets[index]);
}

// --- the colours alone ---

namespace {

using Offset = int32_t ImageClassData::*;

// A run of formats that keep their colours in the same order, and the packed one among them that a view is named after.
struct ColourOrder {
  int32_t firstFormat;
  int32_t lastFormat;
  int32_t viewFormat;
  Offset order[4];
  int32_t count;
};

constexpr ColourOrder kRGBOrders[] = {
    {ImageFormatRGB,
     ImageFormatXRGB,
     ImageFormatRGB,
     {&ImageClassData::RedOffset, &ImageClassData::GreenOffset, &ImageClassData::BlueOffset},
     3},
    {ImageFormatBGR,
     ImageFormatXBGR,
     ImageFormatBGR,
     {&ImageClassData::BlueOffset, &ImageClassData::GreenOffset, &ImageClassData::RedOffset},
     3},
};

constexpr ColourOrder kCMYKOrders[] = {
    {ImageFormatCMYK,
     ImageFormatXCMYK,
     ImageFormatCMYK,
     {&ImageClassData::CyanOffset, &ImageClassData::MagentaOffset, &ImageClassData::YellowOffset,
      &ImageClassData::BlackOffset},
     4},
    {ImageFormatKYMC,
     ImageFormatXKYMC,
     ImageFormatKYMC,
     {&ImageClassData::BlackOffset, &ImageClassData::YellowOffset, &ImageClassData::MagentaOffset,
      &ImageClassData::CyanOffset},
     4},
};

// A view of the family's colours. The offsets are set and the Has flags are not: code that takes such a view goes by
// the family.
REALobject ColoursAlone(REALobject source, uint8_t ImageClassData::*family, const ColourOrder (&orders)[2]) {
  const ImageClassData *record = RecordOf(source);
  if (record == nullptr || !(record->*family)) return nullptr;
  NewView made(source);
  if (!made) return nullptr;
  const auto *found = std::find_if(std::begin(orders), std::end(orders), [&](const ColourOrder &candidate) {
    return record->ImageFormat >= candidate.firstFormat && record->ImageFormat <= candidate.lastFormat;
  });
  if (found == std::end(orders)) return nullptr;
  ImageClassData &view = *made.view;
  CopyGeometry(view, *record);
  view.*family = true;
  view.BitsPerComponent = 8;
  view.ImageFormat = found->viewFormat;
  view.ChannelCount = found->count;
  for (int32_t i = 0; i < found->count; ++i) {
    view.*(found->order[i]) = record->*(found->order[i]);
    view.ChannelOffsets[i] = record->*(found->order[i]);
  }
  return made.Finish();
}

}  // namespace

REALobject RGBChannel(REALobject source) { return ColoursAlone(source, &ImageClassData::IsRGB, kRGBOrders); }

REALobject CMYKChannel(REALobject source) { return ColoursAlone(source, &ImageClassData::IsCMYK, kCMYKOrders); }

// --- rectangles ---

namespace {

// Beyond the far edge a size comes out below zero and is left so. One above zero is cut to what is there, as the fit
// leaves too much where its sums have wrapped.
Rectangle FitView(const Rectangle &callers, int32_t imageWidth, int32_t imageHeight) {
  Rectangle fitted = FitRectangle(callers, imageWidth, imageHeight);
  const Rectangle inside = CutToImage(fitted, imageWidth, imageHeight);
  if (fitted.width > 0) fitted.width = inside.width;
  if (fitted.height > 0) fitted.height = inside.height;
  return fitted;
}

}  // namespace

REALobject ClipImage1(REALobject source) {
  const ImageClassData *record = RecordOf(source);
  return record != nullptr ? ClipImage5(source, 0, 0, record->Width, record->Height) : nullptr;
}

REALobject ClipImage5(REALobject source, int32_t x, int32_t y, int32_t width, int32_t height) {
  NewView made(source);
  if (!made) return nullptr;
  ImageClassData &view = *made.view;
  const ImageClassData &record = *made.source;
  const Rectangle rectangle = FitView({x, y, width, height}, record.Width, record.Height);
  CopyGeometry(view, record);
  // The offsets are all there is to a horizontal clip, which is how they come to exceed PixelSize.
  for (const ChannelField &channel : kChannels) {
    if (!(record.*channel.has)) continue;
    view.*channel.has = true;
    view.*channel.offset = record.*channel.offset + rectangle.x * record.PixelSize;
  }
  view.Width = rectangle.width;
  view.Height = rectangle.height;
  view.RowOffset = record.RowOffset + rectangle.y;
  view.ImageFormat = record.ImageFormat;
  view.IsGray = record.IsGray;
  view.IsRGB = record.IsRGB;
  view.IsCMYK = record.IsCMYK;
  view.ChannelCount = record.ChannelCount;
  // These are not moved: a channel by its place in this list starts at column 0 of the parent.
  std::copy(std::begin(record.ChannelOffsets), std::end(record.ChannelOffsets), std::begin(view.ChannelOffsets));
  return made.Finish(record.MemoryTarget);
}

// --- rows in reverse ---

namespace {

RowAccessor Mirrored(RowAccessor accessor) {
  constexpr RowAccessor kPairs[][2] = {{GetRowLinear, GetRowLinearMirrored},
                                       {GetRowMapping, GetRowMappingMirrored},
                                       {GetRowGDImage, GetRowGDImageMirrored}};
  for (const auto &[plain, mirrored] : kPairs) {
    if (accessor == plain) return mirrored;
    if (accessor == mirrored) return plain;
  }
  return accessor;
}

}  // namespace

REALobject GetMirroredView(REALobject source) {
  REALobject instance = ClipImage1(source);
  if (instance == nullptr) return nullptr;
  ImageClassData *view = RecordOf(instance);
  view->GetRow = Mirrored(view->GetRow);
  view->GetRow(view, 0);  // maps the block at the bottom of a mapped image
  return instance;
}

// --- shared pixels ---

REALobject Clone(REALobject source) {
  const ImageClassData *record = RecordOf(source);
  if (record == nullptr || record->IsMapping || !record->Valid || !HasPixels(*record)) return nullptr;
  REALobject instance = REALnewInstance("PictureZVK");
  if (instance == nullptr) return nullptr;
  // The instance is abandoned, not released, if the size is refused.
  const int32_t bytes = record->Height * record->RowSize;
  if (bytes < 1) return nullptr;

  ImageClassData &clone = *RecordOf(instance);
  CopyGeometry(clone, *record);
  std::copy(std::begin(record->ChannelOffsets), std::end(record->ChannelOffsets), std::begin(clone.ChannelOffsets));
  clone.Buffer = record->Buffer;
  clone.MappingBase = record->MappingBase;
  for (const ChannelField &channel : kChannels) {
    clone.*channel.offset = record->*channel.offset;
    clone.*channel.has = record->*channel.has;
  }
  clone.ImageFormat = record->ImageFormat;
  clone.ChannelCount = record->ChannelCount;
  clone.IsGray = record->IsGray;
  clone.IsRGB = record->IsRGB;
  clone.IsCMYK = record->IsCMYK;
  clone.Parent = nullptr;
  // An owner of the very buffer that the source has, without a reference to it: closing either frees it for both.
  clone.OwnsBuffer = true;
  clone.IsAllocated = record->IsAllocated;
  return instance;
}

REALobject GetMemory(REALobject source, int32_t /*param*/) {
  const ImageClassData *record = RecordOf(source);
  return record != nullptr && record->Buffer != nullptr ? REALPtrToMemoryBlock(record->Buffer) : nullptr;
}

}  // namespace zvk::image
