// Random calls over the class tables: every method and property, on images of all formats, views and kinds of storage,
// with arguments at and beyond their limits. Whatever they do, the process lives, nothing is written outside an image,
// and no reference is lost.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>

namespace standalone {

// Something that must not happen; the message says what, in which case, and how to repeat it.
class FuzzError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct FuzzOptions {
  uint64_t seed = 1;
  int64_t calls = 10'000;
  std::optional<int64_t> onlyCase = std::nullopt;  // runs this one case and no other
  std::ostream *trace = nullptr;                   // gets a line before each call
};

struct FuzzReport {
  int64_t calls = 0;
  int64_t cases = 0;
  int64_t exceptions = 0;                  // of the host, raised by calls
  std::map<std::string, int64_t> members;  // how often each was called
};

// Runs cases of up to 100 calls each, numbered from 0, until the calls are made; a case depends on nothing but its
// number and the seed. There must be a host with the plug-in in it, and bindings. Throws FuzzError. Where the process
// dies of a signal or of a sanitizer's finding, the case is told on the standard error stream first.
FuzzReport Fuzz(const FuzzOptions &options);

}  // namespace standalone
