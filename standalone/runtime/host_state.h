// The ground of the host: what its parts (strings, objects, pictures and so on) ask the running host for, so that none
// of them has to know the whole host. Of the parts themselves it knows their names only.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "standalone/runtime/bitmap_layout.h"

namespace standalone {

class ClassRegistry;
class ExceptionObject;
class PictureStorage;

// A host that cannot be started, or a plug-in that cannot be loaded; the message is one line, which names the path of
// the plug-in.
class HostError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class HostKind : uint8_t { Console, Desktop };

struct HostOptions {
  HostKind kind = HostKind::Console;
  // Year with a fraction; empty for a host that does not report one.
  std::optional<double> version = 2019.011;
  // False for a development environment that only looks at the plug-in.
  bool inRuntime = true;
  // Entries that the resolver denies.
  std::set<std::string> withheld = {};
  // Classes of the host's own that it lacks.
  std::set<std::string> missingClasses = {};
  // The class of the running application; empty text for none. By default "Application" on a desktop, else
  // "ConsoleApplication".
  std::optional<std::string> applicationClass = std::nullopt;
  // Whether a Graphics has its drawing method. By default it has on a desktop and has not on a console.
  std::optional<bool> drawsPictures = std::nullopt;
  // The form of a desktop's new pictures.
  BitmapLayout newPictureLayout = {};
  // New memory blocks and pictures lie between pages that nobody may touch.
  bool fenced = false;
};

// A platform's clocks, standing still unless a test moves them.
struct HostClock {
  uint32_t ticks = 0;  // of 1/60 second
  uint64_t nanoseconds = 0;
};

class HostState {
 public:
  // Makes the pictures that plug-ins ask for; sizes are 1 or more.
  using StorageFactory = std::function<std::unique_ptr<PictureStorage>(int32_t width, int32_t height)>;

  HostState(const HostState &) = delete;
  HostState &operator=(const HostState &) = delete;

  // That of the running host. There must be one.
  static HostState &Current();
  static bool IsRunning();

  const HostOptions &Options() const { return options_; }
  // The version, 0 if the host does not report one.
  double Version() const { return options_.version.value_or(0); }
  bool DrawsPictures() const { return options_.drawsPictures.value_or(options_.kind == HostKind::Desktop); }

  // Entries by name. A withheld one is denied from now on (plug-ins keep what they have found), Offer ends that. The
  // methods that are found by declaration are withheld by name: "LenB", "DrawPicture".
  void Withhold(const std::string &name) { options_.withheld.insert(name); }
  void Offer(const std::string &name) { options_.withheld.erase(name); }
  bool IsWithheld(const std::string &name) const { return options_.withheld.contains(name); }

  ClassRegistry &Classes() const { return classes_; }

  // What makes the storage of new pictures. Another one makes all new pictures from then on.
  const StorageFactory &PictureFactory() const { return pictureFactory_; }
  void SetPictureFactory(StorageFactory factory) { pictureFactory_ = std::move(factory); }

  // The pending exception. It holds a reference, which it gives back by itself.
  using PendingException = std::shared_ptr<ExceptionObject>;
  bool HasPendingException() const { return static_cast<bool>(pending_); }
  // Puts an exception in place of the one that is pending, if there is one.
  void SetPending(PendingException exception) { pending_ = std::move(exception); }
  // The pending exception, which is pending no longer; empty if there is none.
  PendingException TakePending() { return std::exchange(pending_, nullptr); }

  // The platform's clocks. There must be some.
  const HostClock &Clock() const { return *clock_; }

  // Things that a plug-in did and must not do (a reference given back too often, say), one line each.
  const std::vector<std::string> &Misdeeds() const { return misdeeds_; }
  void AddMisdeed(std::string line) { misdeeds_.push_back(std::move(line)); }
  void ClearMisdeeds() { misdeeds_.clear(); }

 protected:
  // Becomes the state of the running host for as long as it lives. Throws HostError if there is a host already. The
  // classes may be made later than this, but before anybody uses them.
  HostState(HostOptions options, ClassRegistry &classes);
  ~HostState();

  bool HasClock() const { return clock_.has_value(); }
  // Puts the clocks at a time; the reference is good for the host's life.
  HostClock &PutClock(HostClock clock) { return clock_.emplace(clock); }

 private:
  HostOptions options_;
  ClassRegistry &classes_;
  StorageFactory pictureFactory_;
  PendingException pending_;
  std::optional<HostClock> clock_;
  std::vector<std::string> misdeeds_;
};

}  // namespace standalone
