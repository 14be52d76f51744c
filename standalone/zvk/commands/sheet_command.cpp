#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "standalone/gd/drawing.h"
#include "standalone/zvk/arguments/file_arguments.h"
#include "standalone/zvk/arguments/size_argument.h"
#include "standalone/zvk/commands/commands.h"
#include "standalone/zvk/help/footer.h"
#include "standalone/zvk/images/image_io.h"
#include "standalone/zvk/session/plugin_session.h"

namespace standalone {
namespace {

constexpr uint32_t kPaper = 0xFFFFFF;
constexpr uint32_t kInk = 0x202020;
constexpr int32_t kGap = 8;  // pixels around a picture with its name, and between the two

struct SheetRequest {
  std::string output;
  std::vector<std::string> files;
  int32_t side = 160;
  int32_t columns = 0;  // 0: as many as rows, or one more
  Orient orient = Orient::Upright;
  PluginOptions plugin;
};

struct Position {
  int32_t x;
  int32_t y;
};

// Where everything is on the sheet.
class Layout {
 public:
  Layout(int32_t count, int32_t side, int32_t columns)
      : side_(side),
        columns_(columns > 0 ? std::min(columns, count) : static_cast<int32_t>(std::ceil(std::sqrt(count)))),
        rows_((count + columns_ - 1) / columns_) {}

  // Throws std::runtime_error if no picture is that large.
  Size SheetSize() const {
    const int64_t width = kGap + int64_t{columns_} * CellWidth();
    const int64_t height = kGap + int64_t{rows_} * CellHeight();
    if (std::max(width, height) > kLargestPictureSide) {
      throw std::runtime_error("a sheet of " + std::to_string(width) + " x " + std::to_string(height) +
                               " pixels is too large; take fewer pictures or a smaller --size");
    }
    return {static_cast<int32_t>(width), static_cast<int32_t>(height)};
  }

  // Small pictures keep their size, large ones their proportions.
  Size ThumbnailSize(Size size) const {
    if (std::max(size.width, size.height) <= side_) return size;
    return size.width > size.height ? CompleteSize({side_, {}}, size) : CompleteSize({{}, side_}, size);
  }

  // The middle of a cell's square.
  Position Thumbnail(int32_t index, Size size) const {
    const Position cell = Cell(index);
    return {cell.x + (side_ - size.width) / 2, cell.y + (side_ - size.height) / 2};
  }

  // The middle under the square.
  Position Name(int32_t index, const std::string &name) const {
    const Position cell = Cell(index);
    const int32_t width = static_cast<int32_t>(name.size()) * SizeOfLetters().width;
    return {cell.x + (side_ - width) / 2, cell.y + side_ + kGap / 2};
  }

  // The name as far as there is room, with dots for the rest.
  std::string Shorten(const std::string &name) const {
    const auto room = static_cast<size_t>((side_ + kGap) / SizeOfLetters().width);
    if (name.size() <= room) return name;
    constexpr size_t kDots = 3;
    return name.substr(0, room - std::min(room, kDots)) + std::string(std::min(room, kDots), '.');
  }

 private:
  int32_t CellWidth() const { return side_ + kGap; }
  int32_t CellHeight() const { return side_ + kGap + SizeOfLetters().height + kGap / 2; }
  Position Cell(int32_t index) const {
    return {kGap + index % columns_ * CellWidth(), kGap + index / columns_ * CellHeight()};
  }

  int32_t side_;
  int32_t columns_;
  int32_t rows_;
};

// The sheet with nothing but names on it.
Value NamedSheet(const PluginSession &session, const SheetRequest &request, const Layout &layout) {
  const Size size = layout.SheetSize();
  const Owned<Picture> paper = Paper(size.width, size.height, kPaper);
  for (size_t i = 0; i < request.files.size(); ++i) {
    const std::string name = layout.Shorten(LettersOf(std::filesystem::path(request.files[i]).stem().string()));
    const Position position = layout.Name(static_cast<int32_t>(i), name);
    DrawLetters(*paper, position.x, position.y, name, kInk);
  }
  Value sheet = session.Images().New({size.width, size.height, session.Images().Constant("ImageFormatRGB")});
  sheet.Call("DrawPictureRGB", {paper});
  return sheet;
}

void Sheet(const SheetRequest &request) {
  RefuseUnknownExtension(request.output);
  const PluginSession session(request.plugin);
  const Layout layout(static_cast<int32_t>(request.files.size()), request.side, request.columns);
  const Value sheet = NamedSheet(session, request, layout);
  const Value filter = session.Images().Constant("ScaleLanczos3");
  for (size_t i = 0; i < request.files.size(); ++i) {
    const Value picture = LoadOpaqueImage(session, request.files[i], kPaper, request.orient);
    const Size size = layout.ThumbnailSize(SizeOf(picture));
    const Position position = layout.Thumbnail(static_cast<int32_t>(i), size);
    const Value place = sheet.Call("ClipImage", {position.x, position.y, size.width, size.height});
    if (!place.Call("Scale", {picture, nullptr, filter, size.width, size.height}).AsBoolean()) {
      throw std::runtime_error(request.files[i] + ": there is not enough memory to scale it; leave it out");
    }
  }
  SaveImage(sheet, request.output, kPaper);
}

}  // namespace

void AddSheetCommand(CLI::App &program) {
  const auto request = std::make_shared<SheetRequest>();
  CLI::App &command = *program.add_subcommand("sheet", "Lay pictures out on one sheet, with their names under them");
  AddOutputArgument(command, request->output);
  command.add_option("FILE", request->files, "Image files to lay out, row by row")->required()->type_name("");
  command
      .add_option("--size", request->side,
                  "Side in pixels of the square for each picture, 32 to 4096;\nlarger pictures are made to fit it "
                  "[default: 160]")
      ->check(CLI::Range(32, 4096))
      ->type_name("N");
  command.add_option("--columns", request->columns, "Pictures in a row [default: as many as rows, or one more]")
      ->check(CLI::Range(1, kLargestPictureSide))
      ->type_name("N");
  AddOrientOption(command, request->orient);
  AddPluginOptions(command, request->plugin);
  command.footer(HelpFooter(
      "The name under a picture is that of its file, without folder and extension. Transparent\n"
      "pixels are laid on the white of the sheet.",
      {"zvk sheet album.png photos/*.jpg", "zvk sheet strip.jpg one.png two.png three.png --columns 3 --size 240"},
      kOutWholeOrAsBefore));
  command.callback([request] { Sheet(*request); });
}

}  // namespace standalone
