#include "scaling/scale_engine.h"

#include <iterator>

#include "scaling/scale_filters.h"
#include "scaling/scale_frame.h"

namespace zvk::scaling {

uint8_t trianglePictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height) {
  return ScalePicture(kTriangleFilter, dest, {}, source, temp, width, height);
}

uint8_t boxPictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height) {
  return ScalePicture(kBoxFilter, dest, {}, source, temp, width, height);
}

uint8_t lanczos3PictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height) {
  return ScalePicture(kLanczos3Filter, dest, {}, source, temp, width, height);
}

uint8_t lanczos8PictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height) {
  return ScalePicture(kLanczos8Filter, dest, {}, source, temp, width, height);
}

uint8_t mitchellPictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height) {
  return ScalePicture(kMitchellFilter, dest, {}, source, temp, width, height);
}

uint8_t poly3PictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height) {
  return ScalePicture(kPoly3Filter, dest, {}, source, temp, width, height);
}

uint8_t cubicPictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height) {
  return ScalePicture(kCubicFilter, dest, {}, source, temp, width, height);
}

uint8_t PictureScaleZVK(REALobject dest, REALobject source, REALobject temp, int32_t mode, int32_t width,
                        int32_t height) {
  constexpr decltype(&trianglePictureScale) kModes[] = {
      trianglePictureScale, boxPictureScale,   lanczos3PictureScale, lanczos8PictureScale,
      mitchellPictureScale, poly3PictureScale, cubicPictureScale};
  if (dest == nullptr || source == nullptr || height < 1 || width < 1) return false;
  if (mode < 1 || mode > static_cast<int32_t>(std::size(kModes))) return false;
  return kModes[mode - 1](dest, source, temp, width, height);
}

}  // namespace zvk::scaling
