// The stand-alone host itself: loads plug-ins, answers their resolver, and keeps what is theirs in common.
// There is one host at a time in a process, since plug-ins know it by one plain function.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "abi/host_layouts.h"
#include "standalone/runtime/class_registry.h"
#include "standalone/runtime/entries.h"
#include "standalone/runtime/exceptions.h"
#include "standalone/runtime/leaks.h"
#include "standalone/runtime/objects.h"
#include "standalone/runtime/picture_storage.h"
#include "standalone/runtime/standard_input.h"

namespace standalone {

// A plug-in that cannot be loaded; the message is one line that names its path.
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

class Host {
 public:
  // Makes the pictures that plug-ins ask for; sizes are 1 or more.
  using StorageFactory = std::function<std::unique_ptr<PictureStorage>(int32_t width, int32_t height)>;
  using PluginMain = void (*)(REALresolver);

  // Starts the host: moves the standard input away from descriptor 0. Throws HostError if there is a host already.
  explicit Host(HostOptions options = {});
  Host(const Host &) = delete;
  Host &operator=(const Host &) = delete;
  // Ends the host. Objects that are still alive stay as they are.
  ~Host();

  // The running host. There must be one.
  static Host &Current();
  static bool IsRunning();

  // What plug-ins get: an entry's address, or nil. An exact name is wanted.
  static void *Resolve(const char *name);

  const HostOptions &Options() const { return options_; }
  // The version, 0 if the host does not report one.
  double Version() const { return options_.version.value_or(0); }

  // Loads a library, for good, and lets it register its classes. One that is in this process already is loaded as a
  // private copy, with a state of its own. Throws HostError.
  void Load(const std::string &path);
  // The same for a plug-in that is linked into this program.
  void Start(PluginMain pluginMain);
  // The table version that the plug-in has announced; 0 before.
  int32_t PluginVersion() const { return pluginVersion_; }

  ClassRegistry &Classes() { return classes_; }
  const ClassRegistry &Classes() const { return classes_; }

  // Entries. A withheld one is denied from now on (plug-ins keep what they have found), Offer ends that. The methods
  // that are found by declaration are withheld by name: "LenB", "DrawPicture". SetEntry puts a function in an entry's
  // place, or adds an entry; nil denies it.
  void Withhold(const std::string &name);
  void Offer(const std::string &name);
  bool IsWithheld(const std::string &name) const { return options_.withheld.contains(name); }
  void SetEntry(const std::string &name, void *address);
  template <class Function>
  void SetEntry(const std::string &name, Function *function) {
    SetEntry(name, reinterpret_cast<void *>(function));
  }
  // The host's own function of that name, whatever was set or withheld; nil if there is none. For hooks that pass on.
  void *OwnEntry(std::string_view name) const;
  // How often the resolver was asked for a name, and how often the host's own function was called, since the start.
  int64_t Questions(std::string_view name) const;
  int64_t Calls(std::string_view name) const;

  // The pending exception, which is pending no longer.
  std::optional<RaisedException> TakePendingException();
  bool HasPendingException() const { return static_cast<bool>(pending_); }
  // Marks an exception as pending, in place of one that is; takes a reference.
  void Raise(Object *exception);

  // Runs in the middle of each yield, as other code of a program does.
  std::function<void()> onYield;
  // Offers the platform's clocks to plug-ins, standing at `clock`; the reference is good for the host's life.
  HostClock &SetClock(HostClock clock);
  const HostClock &Clock() const { return *clock_; }

  // The storage of a new picture in the host's form. A replaced factory makes all new pictures from then on.
  std::unique_ptr<PictureStorage> NewPictureStorage(int32_t width, int32_t height) const;
  void SetPictureFactory(StorageFactory factory) { pictureFactory_ = std::move(factory); }
  bool DrawsPictures() const { return options_.drawsPictures.value_or(options_.kind == HostKind::Desktop); }

  // Things that a plug-in did and must not do (a reference given back too often, say), one line each.
  const std::vector<std::string> &Misdeeds() const { return misdeeds_; }
  void AddMisdeed(std::string line) { misdeeds_.push_back(std::move(line)); }
  void ClearMisdeeds() { misdeeds_.clear(); }

  // What is alive beyond what was alive when the host started, and what is still locked.
  std::vector<Leak> Leaks() const;

  // The program's standard input, wherever it is now.
  int StandardInputDescriptor() const { return standardInput_.Descriptor(); }

 private:
  struct EntryState {
    void *own = nullptr;
    void *offered = nullptr;
    int64_t *calls = nullptr;
    int64_t questions = 0;
  };

  void AddEntries(const std::vector<Entry> &entries);
  static void RegisterPluginVersion(int32_t version);

  HostOptions options_;
  StandardInput standardInput_;
  ClassRegistry classes_;
  std::map<std::string, EntryState, std::less<>> entries_;
  std::optional<HostClock> clock_;
  StorageFactory pictureFactory_;
  Owned<ExceptionObject> pending_;
  std::vector<std::string> misdeeds_;
  int32_t pluginVersion_ = 0;
  LeakBaseline baseline_;
};

}  // namespace standalone
