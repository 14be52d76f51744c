#include "standalone/zvk/images/scale_job.h"

#include <stdexcept>

namespace standalone {

int32_t ResultFormat(const PluginSession &session, const ScaleJob &job, bool hasAlpha) {
  if (job.format) return *job.format;
  return session.Images().Constant(hasAlpha ? "ImageFormatRGBA" : "ImageFormatRGB").AsInteger();
}

bool CanBeScaledInto(const Value &image) { return image.Get("IsRGB").AsBoolean() || image.Get("IsGray").AsBoolean(); }

void RefuseUnsuitable(const Value &result, const ScaleJob &job) {
  if (!CanBeScaledInto(result)) {
    throw std::runtime_error("an RGB picture cannot be scaled into " + job.formatName +
                             "; take a format of red, green and blue or of gray, such as RGB or G");
  }
  if (job.isFast && result.Get("BitsPerComponent").AsInteger() == 16) {
    throw std::runtime_error("--fast cannot scale into " + job.formatName +
                             "; take 8 bits, such as G, or leave it out");
  }
}

HighByteOfGray::HighByteOfGray(const Value &result)
    : result_(result), isWide_(result.Get("BitsPerComponent").AsInteger() == 16) {
  if (isWide_) result_.Set("GrayOffset", 1);
}

HighByteOfGray::~HighByteOfGray() {
  if (isWide_) result_.Set("GrayOffset", 0);
}

bool ScaleWhole(const Value &source, const Value &temp, const Value &result, const ScaleJob &job) {
  const Value width = result.Get("Width");
  const Value height = result.Get("Height");
  if (job.isFast) return result.Call("ScaleFast", {source, width, height}).AsBoolean();
  if (job.threads) {
    return result.Call("ScaleMT", {*job.threads, source, temp, job.filter, width, height}).AsBoolean();
  }
  return result.Call("Scale", {source, temp, job.filter, width, height}).AsBoolean();
}

}  // namespace standalone
