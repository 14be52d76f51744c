// Combine: a rectangle of an image blended into another one, through a mask image or through flat colours.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::compositing {

// Handlers. Blend the rectangle of `image` at sourceX, sourceY into the instance at destX, destY, all in pixels; what
// hangs over is cut. False, with no pixel changed, for a size not above 0, an empty rectangle, and images (nil, too)
// that are not usable; true, with none changed, where only sums that have wrapped leave nothing. Colours are 0xRRGGBB;
// a negative one, which any with bit 31 is, counts as absent. What is done depends on what is there:
//   - mask: `image` through the mask, which has its size and lies over it; 255 keeps the instance's pixel. The colours
//     are ignored. False for 16-bit samples, too.
//   - foreColour alone: the colour through `image` as the mask.
//   - maskColour: `image` through the colour as the mask, or through 0 without useColours. False for 16-bit samples,
//   too.
//   - none of them: CopyPixels, and its result.
// With a mask or a colour only gray and RGB images are changed; others give true. preMultipliedSource says that what is
// laid on has been multiplied by its coverage already: it is added, and sums wrap at 256.
uint8_t PictureCombine1pm(REALobject instance, REALobject image, uint8_t preMultipliedSource, REALobject mask,
                          int32_t destX, int32_t destY, int32_t sourceX, int32_t sourceY, int32_t width, int32_t height,
                          uint8_t useColours, int32_t foreColour, int32_t maskColour);

// Without maskColour.
uint8_t PictureCombine2pm(REALobject instance, REALobject image, uint8_t preMultipliedSource, REALobject mask,
                          int32_t destX, int32_t destY, int32_t sourceX, int32_t sourceY, int32_t width, int32_t height,
                          uint8_t useColours, int32_t foreColour);

// Without colours; useColours is not looked at.
uint8_t PictureCombine3pm(REALobject instance, REALobject image, uint8_t preMultipliedSource, REALobject mask,
                          int32_t destX, int32_t destY, int32_t sourceX, int32_t sourceY, int32_t width, int32_t height,
                          uint8_t useColours);

// The same with preMultipliedSource false.
uint8_t PictureCombine1(REALobject instance, REALobject image, REALobject mask, int32_t destX, int32_t destY,
                        int32_t sourceX, int32_t sourceY, int32_t width, int32_t height, uint8_t useColours,
                        int32_t foreColour, int32_t maskColour);
uint8_t PictureCombine2(REALobject instance, REALobject image, REALobject mask, int32_t destX, int32_t destY,
                        int32_t sourceX, int32_t sourceY, int32_t width, int32_t height, uint8_t useColours,
                        int32_t foreColour);
uint8_t PictureCombine3(REALobject instance, REALobject image, REALobject mask, int32_t destX, int32_t destY,
                        int32_t sourceX, int32_t sourceY, int32_t width, int32_t height, uint8_t useColours);

// The same for the host's Color, which arrives as the 32 bits that an Integer has.
uint8_t PictureCombine1c(REALobject instance, REALobject image, REALobject mask, int32_t destX, int32_t destY,
                         int32_t sourceX, int32_t sourceY, int32_t width, int32_t height, uint8_t useColours,
                         int32_t foreColour, int32_t maskColour);
uint8_t PictureCombine2c(REALobject instance, REALobject image, REALobject mask, int32_t destX, int32_t destY,
                         int32_t sourceX, int32_t sourceY, int32_t width, int32_t height, uint8_t useColours,
                         int32_t foreColour);
uint8_t PictureCombine1pmc(REALobject instance, REALobject image, uint8_t preMultipliedSource, REALobject mask,
                           int32_t destX, int32_t destY, int32_t sourceX, int32_t sourceY, int32_t width,
                           int32_t height, uint8_t useColours, int32_t foreColour, int32_t maskColour);
uint8_t PictureCombine2pmc(REALobject instance, REALobject image, uint8_t preMultipliedSource, REALobject mask,
                           int32_t destX, int32_t destY, int32_t sourceX, int32_t sourceY, int32_t width,
                           int32_t height, uint8_t useColours, int32_t foreColour);

// The case with a mask image.
uint8_t Case2(REALobject instance, REALobject image, uint8_t preMultipliedSource, REALobject mask, int32_t destX,
              int32_t destY, int32_t sourceX, int32_t sourceY, int32_t width, int32_t height);

}  // namespace zvk::compositing
