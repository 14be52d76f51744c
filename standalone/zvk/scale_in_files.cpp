#include "standalone/zvk/scale_in_files.h"

#include <memory>
#include <span>
#include <stdexcept>
#include <string>

#include "standalone/rows/row_reader.h"
#include "standalone/rows/row_writer.h"
#include "standalone/runtime/memory_block.h"
#include "standalone/zvk/file_image.h"
#include "standalone/zvk/image_io.h"

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

void ReadRows(PluginSession &session, RowReader &reader, const Value &image) {
  const Value format = session.Images().Constant("ImageFormatRGB");
  const auto row = Owned<MemoryBlock>::Adopt(MemoryBlock::Make(3 * reader.Width()));
  session.RunWithProgress("reading", [&](const PluginSession::MoveProgress &move) {
    for (int32_t y = 0; y < reader.Height(); ++y) {
      reader.ReadRow(BytesOf(*row));
      image.Assign("RowInFormat", {y, format}, row);
      move();
    }
  });
}

void WriteRows(PluginSession &session, const Value &image, Size size, const std::string &path) {
  const Value format = session.Images().Constant("ImageFormatRGB");
  const HighByteOfGray highByte(image);
  const std::unique_ptr<RowWriter> writer = CreateRows(path, size.width, size.height);
  session.RunWithProgress("writing", [&](const PluginSession::MoveProgress &move) {
    for (int32_t y = 0; y < size.height; ++y) {
      const Value row = image.Call("RowInFormat", {y, format});
      writer->WriteRow(BytesOf(*row.As<MemoryBlock>()));
      move();
    }
  });
  writer->Finish();
}

}  // namespace

void ScaleInFiles(PluginSession &session, const ScaleJob &job, int32_t blockSize) {
  const std::unique_ptr<RowReader> reader = Open(job.input);
  const Size sourceSize = {reader->Width(), reader->Height()};
  const Size size = CompleteSize(job.size, sourceSize, kLargestRowSide);
  // What stands in the way of the output is told before the long work, not after it.
  CreateRows(job.output, size.width, size.height).reset();
  const ClassBinding &images = session.Images();
  const Value result = NewFileImage(session, size, job.format, blockSize);
  RefuseUnsuitable(result, job);
  result.Set("YieldTicks", -kMillisecondsBetweenYields);
  {
    const Value source = NewFileImage(session, sourceSize, images.Constant("ImageFormatRGB").AsInteger(), blockSize);
    ReadRows(session, *reader, source);
    if (reader->HasSeenTransparency()) NoteTransparency(job.input);

    // Between the two steps colours take four bytes a pixel, gray takes one. The plug-in's own choice of an image for
    // that is never one in a file.
    const char *const tempFormat = result.Get("IsRGB").AsBoolean() ? "ImageFormatScaling4" : "ImageFormatScaling1";
    const Value temp =
        NewFileImage(session, {size.width, sourceSize.height}, images.Constant(tempFormat).AsInteger(), blockSize);
    session.RunWithProgress("scaling to " + Text(size), [&](const PluginSession::MoveProgress &) {
      const HighByteOfGray highByte(result);
      if (!ScaleWhole(source, temp, result, job.filter)) {
        throw std::runtime_error("there is not enough memory to scale to " + Text(size) +
                                 " pixels; take a smaller size");
      }
    });
  }
  WriteRows(session, result, size, job.output);
}

}  // namespace standalone
