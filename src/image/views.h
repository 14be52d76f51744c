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
REALobject AlphaChannel(REALobject source);
REALobject RedChannel(REALobject source);
REALobject GreenChannel(REALobject source);
REALobject BlueChannel(REALobject source);
REALobject GrayChannel(REALobject source);
REALobject CyanChannel(REALobject source);
REALobject MagentaChannel(REALobject source);
REALobject YellowChannel(REALobject source);
REALobject BlackChannel(REALobject source);

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
