// OpenCV, on one thread.
#pragma once

#include <optional>

#include "bench/peers/contest.h"
#include "bench/peers/jobs.h"

namespace zvk::peers {

std::string OpenCVVersion();

// Nothing if it has no such filter.
std::optional<Contestant> OpenCVScaling(const Scaling &scaling);
// To the pixel nearest to the centre.
Preparation OpenCVExactNearest(const Scaling &scaling);

// The tasks of ours.h on an RGB image.
Preparation OpenCVMatrix(const Matrix &matrix, Size size);
Preparation OpenCVSeparableMatrix(const std::vector<int32_t> &weights, Size size);
Preparation OpenCVBoxBlur(int32_t radius, Size size);
Preparation OpenCVRotation(double degrees, Size size);
Preparation OpenCVMirror(bool horizontal, Size size);

// The tasks of ours.h that change the layout.
Preparation OpenCVRowReads(Layout image, Layout rows, Size size);
Preparation OpenCVRowWrites(Layout rows, Layout image, Size size);
// Into a new image, or into one that is there.
Preparation OpenCVConversion(Layout from, Layout to, Size size, bool isNew);

}  // namespace zvk::peers
