#include "standalone/zvk/arguments/mirror_direction.h"

#include "standalone/zvk/session/messages.h"

namespace standalone {
namespace {

constexpr struct {
  const char *direction;
  const char *method;
} kMirrors[] = {{"h", "HMirror"}, {"v", "VMirror"}};

}  // namespace

const char *MirrorMethod(const std::string &direction) {
  for (const auto &mirror : kMirrors) {
    if (direction == mirror.direction) return mirror.method;
  }
  throw UsageError("direction '" + direction + "' is not understood; write h to exchange left and right, or v to " +
                   "exchange top and bottom");
}

std::vector<std::string> MirrorDirections() {
  std::vector<std::string> directions;
  for (const auto &mirror : kMirrors) directions.emplace_back(mirror.direction);
  return directions;
}

}  // namespace standalone
