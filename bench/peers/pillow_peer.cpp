#include "bench/peers/pillow_peer.h"

#include <stdexcept>

#include "bench/peers/worker.h"

namespace zvk::peers {
namespace {

// The script lies beside this file. Packages of Debian are found by its own interpreter.
Worker &Pillow() {
  static Worker worker({"/usr/bin/python3", PEERS_FOLDER "/pillow.py"});
  return worker;
}

// Four channels are called CMYK, since of RGBA Pillow would multiply the colours by alpha first.
const char *ModeOf(Layout layout) {
  switch (layout) {
    case Layout::Gray:
      return "L";
    case Layout::RGB:
      return "RGB";
    case Layout::RGBA:
      return "CMYK";
    default:
      throw std::logic_error("no such mode");
  }
}

const char *FilterOf(Filter filter) {
  switch (filter) {
    case Filter::Lanczos3:
      return "LANCZOS";
    case Filter::Triangle:
      return "BILINEAR";
    case Filter::Mitchell:
      return "BICUBIC";
    case Filter::Box:
      return "BOX";
    case Filter::Nearest:
      return "NEAREST";
    case Filter::Lanczos8:
      break;
  }
  return nullptr;
}

// The words name a function of the script and its arguments.
Preparation Job(const std::string &words, Size size, Layout layout) {
  return [=] {
    const auto stride = static_cast<size_t>(size.width * PixelBytes(layout));
    std::vector<uint8_t> pixels(stride * static_cast<size_t>(size.height));
    DrawTestPicture(PackedView(pixels.data(), stride, size, layout));
    const std::string image =
        std::string(ModeOf(layout)) + " " + std::to_string(size.width) + " " + std::to_string(size.height) + " ";
    return Pillow().Prepare(image + words, pixels);
  };
}

}  // namespace

std::string PillowVersion() { return Pillow().Ask("version"); }

std::optional<Contestant> PillowScaling(const Scaling &scaling) {
  const char *const filter = FilterOf(scaling.filter);
  if (filter == nullptr || scaling.layout == Layout::Gray16) return std::nullopt;
  const std::string words =
      "resize " + std::to_string(scaling.to.width) + " " + std::to_string(scaling.to.height) + " " + filter;
  const Note *const note = scaling.filter == Filter::Mitchell  ? &kSharperCubic
                           : scaling.filter == Filter::Nearest ? &kCentres
                                                               : nullptr;
  return Contestant{"Pillow", Job(words, scaling.from, scaling.layout), note};
}

Preparation PillowBoxBlur(int32_t radius, Size size) {
  return Job("blur " + std::to_string(radius), size, Layout::RGB);
}

Preparation PillowRotation(double degrees, Size size) {
  return Job("rotate " + std::to_string(degrees), size, Layout::RGB);
}

Preparation PillowMirror(bool horizontal, Size size) {
  return Job(horizontal ? "mirror 0" : "mirror 1", size, Layout::RGB);
}

}  // namespace zvk::peers
