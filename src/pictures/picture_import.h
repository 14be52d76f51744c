// Host pictures on their way in: an image over a picture's own pixels, and pictures drawn into an image, one to one.
#pragma once

#include <cstdint>

#include "image/image_record.h"
#include "image/rectangle.h"
#include "pictures/picture_editor.h"
#include "pictures/shorter_forms.h"
#include "pixels/pixel_watch.h"

namespace zvk::pictures {

// Constructor over a picture, which the image holds as its Target: no pixel is copied, and writes go into the picture
// without the host being told. useAlpha makes the picture's fourth byte the alpha channel. A nil picture raises
// "NilObjectException"; a picture whose storage is not understood leaves the image not Valid without a word.
void ImageConstructorPicture(REALobject instance, REALobject picture, uint8_t useAlpha);

// Handlers that draw into red, green and blue; alpha is neither read nor written. Positions and sizes are in pixels,
// and a size only limits the area. What hangs over the image or the picture is cut. Nothing happens for an image that
// is not usable or lacks one of the three channels, or for a picture (nil, too) that cannot be read. Without a size the
// picture's own is taken, without positions 0.
void rbDrawPictureRGB8(REALobject instance, REALobject picture, int32_t destX, int32_t destY, int32_t destWidth,
                       int32_t destHeight, int32_t sourceX, int32_t sourceY);
constexpr auto rbDrawPictureRGB2 = ShorterForms<rbDrawPictureRGB8>::Draw2;
constexpr auto rbDrawPictureRGB4 = ShorterForms<rbDrawPictureRGB8>::Draw4;
constexpr auto rbDrawPictureRGB6 = ShorterForms<rbDrawPictureRGB8>::Draw6;

// Which sample of a picture goes to the gray channel.
enum class PictureColour { Red, Green, Blue };

// Draws one colour of the picture into the gray channel, under the same rules. A sample of 16 bits gets its first byte
// written and keeps the second.
void DrawToGrayChannel(REALobject instance, REALobject picture, const Transfer &transfer, PictureColour colour);

// Handlers that do so.
template <PictureColour kColour>
void DrawToGrayChannel8(REALobject instance, REALobject picture, int32_t destX, int32_t destY, int32_t destWidth,
                        int32_t destHeight, int32_t sourceX, int32_t sourceY) {
  DrawToGrayChannel(instance, picture, {destX, destY, destWidth, destHeight, sourceX, sourceY}, kColour);
}
constexpr auto rbDrawPictureRedToGrayChannel8 = DrawToGrayChannel8<PictureColour::Red>;
constexpr auto rbDrawPictureRedToGrayChannel6 = ShorterForms<rbDrawPictureRedToGrayChannel8>::Draw6;
constexpr auto rbDrawPictureGreenToGrayChannel8 = DrawToGrayChannel8<PictureColour::Green>;
constexpr auto rbDrawPictureGreenToGrayChannel6 = ShorterForms<rbDrawPictureGreenToGrayChannel8>::Draw6;
constexpr auto rbDrawPictureBlueToGrayChannel8 = DrawToGrayChannel8<PictureColour::Blue>;
constexpr auto rbDrawPictureBlueToGrayChannel6 = ShorterForms<rbDrawPictureBlueToGrayChannel8>::Draw6;

// Fits a caller's transfer to the image and the attached picture; empty if nothing is to be drawn.
Transfer FitToPicture(const Transfer &transfer, const ImageClassData &image, const PictureEditor &picture);

// Steps the picture's cursor over the given number of rows.
void SkipRows(PictureEditor &picture, int32_t rows);

// Draw a fitted transfer, with the cursor on the picture's first row of it. The three colours yield before the first
// row and after each, and draw nothing from an unknown layout; the gray channel does not yield, and gets 0 there.
void DrawColours(const PixelWatch &image, const Transfer &transfer, PictureEditor &picture);
void DrawGray(const PixelWatch &image, const Transfer &transfer, PictureEditor &picture, PictureColour colour);

}  // namespace zvk::pictures
