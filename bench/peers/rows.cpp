// The table: who does what beside whom.
#include <cstdlib>
#include <numeric>

#include "bench/peers/contest.h"
#include "bench/peers/jobs.h"
#include "bench/peers/opencv_peer.h"
#include "bench/peers/ours.h"
#include "bench/peers/pillow_peer.h"
#include "bench/peers/pixman_peer.h"
#include "bench/peers/vips_peer.h"
#include "bench/peers/zimg_peer.h"

namespace zvk::peers {
namespace {

// --- matrices ---

Matrix Mean(int32_t dimension, std::vector<int32_t> weights) {
  const double scale = 1.0 / std::accumulate(weights.begin(), weights.end(), 0);
  return {dimension, std::move(weights), scale};
}

// Weights 1 to 16 without any order, so that no column times a row gives them.
Matrix Rough(int32_t dimension) {
  std::vector<int32_t> weights(static_cast<size_t>(dimension * dimension));
  uint32_t noise = 1;
  for (int32_t &weight : weights) {
    noise = noise * 1664525 + 1013904223;
    weight = 1 + static_cast<int32_t>(noise >> 28);
  }
  return Mean(dimension, std::move(weights));
}

// 1 to 13 and back to 1.
std::vector<int32_t> Tent() {
  std::vector<int32_t> line(25);
  for (int32_t i = 0; i < 25; ++i) line[static_cast<size_t>(i)] = 13 - std::abs(i - 12);
  return line;
}

Matrix ColumnTimesRow(const std::vector<int32_t> &line) {
  std::vector<int32_t> weights;
  for (const int32_t above : line) {
    for (const int32_t beside : line) weights.push_back(above * beside);
  }
  return Mean(static_cast<int32_t>(line.size()), std::move(weights));
}

// --- rows ---

Contestant Ours(Preparation task, std::string cpu = {}) {
  return {"PictureZVK", std::move(task), nullptr, std::move(cpu)};
}

Row ScalingRow(std::string name, const Scaling &scaling) {
  Row row{"Scaling", std::move(name), {Ours(OurScaling(scaling))}};
  for (const auto &peer : {ZimgScaling(scaling), PillowScaling(scaling), VipsScaling(scaling), OpenCVScaling(scaling),
                           PixmanScaling(scaling)}) {
    if (peer) row.contestants.push_back(*peer);
  }
  return row;
}

Row AVX2Row(std::string name, const Scaling &scaling) {
  return {"Scaling", std::move(name), {Ours(OurScaling(scaling), "avx2"), *ZimgScaling(scaling, ZimgLevel::AVX2)}};
}

// The first of the pair over the second.
Row OwnRow(std::string name, Preparation first, Preparation second) {
  return {"Ours", std::move(name), {Ours(std::move(first)), Ours(std::move(second))}};
}

}  // namespace

std::vector<Row> Rows(int32_t divisor) {
  using enum Filter;
  using enum Layout;
  const Size photo{6000 / divisor, 4000 / divisor}, small{1500 / divisor, 1000 / divisor};
  const Size large{3000 / divisor, 2000 / divisor};
  const auto down = [=](Filter filter, Layout layout) { return Scaling{filter, layout, photo, small}; };
  const auto up = [=](Filter filter, Layout layout) { return Scaling{filter, layout, small, large}; };

  const Matrix narrow = Mean(3, {1, 2, 1, 2, 4, 2, 1, 2, 1});
  const Matrix wide = Mean(3, {-700, 254, 200, 150, 254, 100, 254, 200, -300});
  const std::vector<int32_t> tent = Tent();
  const auto matrix = [=](std::string name, const Matrix &weights) {
    return Row{"Filters", std::move(name), {Ours(OurMatrix(weights, photo)), {"OpenCV", OpenCVMatrix(weights, photo)}}};
  };
  const auto blur = [=](int32_t radius) {
    return Row{"Filters",
               "box blur, radius " + std::to_string(radius),
               {Ours(OurBoxBlur(radius, photo)),
                {"Pillow", PillowBoxBlur(radius, photo)},
                {"OpenCV", OpenCVBoxBlur(radius, photo)}}};
  };
  const auto mirror = [=](std::string name, bool horizontal) {
    return Row{"Moves",
               std::move(name),
               {Ours(OurMirror(horizontal, photo)),
                {"Pillow", PillowMirror(horizontal, photo), &kFreshCopy},
                {"OpenCV", OpenCVMirror(horizontal, photo)}}};
  };

  constexpr Storages kFromFile{Storage::File, Storage::Memory}, kInFiles{Storage::File, Storage::File};
  const std::string toMemory = ": file to memory / memory", toFile = ": file to file / memory";
  const Scaling lanczos = down(Lanczos3, RGB);

  return {
      ScalingRow("RGB down, Lanczos3", lanczos),
      ScalingRow("RGB down, Lanczos8", down(Lanczos8, RGB)),
      ScalingRow("RGB down, Mitchell", down(Mitchell, RGB)),
      ScalingRow("RGB down, triangle", down(Triangle, RGB)),
      ScalingRow("RGB down, box", down(Box, RGB)),
      ScalingRow("RGBA down, Lanczos3", down(Lanczos3, RGBA)),
      ScalingRow("gray down, Lanczos3", down(Lanczos3, Gray)),
      ScalingRow("16-bit gray down, Lanczos3", down(Lanczos3, Gray16)),
      ScalingRow("RGB up, Lanczos3", up(Lanczos3, RGB)),
      ScalingRow("RGB up, triangle", up(Triangle, RGB)),
      ScalingRow("RGBA up, Lanczos3", up(Lanczos3, RGBA)),
      ScalingRow("RGBA up, triangle", up(Triangle, RGBA)),
      ScalingRow("gray up, Lanczos3", up(Lanczos3, Gray)),
      AVX2Row("RGB down, Lanczos3, AVX2", lanczos),
      AVX2Row("RGB up, Lanczos3, AVX2", up(Lanczos3, RGB)),
      ScalingRow("RGB down, nearest", down(Nearest, RGB)),
      {"Scaling",
       "RGB down, nearest, exact",
       {Ours(OurScaling(down(Nearest, RGB))), {"OpenCV", OpenCVExactNearest(down(Nearest, RGB)), &kCentres}}},

      matrix("matrix 3 x 3, narrow weights", narrow),
      matrix("matrix 3 x 3, wide weights", wide),
      matrix("matrix 15 x 15", Rough(15)),
      matrix("matrix 25 x 25", Rough(25)),
      {"Filters",
       "matrix 25 x 25, column times row",
       {Ours(OurMatrix(ColumnTimesRow(tent), photo)), {"OpenCV", OpenCVSeparableMatrix(tent, photo)}}},
      blur(1),
      blur(3),
      blur(10),
      blur(50),
      blur(127),

      {"Moves",
       "rotation by 10 degrees, new image",
       {Ours(OurRotation(10, photo)),
        {"Pillow", PillowRotation(10, photo), &kOnePass},
        {"OpenCV", OpenCVRotation(10, photo), &kOnePass}}},
      mirror("vertical mirror", false),
      mirror("horizontal mirror", true),
      {"Moves",
       "rows read, RGB to BGRA",
       {Ours(OurRowReads(RGB, BGRA, photo)), {"OpenCV", OpenCVRowReads(RGB, BGRA, photo), &kAlphaWritten}}},
      {"Moves",
       "rows read, BGRA to RGB",
       {Ours(OurRowReads(BGRA, RGB, photo)), {"OpenCV", OpenCVRowReads(BGRA, RGB, photo)}}},
      {"Moves",
       "rows written, RGB to BGRA",
       {Ours(OurRowWrites(RGB, BGRA, photo)), {"OpenCV", OpenCVRowWrites(RGB, BGRA, photo), &kAlphaWritten}}},
      {"Moves",
       "rows written, BGRA to RGB",
       {Ours(OurRowWrites(BGRA, RGB, photo)), {"OpenCV", OpenCVRowWrites(BGRA, RGB, photo)}}},
      {"Moves",
       "CopyPicture, RGB, new picture",
       {Ours(OurPictureCopy(photo)), {"OpenCV", OpenCVConversion(RGB, BGRA, photo, true)}}},
      {"Moves",
       "CopyPixels, RGB to BGRA",
       {Ours(OurPixelCopy(RGB, BGRA, photo)),
        {"OpenCV", OpenCVConversion(RGB, BGRA, photo, false), &kAlphaWritten},
        {"pixman", PixmanConversion(photo), &kAlphaWritten}}},

      {"Ours",
       "ScaleMT, RGB down, Lanczos3: one thread / two",
       {Ours(OurThreadedScaling(lanczos, 1)), Ours(OurThreadedScaling(lanczos, 2))},
       Clock::Wall},
      {"Ours",
       "Scale, RGB down, Lanczos3: baseline / this machine",
       {Ours(OurScaling(lanczos), "baseline"), Ours(OurScaling(lanczos))}},
      OwnRow("matrix 3 x 3" + toMemory, OurMatrix(narrow, photo, kFromFile), OurMatrix(narrow, photo)),
      OwnRow("matrix 3 x 3" + toFile, OurMatrix(narrow, photo, kInFiles), OurMatrix(narrow, photo)),
      OwnRow("Combine through a mask" + toMemory, OurBlend(photo, kFromFile), OurBlend(photo)),
      OwnRow("Combine through a mask" + toFile, OurBlend(photo, kInFiles), OurBlend(photo)),
      OwnRow("Scale, RGB down, Lanczos3" + toMemory, OurScaling(lanczos, kFromFile), OurScaling(lanczos)),
      OwnRow("Scale, RGB down, Lanczos3" + toFile, OurScaling(lanczos, kInFiles), OurScaling(lanczos)),
  };
}

}  // namespace zvk::peers
