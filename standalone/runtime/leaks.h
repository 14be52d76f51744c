// What is left over: living objects and strings, and pictures whose description is still locked.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace standalone {

struct Leak {
  std::string what;  // a class name, "String", "description lock" or "string data"
  int32_t count = 0;

  bool operator==(const Leak &) const = default;
};

// What was alive at one moment and is not to be counted later.
class LeakBaseline {
 public:
  LeakBaseline();

  // What is alive and was not at that moment, sorted by name.
  std::vector<Leak> Since() const;

 private:
  uint64_t objects_;
  uint64_t strings_;
  int32_t descriptionLocks_;
  int32_t stringData_;
};

// One line: "2 PictureZVK, 1 String"; empty for none.
std::string Describe(const std::vector<Leak> &leaks);

}  // namespace standalone
