#include "standalone/runtime/leaks.h"

#include <map>

#include "standalone/runtime/classes.h"
#include "standalone/runtime/objects.h"
#include "standalone/runtime/picture.h"
#include "standalone/runtime/strings.h"

namespace standalone {

LeakBaseline::LeakBaseline()
    : objects_(ObjectsMade()),
      strings_(StringsMade()),
      descriptionLocks_(DescriptionLocksHeld()),
      stringData_(StringDataLent()) {}

std::vector<Leak> LeakBaseline::Since() const {
  std::map<std::string, int32_t> counts;
  for (const Object *object : LiveObjects(objects_)) ++counts[object->Type().Name()];
  counts["String"] = static_cast<int32_t>(LiveStrings(strings_).size());
  counts["description lock"] = DescriptionLocksHeld() - descriptionLocks_;
  counts["string data"] = StringDataLent() - stringData_;
  std::vector<Leak> result;
  for (const auto &[what, count] : counts) {
    if (count > 0) result.push_back({what, count});
  }
  return result;
}

std::string Describe(const std::vector<Leak> &leaks) {
  std::string line;
  for (const Leak &leak : leaks) line += (line.empty() ? "" : ", ") + std::to_string(leak.count) + " " + leak.what;
  return line;
}

}  // namespace standalone
