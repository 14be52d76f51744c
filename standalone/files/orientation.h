// Which way up a picture is stored in its file, and what makes it upright. Cameras store pictures as the sensor had
// them and note how they were held: in EXIF data, or in a field of TIFF files.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace standalone {

// Whether pictures are loaded the way they are to be seen, or the way they are stored.
enum class Orient : uint8_t { Upright, AsStored };

// The number that EXIF gives to the orientation of the picture in a file, 1 (upright) to 8. It is taken from JPEG, PNG,
// WebP and TIFF files, also those of 64-bit offsets. Where nothing is told, or nothing that makes sense, it is 1, and
// so it is for a file that cannot be read.
int StoredOrientation(const std::string &path);

// How pixels come from where they are stored to where they are seen, in this order.
struct Turn {
  bool exchangesSides = false;  // the pixel (x, y) goes to (y, x)
  bool mirrorsAcross = false;   // left and right are exchanged
  bool mirrorsDown = false;     // top and bottom are exchanged

  bool operator==(const Turn &) const = default;
};

// What makes a picture of that orientation, 1 to 8, upright.
Turn TurnOf(int orientation);

// What is to be done to the picture of that file once it has been read: nothing if it is wanted as it is stored.
Turn TurnOf(const std::string &path, Orient orient);

// Makes a TIFF file, whole in memory, say that it is upright. For a decoder that would turn some files and not others.
void ForgetOrientationOfTiff(std::span<uint8_t> bytes);

}  // namespace standalone
