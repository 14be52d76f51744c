// Our own tasks, as a host program pays for them: handlers, objects, and results of the host's.
#pragma once

#include "bench/peers/contest.h"
#include "bench/peers/jobs.h"

namespace zvk::peers {

// Where an image is.
enum class Storage : uint8_t { Memory, File };
struct Storages {
  Storage source = Storage::Memory;
  Storage dest = Storage::Memory;
};

Preparation OurScaling(const Scaling &scaling, Storages storages = {});
Preparation OurThreadedScaling(const Scaling &scaling, int32_t threads);

// On RGB.
Preparation OurMatrix(const Matrix &matrix, Size size, Storages storages = {});
Preparation OurBoxBlur(int32_t radius, Size size);
// Into a new image.
Preparation OurRotation(double degrees, Size size);
// In place.
Preparation OurMirror(bool horizontal, Size size);
// Through a gray mask, in memory.
Preparation OurBlend(Size size, Storages storages = {});

// All rows of an image, each read into a new block, or written from the same one.
Preparation OurRowReads(Layout image, Layout rows, Size size);
Preparation OurRowWrites(Layout rows, Layout image, Size size);
// RGB into a new picture of a console host.
Preparation OurPictureCopy(Size size);
Preparation OurPixelCopy(Layout from, Layout to, Size size, Storages storages = {});

}  // namespace zvk::peers
