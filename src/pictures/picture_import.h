// Host pictures on their way in: an image over a picture's own pixels, and pictures drawn into an image, one to one.
#pragma once

#include <cstdint>

#include "image/image_record.h"
#include "image/rectangle.h"
#include "pictures/picture_editor.h"

namespace zvk::pictures {

// Constructor over a picture, which the image holds as its Target: no pixel is copied, and writes go into the picture
// without the host being told. useAlpha makes the picture's fourth byte the alpha channel. A nil picture raises
// "NilObjectException"; a picture whose storage is not understood leaves the image not Valid without a word.
void ImageConstructorPicture(REALobject instance, REALobject picture, uint8_t useAlpha);

// Handlers that draw into red, green and blue; alpha is neither read nor written. Positions and sizes are in pixels,
// and a size only limits the area. What hangs over the image or the picture is cut. Nothing happens for an image that
// is not usable or lacks one of the three channels, or for a picture (nil, too) that cannot be read. Without a size the
// picture's own is taken, without positions 0.
void rbDrawPictureRGB2(REALobject instance, REALobject picture);
void rbDrawPictureRGB4(REALobject instance, REALobject picture, int32_t destX, int32_t destY);
void rbDrawPictureRGB6(REALobject instance, REALobject picture, int32_t destX, int32_t destY, int32_t destWidth,
                       int32_t destHeight);
void rbDrawPictureRGB8(REALobject instance, REALobject picture, int32_t destX, int32_t destY, int32_t destWidth,
                       int32_t destHeight, int32_t sourceX, int32_t sourceY);

// Handlers that draw one colour of the picture into the gray channel, under the same rules. A sample of 16 bits gets
// its first byte written and keeps the second.
void rbDrawPictureRedToGrayChannel6(REALobject instance, REALobject picture, int32_t destX, int32_t destY,
                                    int32_t destWidth, int32_t destHeight);
void rbDrawPictureRedToGrayChannel8(REALobject instance, REALobject picture, int32_t destX, int32_t destY,
                                    int32_t destWidth, int32_t destHeight, int32_t sourceX, int32_t sourceY);
void rbDrawPictureGreenToGrayChannel6(REALobject instance, REALobject picture, int32_t destX, int32_t destY,
                                      int32_t destWidth, int32_t destHeight);
void rbDrawPictureGreenToGrayChannel8(REALobject instance, REALobject picture, int32_t destX, int32_t destY,
                                      int32_t destWidth, int32_t destHeight, int32_t sourceX, int32_t sourceY);
void rbDrawPictureBlueToGrayChannel6(REALobject instance, REALobject picture, int32_t destX, int32_t destY,
                                     int32_t destWidth, int32_t destHeight);
void rbDrawPictureBlueToGrayChannel8(REALobject instance, REALobject picture, int32_t destX, int32_t destY,
                                     int32_t destWidth, int32_t destHeight, int32_t sourceX, int32_t sourceY);

// Fits a caller's transfer to the image and the attached picture; empty if nothing is to be drawn.
Transfer FitToPicture(const Transfer &transfer, const ImageClassData &image, const PictureEditor &picture);

// Steps the picture's cursor over the given number of rows.
void SkipRows(PictureEditor &picture, int32_t rows);

// Which sample of a picture goes to the gray channel.
enum class PictureColour { Red, Green, Blue };

// Draw a fitted transfer, with the cursor on the picture's first row of it. The three colours yield before the first
// row and after each, and draw nothing from an unknown layout; the gray channel does not yield, and gets 0 there.
void DrawColours(ImageClassData &image, const Transfer &transfer, PictureEditor &picture);
void DrawGray(ImageClassData &image, const Transfer &transfer, PictureEditor &picture, PictureColour colour);

}  // namespace zvk::pictures
