// Host pictures that carry a mask, a picture of its own, drawn into an image one to one: either the mask becomes the
// image's alpha, or it is used at once and the picture blended over the image. A mask is looked at through its colours.
#pragma once

#include <cstdint>

#include "image/rectangle.h"
#include "pictures/picture_editor.h"
#include "pictures/shorter_forms.h"
#include "pixels/pixel_watch.h"

namespace zvk::pictures {

// The rectangles of all handlers follow the rules of rbDrawPictureRGB8, and the shorter forms fill in the same numbers.
// Nothing happens for an image without red, green and blue or one that is not usable, nor where the picture, or a mask
// that it has, cannot be read. The host's reference to the mask that a call was given stays taken.

// Handlers that store the picture's colours, and as alpha the mask's red: white is 255, black 0. A picture without mask
// counts as one with a white mask. `invertMask` exchanges the two. The alpha goes to the image's alpha offset, also in
// an image without alpha: to the first byte of a pixel, where a colour may replace it.
void rbDrawMaskedPictureRGB8(REALobject instance, REALobject picture, int32_t destX, int32_t destY, int32_t destWidth,
                             int32_t destHeight, int32_t sourceX, int32_t sourceY, uint8_t invertMask);
constexpr auto rbDrawMaskedPictureRGB2 = ShorterForms<rbDrawMaskedPictureRGB8>::Draw2;
constexpr auto rbDrawMaskedPictureRGB4 = ShorterForms<rbDrawMaskedPictureRGB8>::Draw4;
constexpr auto rbDrawMaskedPictureRGB6 = ShorterForms<rbDrawMaskedPictureRGB8>::Draw6;

// Handlers that blend each colour of the picture over the image's by the mask's own sample of that colour: 255 keeps
// the image, 0 gives the picture, the other way round with `invertMask`. Alpha is not touched. A picture without mask
// is drawn plain, whatever `invertMask` says.
void rbDrawPictureApplyMaskRGB8(REALobject instance, REALobject picture, int32_t destX, int32_t destY,
                                int32_t destWidth, int32_t destHeight, int32_t sourceX, int32_t sourceY,
                                uint8_t invertMask);
constexpr auto rbDrawPictureApplyMaskRGB2 = ShorterForms<rbDrawPictureApplyMaskRGB8>::Draw2;
constexpr auto rbDrawPictureApplyMaskRGB4 = ShorterForms<rbDrawPictureApplyMaskRGB8>::Draw4;
constexpr auto rbDrawPictureApplyMaskRGB6 = ShorterForms<rbDrawPictureApplyMaskRGB8>::Draw6;

// Draw a fitted transfer, with the cursors on the pictures' first rows of it. They yield before the first row and after
// each, and draw nothing from an unknown layout. A nil mask is a white one; to blend there must be a mask.
void DrawMasked(const PixelWatch &image, const Transfer &transfer, PictureEditor &picture, PictureEditor *mask,
                bool invertMask);
void BlendMasked(const PixelWatch &image, const Transfer &transfer, PictureEditor &picture, PictureEditor *mask,
                 bool invertMask);

}  // namespace zvk::pictures
