#include "scaling/scale_threads.h"

#include <iterator>

#include "image/image_record.h"
#include "scaling/scale_engine.h"
#include "scaling/scale_filters.h"
#include "scaling/scale_frame.h"

namespace zvk::scaling {

uint8_t trianglePictureScaleMT(REALobject dest, int32_t threads, REALobject source, REALobject temp, int32_t width,
                               int32_t height) {
  return ScalePicture(kTriangleFilter, dest, threads, source, temp, width, height);
}

uint8_t boxPictureScaleMT(REALobject dest, int32_t threads, REALobject source, REALobject temp, int32_t width,
                          int32_t height) {
  return ScalePicture(kBoxFilter, dest, threads, source, temp, width, height);
}

uint8_t lanczos3PictureScaleMT(REALobject dest, int32_t threads, REALobject source, REALobject temp, int32_t width,
                               int32_t height) {
  return ScalePicture(kLanczos3Filter, dest, threads, source, temp, width, height);
}

uint8_t lanczos8PictureScaleMT(REALobject dest, int32_t threads, REALobject source, REALobject temp, int32_t width,
                               int32_t height) {
  return ScalePicture(kLanczos8Filter, dest, threads, source, temp, width, height);
}

uint8_t mitchellPictureScaleMT(REALobject dest, int32_t threads, REALobject source, REALobject temp, int32_t width,
                               int32_t height) {
  return ScalePicture(kMitchellFilter, dest, threads, source, temp, width, height);
}

uint8_t poly3PictureScaleMT(REALobject dest, int32_t threads, REALobject source, REALobject temp, int32_t width,
                            int32_t height) {
  return ScalePicture(kPoly3Filter, dest, threads, source, temp, width, height);
}

uint8_t cubicPictureScaleMT(REALobject dest, int32_t threads, REALobject source, REALobject temp, int32_t width,
                            int32_t height) {
  return ScalePicture(kCubicFilter, dest, threads, source, temp, width, height);
}

uint8_t PictureScaleZVKMT(REALobject dest, int32_t threads, REALobject source, REALobject temp, int32_t mode,
                          int32_t width, int32_t height) {
  constexpr decltype(&trianglePictureScaleMT) kModes[] = {
      trianglePictureScaleMT, boxPictureScaleMT,   lanczos3PictureScaleMT, lanczos8PictureScaleMT,
      mitchellPictureScaleMT, poly3PictureScaleMT, cubicPictureScaleMT};
  if (dest == nullptr || source == nullptr || height < 1 || width < 1) return false;
  // The one mapped block of a file cannot be shared.
  if (RecordOf(source)->IsMapping || RecordOf(dest)->IsMapping) {
    return PictureScaleZVK(dest, source, temp, mode, width, height);
  }
  if (mode < 1 || mode > static_cast<int32_t>(std::size(kModes))) return false;
  return kModes[mode - 1](dest, threads, source, temp, width, height);
}

}  // namespace zvk::scaling
