// The record behind every image. All algorithms work on it and on the rows that its GetRow hands out.
#pragma once

#include <cstddef>
#include <cstdint>

#include "abi/host_layouts.h"
#include "host/host_services.h"

namespace zvk::image {

struct ImageClassData;

// Row accessor: index 0 is the top row of the record; the result is the address of the row's first byte.
using RowAccessor = uint8_t *(*)(ImageClassData *record, int32_t index);

// One image. Offsets, sizes and distances are in bytes; object fields hold one counted reference each. The host creates
// it zero-filled inside each instance of "PictureZVK", so what no constructor names reads zero.
struct ImageClassData {
  YieldData Yield;
  REALobject Factory;       // PictureFactoryZVK asked first when this image needs another one
  REALobject MemoryTarget;  // the caller's MemoryBlock under this image
  uint8_t DebugPictureEnabled;

  // Where a channel's sample lies in a pixel. A horizontal clip adds to the offsets, so they may exceed PixelSize.
  int32_t RedOffset;
  uint8_t HasRed;
  int32_t GreenOffset;
  uint8_t HasGreen;
  int32_t BlueOffset;
  uint8_t HasBlue;
  int32_t GrayOffset;
  uint8_t HasGray;
  int32_t AlphaOffset;
  uint8_t HasAlpha;
  int32_t CyanOffset;
  uint8_t HasCyan;
  int32_t MagentaOffset;
  uint8_t HasMagenta;
  int32_t YellowOffset;
  uint8_t HasYellow;
  int32_t BlackOffset;
  uint8_t HasBlack;

  int32_t Width;  // pixels
  uint8_t IsGray;
  int32_t Height;           // rows visible through this record
  int32_t UnclippedHeight;  // rows of the storage under it
  uint8_t IsRGB;
  int32_t RowSize;  // distance between two rows
  uint8_t IsCMYK;
  int32_t PixelSize;         // distance between two pixels of a row
  int32_t BitsPerComponent;  // 8 or 16
  uint8_t Valid;             // set last, by a constructor that has succeeded
  int32_t ImageFormat;
  int32_t RowOffset;          // added to each row index: the top row of a clip
  int32_t ChannelCount;       // entries in use in ChannelOffsets
  int64_t TotalSize;          // bytes of the whole storage
  int32_t ChannelOffsets[8];  // the channels that hold image data, in storage order

  REALobject Parent;    // the image whose storage this view shares
  REALobject FileItem;  // the caller's file
  REALobject Target;    // the host picture whose pixels this image addresses
  char *FilePath;       // path of the backing file, owned
  uint8_t OwnsBuffer;
  uint8_t IsAllocated;   // Buffer is memory that an image allocated, this one or the one that it shows or has cloned
  uint8_t *Buffer;       // base of the pixels, or of the mapped block
  uint8_t *MappingBase;  // base of the mapped block
  uint8_t RemoveFile;    // this record opened the backing file and deletes it
  uint8_t IsMapped;      // a block is mapped at present
  int32_t FileHandle;
  uint8_t IsMapping;  // the storage is a file reached block by block
  int32_t MappingBlockSize;
  uint8_t **RowTable;  // rows of a host-owned bitmap
  RowAccessor GetRow;
  int32_t MappedFirstRow;  // -1: none
  int32_t MappedLastRow;
  int32_t MappedRowCount;
};

#if UINTPTR_MAX == UINT32_MAX
static_assert(sizeof(ImageClassData) == 248);
static_assert(offsetof(ImageClassData, Factory) == 8 && offsetof(ImageClassData, MemoryTarget) == 12);
static_assert(offsetof(ImageClassData, RedOffset) == 20 && offsetof(ImageClassData, HasRed) == 24);
static_assert(offsetof(ImageClassData, BlackOffset) == 84 && offsetof(ImageClassData, HasBlack) == 88);
static_assert(offsetof(ImageClassData, Width) == 92 && offsetof(ImageClassData, Height) == 100);
static_assert(offsetof(ImageClassData, RowSize) == 112 && offsetof(ImageClassData, PixelSize) == 120);
static_assert(offsetof(ImageClassData, Valid) == 128 && offsetof(ImageClassData, ImageFormat) == 132);
static_assert(offsetof(ImageClassData, TotalSize) == 144 && offsetof(ImageClassData, ChannelOffsets) == 152);
static_assert(offsetof(ImageClassData, Parent) == 184 && offsetof(ImageClassData, FilePath) == 196);
static_assert(offsetof(ImageClassData, Buffer) == 204 && offsetof(ImageClassData, FileHandle) == 216);
static_assert(offsetof(ImageClassData, RowTable) == 228 && offsetof(ImageClassData, GetRow) == 232);
static_assert(offsetof(ImageClassData, MappedRowCount) == 244);
#endif

// The two classes as they are registered; the host writes the class data offset and the event's handle into them.
extern REALclassDefinition PictureDefinition;
extern REALclassDefinition PictureFactoryDefinition;
// The factory's one event, in the version 12 table.
extern REALevent NewPictureEvent;

// The record of an instance of "PictureZVK"; nil for nil.
inline ImageClassData *RecordOf(REALobject instance) {
  return instance != nullptr ? reinterpret_cast<ImageClassData *>(reinterpret_cast<uint8_t *>(instance) +
                                                                  PictureDefinition.forSystemUse)
                             : nullptr;
}

// True if rows can be fetched. They cannot before construction, after Close, and in a view of an image over a row
// table, which has the accessor and no table.
bool HasRows(const ImageClassData &image);

// True if the pixels of those rows can be reached: if the bytes of a row can be counted in 32 bits. A constructor takes
// another image too, but its RowSize has wrapped, and only whole rows of that size can be exchanged.
inline bool HasPixels(const ImageClassData &image) {
  return HasRows(image) && int64_t{image.Width} * image.PixelSize <= INT32_MAX;
}

// True if the image can be worked on at all. Every pixel operation refuses another one.
inline bool IsUsable(const ImageClassData &image) {
  return image.Valid && HasPixels(image) && image.Width >= 0 && image.Height >= 1;
}

// Gives the host time if the image asks for it.
inline void YieldOn(ImageClassData &image) {
  if (image.Yield.YieldTicks != 0) image.Yield.DoYield();
}

}  // namespace zvk::image
