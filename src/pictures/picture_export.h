// Images on their way out: a rectangle of an image becomes a new, opaque host picture, its alpha channel a gray
// picture, or both a picture with a mask.
#pragma once

#include <cstdint>

#include "image/rectangle.h"
#include "pictures/picture_editor.h"
#include "pixels/pixel_watch.h"

namespace zvk::pictures {

// Handlers. Each gives one reference to a new picture, or nil: for an image that is not usable or has no colour family
// (for masks: no alpha), an empty rectangle, a rectangle larger than 32767 pixels in either direction, or a host
// without pictures. The rectangle is in pixels; what hangs over the image is cut, a negative size extends to the left
// and up.
REALobject rbCopyPicture(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height);
REALobject rbCopyMask(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height);
REALobject rbCopyPictureAll(REALobject instance);
REALobject rbCopyMaskAll(REALobject instance);

// The picture of rbCopyPicture, with the picture of rbCopyMask drawn into its mask. Without a mask for an image without
// alpha, and also for a negative size, which the drawing of the mask refuses.
REALobject rbCopyPictureWithMask(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height);
REALobject rbCopyPictureWithMaskAll(REALobject instance);

// Property getter: the top left corner of up to 512 x 512 pixels with its mask; nil unless DebugPictureEnabled is set.
REALobject GetDebugPicture(REALobject instance, int32_t param);

// Writes the rectangle, which lies in the image, into the attached picture of that size, by the image's family or from
// its alpha channel. Yields before the first row and after each. A picture of unknown layout is left as it is.
void WriteColours(const PixelWatch &image, const Rectangle &rectangle, PictureEditor &picture);
void WriteAlpha(const PixelWatch &image, const Rectangle &rectangle, PictureEditor &picture);

}  // namespace zvk::pictures
