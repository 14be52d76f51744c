#include "standalone/zvk/images/scale_in_files.h"

#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "standalone/files/orientation.h"
#include "standalone/rows/row_reader.h"
#include "standalone/rows/row_writer.h"
#include "standalone/runtime/memory_block.h"
#include "standalone/zvk/images/file_image.h"
#include "standalone/zvk/images/image_io.h"

namespace standalone {
namespace {

std::unique_ptr<RowReader> Open(const std::string &path) {
  try {
    return OpenRows(path);
  } catch (const NotByRowsError &error) {
    throw std::runtime_error(std::string(error.what()) + ", or leave out --in-file");
  }
}

std::span<uint8_t> BytesOf(const MemoryBlock &block) { return {block.Data(), static_cast<size_t>(block.Size())}; }

// Into an image of the format, which has a byte for each that the reader gives but may lack the alpha.
void ReadRows(PluginSession &session, RowReader &reader, const Value &image, const ScaleJob &job) {
  const Value format = image.Get("ImageFormat");
  const int32_t pixelBytes = image.Get("PixelSize").AsInteger();
  const auto row = Owned<MemoryBlock>::Adopt(MemoryBlock::Make(pixelBytes * reader.Width()));
  const bool laysOn = reader.PixelBytes() != pixelBytes;
  std::vector<uint8_t> pixels(laysOn ? size_t{4} * static_cast<size_t>(reader.Width()) : 0);
  session.RunWithProgress("reading", job.clock, [&](const PluginSession::MoveProgress &move) {
    for (int32_t y = 0; y < reader.Height(); ++y) {
      reader.ReadRow(laysOn ? std::span(pixels) : BytesOf(*row));
      if (laysOn) LayOnBackground(pixels, job.background, BytesOf(*row));
      image.Assign("RowInFormat", {y, format}, row);
      move();
    }
  });
  if (laysOn && reader.HasSeenTransparency()) NoteLaidOnBackground(job.input, job.background);
}

Value NewSource(const PluginSession &session, Size size, const Value &format, int32_t blockSize) {
  Value image = NewFileImage(session, size, format.AsInteger(), blockSize);
  image.Set("YieldTicks", -kMillisecondsBetweenYields);
  return image;
}

// The image after its turn, by the plug-in's own moves, which go through files block by block.
Value TurnImage(const PluginSession &session, const Value &stored, const Turn &turn, int32_t blockSize) {
  if (!turn.exchangesSides) {
    if (turn.mirrorsAcross && turn.mirrorsDown) {
      stored.Call("Rotate180");
    } else if (turn.mirrorsAcross || turn.mirrorsDown) {
      stored.Call(turn.mirrorsAcross ? "HMirror" : "VMirror");
    }
    return stored;
  }
  const Size size = SizeOf(stored);
  Value turned = NewSource(session, {size.height, size.width}, stored.Get("ImageFormat"), blockSize);
  // A quarter turn exchanges the sides and mirrors the result: to the right across, to the left down.
  if (stored.Call(turn.mirrorsAcross ? "Rotate270" : "Rotate90", {turned}).IsNil()) {
    throw std::runtime_error("a picture of " + Text(size) + " pixels cannot be turned; add --no-orient");
  }
  if (turn.mirrorsAcross == turn.mirrorsDown) turned.Call("VMirror");
  return turned;
}

bool IsOpaque(const Value &image, Size size, const Value &format) {
  for (int32_t y = 0; y < size.height; ++y) {
    const Value row = image.Call("RowInFormat", {y, format});
    const std::span<const uint8_t> bytes = BytesOf(*row.As<MemoryBlock>());
    for (size_t i = 3; i < bytes.size(); i += 4) {
      if (bytes[i] != 255) return false;
    }
  }
  return true;
}

// `hasAlpha` tells whether alpha has been scaled.
void WriteRows(PluginSession &session, const Value &image, Size size, bool hasAlpha, const ScaleJob &job) {
  const HighByteOfGray highByte(image);
  const Value withAlpha = session.Images().Constant("ImageFormatRGBA");
  const bool isClear = hasAlpha && !IsOpaque(image, size, withAlpha);
  const bool laysOn = isClear && !HasRowAlpha(job.output);
  if (laysOn) NoteNoTransparency(job.output, job.background);
  const Value format = isClear ? withAlpha : session.Images().Constant("ImageFormatRGB");
  const std::unique_ptr<RowWriter> writer = CreateRows(job.output, size.width, size.height, isClear && !laysOn);
  session.RunWithProgress("writing", job.clock, [&](const PluginSession::MoveProgress &move) {
    for (int32_t y = 0; y < size.height; ++y) {
      const Value row = image.Call("RowInFormat", {y, format});
      std::span<uint8_t> bytes = BytesOf(*row.As<MemoryBlock>());
      if (laysOn) {
        LayOnBackground(bytes, job.background, bytes);
        bytes = bytes.first(bytes.size() / 4 * 3);
      }
      writer->WriteRow(bytes);
      move();
    }
  });
  writer->Finish();
}

// The plug-in's own choice of an image between the two steps is never one in a file. Four bytes hold colours with or
// without alpha; gray takes one, or two with alpha.
const char *TempFormat(const Value &result, bool hasAlpha) {
  if (result.Get("IsRGB").AsBoolean()) return "ImageFormatScaling4";
  return hasAlpha ? "ImageFormatScaling2" : "ImageFormatScaling1";
}

}  // namespace

void ScaleInFiles(PluginSession &session, const ScaleJob &job, int32_t blockSize) {
  const std::unique_ptr<RowReader> reader = Open(job.input);
  reader->KeepAlpha();
  const bool mayBeClear = reader->Header().hasAlpha;
  const Turn turn = TurnOf(job.input, job.orient);
  const Size storedSize = {reader->Width(), reader->Height()};
  const Size sourceSize = turn.exchangesSides ? Size{storedSize.height, storedSize.width} : storedSize;
  const Size size = CompleteSize(job.size, sourceSize, kLargestRowSide);
  // What stands in the way of the output is told before the long work, not after it.
  CreateRows(job.output, size.width, size.height).reset();
  const ClassBinding &images = session.Images();
  const Value result = NewFileImage(session, size, ResultFormat(session, job, mayBeClear), blockSize);
  RefuseUnsuitable(result, job);
  result.Set("YieldTicks", -kMillisecondsBetweenYields);
  const bool scalesAlpha = mayBeClear && HasAlpha(result);
  {
    const Value sourceFormat = images.Constant(scalesAlpha ? "ImageFormatRGBA" : "ImageFormatRGB");
    Value source = NewSource(session, storedSize, sourceFormat, blockSize);
    ReadRows(session, *reader, source, job);
    session.RunWithProgress("turning", job.clock, [&](const PluginSession::MoveProgress &) {
      source = TurnImage(session, source, turn, blockSize);
    });

    Value temp;
    if (!job.isFast) {
      const Value tempFormat = images.Constant(TempFormat(result, scalesAlpha));
      temp = NewFileImage(session, {size.width, sourceSize.height}, tempFormat.AsInteger(), blockSize);
    }
    session.RunWithProgress("scaling to " + Text(size), job.clock, [&](const PluginSession::MoveProgress &) {
      const HighByteOfGray highByte(result);
      if (!ScaleWhole(source, temp, result, job)) {
        throw std::runtime_error("there is not enough memory to scale to " + Text(size) +
                                 " pixels; take a smaller size");
      }
    });
  }
  WriteRows(session, result, size, scalesAlpha && reader->HasSeenTransparency(), job);
}

}  // namespace standalone
