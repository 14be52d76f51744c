// Host pictures as the rest of the system sees them: a cursor over rows of 32-bit pixels, and a code for their byte
// layout. Bytes are shown as they stand; nothing here converts, premultiplies or chooses between mask and alpha.
#pragma once

#include <cstddef>
#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::pictures {

// Which kind of host this is: pictures in bitmap contexts, or GD images. Both false until it shows; set once for the
// process by ClassifyHost or by the first description lock of either kind that succeeds.
extern bool IsDesktop;
extern bool IsConsole;

// Asks the host, unless it is known already, for the kind of application that it runs.
void ClassifyHost();

// Pins the picture and fills the description of the wanted type. False if the host refuses or lacks the entry; a host
// before 2012.0 is then unlocked all the same, which it expects.
bool LockDescription(REALobject picture, REALpictureDescription *description, int32_t wantedType);

// The "Width" and "Height" of a host picture; 0 for nil or where the host does not tell.
struct PictureSize {
  int32_t width;
  int32_t height;
};
PictureSize SizeOf(REALobject picture);

// Access to one host picture. Created empty as a local of a handler; attached, it holds a reference to the picture and
// the lock of its description until it is released or destroyed.
class PictureEditor {
 public:
  PictureEditor() = default;
  PictureEditor(const PictureEditor &) = delete;
  PictureEditor &operator=(const PictureEditor &) = delete;
  virtual ~PictureEditor();

  // Attaches to the picture (nil allowed), letting go of an earlier one first. The flags tell what it is meant for: a
  // picture that is only read may be replaced by a drawn copy if the host cannot describe it. False if the picture's
  // storage cannot be reached.
  bool GetPictureEditor(REALobject picture, int8_t forReading, int8_t forWriting);

  // Gives back lock and reference, and has a written picture forget what the host cached of it. Harmless when empty.
  void ReleasePicture();

  // The finished picture with one reference for the caller, or nil if there is none. Leaves the editor empty.
  REALobject RenderPictureWriter();

  // Steps the cursor to the start of the next row; past the last row it stands at the address of row 0.
  void NextRow() {
    ++Row;
    Column = 0;
    if (Row >= Height) {
      RowAddress = BaseAddress;
    } else if (Layout == kLayoutGD) {
      RowAddress = RowPointers[Row];
    } else {
      RowAddress = BaseAddress + static_cast<ptrdiff_t>(Row) * RowBytes;
    }
  }

  // Pixels that the attached picture's rows have in memory, whatever width the host told: by a GD image's own record,
  // or as many as a bitmap's row bytes hold.
  int32_t RowPixels() const;

  // The layout of a true-colour GD row. The codes 1 to 6 are a bitmap context's alpha info.
  static constexpr int32_t kLayoutGD = 8;

  int32_t RowBytes = 0;    // distance between two rows; of a GD image 4 x Width
  int32_t Width = 0;       // pixels
  int32_t Height = 0;      // rows
  int32_t PixelBytes = 0;  // 4 once attached
  int32_t Reserved = 0;    // 0 after each attachment and release
  int32_t Layout = 0;      // see pixel_words.h
  uint8_t *RowAddress = nullptr;
  REALpictureDescription Description = {};
  uint8_t *BaseAddress = nullptr;  // row 0
  int32_t Column = 0;              // of the cursor, 0 at the start of each row
  int32_t Row = 0;
  REALobject Picture = nullptr;
  void *PixMap = nullptr;           // given back through "UnlockPixels" on release
  uint8_t **RowPointers = nullptr;  // the host's rows of a GD image, at no fixed distance
  bool HasAlpha = false;            // "HasAlphaChannel" of the picture
  bool AlphaRoute = false;          // attached as a bitmap with alpha
  bool ForReading = false;
  bool ForWriting = false;
  bool DescriptionLocked = false;

 private:
  bool Attach(REALobject picture, bool forReading, bool forWriting, bool mayCopy);
  bool AttachBitmap(REALobject picture);
  bool AttachGDImage(REALobject picture);
  bool HoldLocked(REALobject picture);
};

// For pictures that are read.
class PictureReader : public PictureEditor {};

// For the new picture of an export.
class PictureWriter : public PictureEditor {};

// Draws the mask picture into the picture's mask, made if missing, over width x height pixels. Does nothing for a nil
// picture or a size below 1.
void AddPictureMask(REALobject picture, REALobject maskPicture, int32_t width, int32_t height);

// Copies GD pixels row by row where the host cannot draw. Only the sizes count, the positions are ignored. False if the
// sizes of source and destination differ, in the arguments or in the pictures, or if either is no true-colour GD image.
bool OwnCopy(REALobject dest, REALobject source, int32_t x, int32_t y, int32_t width, int32_t height, int32_t sourceX,
             int32_t sourceY, int32_t sourceWidth, int32_t sourceHeight);

}  // namespace zvk::pictures
