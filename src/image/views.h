// Views: images that show some of the pixels of another one through a record of their own, without a copy. Writing
// through a view writes into its parent. All are returned with one reference for the caller; nil where told, for an
// image without rows (never constructed, or closed), and for one whose row has wrapped in 32 bits.
#pragma once

#include <cstdint>

#include "image/image_record.h"

namespace zvk::image {

// A gray image of the one channel at `offset` (bytes from the start of a pixel).
REALobject NewChannelImageZVK(REALobject source, int32_t offset);

// Handlers: the channel by its name; nil if the image has no such channel.
template <int32_t ImageClassData::*kOffset, uint8_t ImageClassData::*kHas>
REALobject ChannelByName(REALobject source) {
  const ImageClassData *record = RecordOf(source);
  return record != nullptr && record->*kHas ? NewChannelImageZVK(source, record->*kOffset) : nullptr;
}
constexpr auto AlphaChannel = ChannelByName<&ImageClassData::AlphaOffset, &ImageClassData::HasAlpha>;
constexpr auto RedChannel = ChannelByName<&ImageClassData::RedOffset, &ImageClassData::HasRed>;
constexpr auto GreenChannel = ChannelByName<&ImageClassData::GreenOffset, &ImageClassData::HasGreen>;
constexpr auto BlueChannel = ChannelByName<&ImageClassData::BlueOffset, &ImageClassData::HasBlue>;
constexpr auto GrayChannel = ChannelByName<&ImageClassData::GrayOffset, &ImageClassData::HasGray>;
constexpr auto CyanChannel = ChannelByName<&ImageClassData::CyanOffset, &ImageClassData::HasCyan>;
constexpr auto MagentaChannel = ChannelByName<&ImageClassData::MagentaOffset, &ImageClassData::HasMagenta>;
constexpr auto YellowChannel = ChannelByName<&ImageClassData::YellowOffset, &ImageClassData::HasYellow>;
constexpr auto BlackChannel = ChannelByName<&ImageClassData::BlackOffset, &ImageClassData::HasBlack>;

// Handler: the channel by its place in ChannelOffsets, counted from 0. Raises "OutOfBoundsException" and gives nil for
// an index outside 0 to ChannelCount - 1.
REALobject Channel(REALobject source, int32_t index);

// Handlers: the colours without alpha or filler; nil if the image is of another family.
REALobject RGBChannel(REALobject source);
REALobject CMYKChannel(REALobject source);

// Handlers: the whole image, or a rectangle of it: a negative size extends to the left or upwards, what hangs over is
// cut. A rectangle that starts beyond the right or lower edge gives a view of negative size, which operations refuse. A
// view is never larger than the image, also where the rectangle's 32-bit sums have wrapped.
REALobject ClipImage1(REALobject source);
REALobject ClipImage5(REALobject source, int32_t x, int32_t y, int32_t width, int32_t height);

// Handler: the rows in reverse order.
REALobject GetMirroredView(REALobject source);

// Handler: a second owner of the same pixels. Both free them; the caller answers for that. Nil for a mapped image and
// for one whose rows, 32-bit, do not come to 1 to 2147483647 bytes.
REALobject Clone(REALobject source);

// Property getter: a MemoryBlock of unknown size over the storage, which keeps nothing alive; nil without a buffer.
REALobject GetMemory(REALobject source, int32_t param);

}  // namespace zvk::image
