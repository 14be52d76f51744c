#include "bench/peers/opencv_peer.h"

#include <cmath>
#include <memory>
#include <numbers>
#include <numeric>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

namespace zvk::peers {
namespace {

int TypeOf(Layout layout) { return layout == Layout::Gray16 ? CV_16UC1 : CV_MAKETYPE(CV_8U, Channels(layout)); }

View ViewOf(const cv::Mat &image, Layout layout) {
  return PackedView(image.data, image.step, {image.cols, image.rows}, layout);
}

// Without alpha, for copies that leave alpha alone in ours.
View ColoursOf(const cv::Mat &image, Layout layout) {
  View view = ViewOf(image, layout);
  view.channels.resize(3);
  return view;
}

cv::Mat Empty(Size size, Layout layout) {
  cv::setNumThreads(1);
  return {size.height, size.width, TypeOf(layout)};
}

cv::Mat WithTestPicture(Size size, Layout layout) {
  cv::Mat image = Empty(size, layout);
  DrawTestPicture(ViewOf(image, layout));
  return image;
}

// From one RGB image into another, which is there.
Preparation OnRGB(Size size, std::function<void(const cv::Mat &source, cv::Mat &dest)> work) {
  return [=] {
    const cv::Mat source = WithTestPicture(size, Layout::RGB), dest = Empty(size, Layout::RGB);
    return TimedTask(
        [=] {
          cv::Mat written = dest;
          work(source, written);
        },
        [=] { return ViewOf(dest, Layout::RGB); });
  };
}

int ConversionOf(Layout from, Layout to) {
  if (from == Layout::RGB && to == Layout::BGRA) return cv::COLOR_RGB2BGRA;
  if (from == Layout::BGRA && to == Layout::RGB) return cv::COLOR_BGRA2RGB;
  throw std::logic_error("no such conversion");
}

// How OpenCV scales with a filter, or with what comes nearest to it.
struct Interpolation {
  cv::InterpolationFlags flag;
  const Note *note;
};

std::optional<Interpolation> InterpolationOf(const Scaling &scaling) {
  switch (scaling.filter) {
    case Filter::Lanczos3:
      return Interpolation{cv::INTER_LANCZOS4, scaling.Shrinks() ? &kNoAntialias : &kOtherKernel};
    case Filter::Triangle:
      return Interpolation{cv::INTER_LINEAR, scaling.Shrinks() ? &kNoAntialias : nullptr};
    case Filter::Box:
      return Interpolation{cv::INTER_AREA, nullptr};
    case Filter::Nearest:
      return Interpolation{cv::INTER_NEAREST, nullptr};
    default:
      return std::nullopt;
  }
}

Preparation Resizing(const Scaling &scaling, cv::InterpolationFlags flag) {
  return [=] {
    const cv::Mat source = WithTestPicture(scaling.from, scaling.layout), dest = Empty(scaling.to, scaling.layout);
    return TimedTask([=] { cv::resize(source, dest, dest.size(), 0, 0, flag); },
                     [=] { return ViewOf(dest, scaling.layout); });
  };
}

}  // namespace

std::string OpenCVVersion() { return CV_VERSION; }

std::optional<Contestant> OpenCVScaling(const Scaling &scaling) {
  const auto interpolation = InterpolationOf(scaling);
  if (!interpolation) return std::nullopt;
  return Contestant{"OpenCV", Resizing(scaling, interpolation->flag), interpolation->note};
}

Preparation OpenCVExactNearest(const Scaling &scaling) { return Resizing(scaling, cv::INTER_NEAREST_EXACT); }

Preparation OpenCVMatrix(const Matrix &matrix, Size size) {
  cv::Mat kernel(matrix.dimension, matrix.dimension, CV_32F);
  for (int i = 0; i < matrix.dimension * matrix.dimension; ++i) {
    kernel.at<float>(i / matrix.dimension, i % matrix.dimension) =
        static_cast<float>(matrix.weights[static_cast<size_t>(i)] * matrix.scale);
  }
  return OnRGB(size, [=](const cv::Mat &source, cv::Mat &dest) {
    cv::filter2D(source, dest, -1, kernel, {-1, -1}, 0, cv::BORDER_REPLICATE);
  });
}

Preparation OpenCVSeparableMatrix(const std::vector<int32_t> &weights, Size size) {
  const auto sum = static_cast<float>(std::accumulate(weights.begin(), weights.end(), 0));
  std::vector<float> line;
  for (const int32_t weight : weights) line.push_back(static_cast<float>(weight) / sum);
  return OnRGB(size, [=](const cv::Mat &source, cv::Mat &dest) {
    cv::sepFilter2D(source, dest, -1, line, line, {-1, -1}, 0, cv::BORDER_REPLICATE);
  });
}

Preparation OpenCVBoxBlur(int32_t radius, Size size) {
  return OnRGB(size, [=](const cv::Mat &source, cv::Mat &dest) {
    cv::blur(source, dest, {2 * radius + 1, 2 * radius + 1}, {-1, -1}, cv::BORDER_REPLICATE);
  });
}

Preparation OpenCVRotation(double degrees, Size size) {
  return [=] {
    const cv::Mat source = WithTestPicture(size, Layout::RGB);
    const double angle = degrees * std::numbers::pi / 180, cosine = std::cos(angle), sine = std::sin(angle);
    const cv::Size turned(static_cast<int>(size.width * cosine + size.height * sine) + 1,
                          static_cast<int>(size.height * cosine + size.width * sine) + 1);
    cv::Mat turn = cv::getRotationMatrix2D({size.width / 2.0F, size.height / 2.0F}, degrees, 1);
    turn.at<double>(0, 2) += (turned.width - size.width) / 2.0;
    turn.at<double>(1, 2) += (turned.height - size.height) / 2.0;
    const auto result = std::make_shared<cv::Mat>();
    return TimedTask(
        [=] {
          result->release();
          cv::warpAffine(source, *result, turn, turned, cv::INTER_LINEAR, cv::BORDER_CONSTANT);
        },
        [=] { return ViewOf(*result, Layout::RGB); });
  };
}

Preparation OpenCVMirror(bool horizontal, Size size) {
  return [=] {
    const cv::Mat image = WithTestPicture(size, Layout::RGB);
    return TimedTask([=] { cv::flip(image, image, horizontal ? 1 : 0); }, [=] { return ViewOf(image, Layout::RGB); });
  };
}

Preparation OpenCVRowReads(Layout image, Layout rows, Size size) {
  return [=] {
    const cv::Mat source = WithTestPicture(size, image);
    const auto last = std::make_shared<cv::Mat>();
    return TimedTask(
        [=] {
          for (int y = 0; y < size.height; ++y) {
            last->release();
            cv::cvtColor(source.row(y), *last, ConversionOf(image, rows));
          }
        },
        [=] { return ColoursOf(*last, rows); });
  };
}

Preparation OpenCVRowWrites(Layout rows, Layout image, Size size) {
  return [=] {
    const cv::Mat line = WithTestPicture({size.width, 1}, rows), dest = Empty(size, image);
    return TimedTask(
        [=] {
          for (int y = 0; y < size.height; ++y) cv::cvtColor(line, dest.row(y), ConversionOf(rows, image));
        },
        [=] { return ColoursOf(dest, image); });
  };
}

Preparation OpenCVConversion(Layout from, Layout to, Size size, bool isNew) {
  return [=] {
    const cv::Mat source = WithTestPicture(size, from);
    const auto dest = std::make_shared<cv::Mat>(Empty(size, to));
    return TimedTask(
        [=] {
          if (isNew) dest->release();
          cv::cvtColor(source, *dest, ConversionOf(from, to));
        },
        [=] { return ColoursOf(*dest, to); });
  };
}

}  // namespace zvk::peers
