// The stand-alone host itself, the roof over its parts: loads plug-ins, answers their resolver, and keeps what is
// theirs in common. There is one host at a time in a process, since plug-ins know it by one plain function.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "abi/host_layouts.h"
#include "standalone/runtime/class_registry.h"
#include "standalone/runtime/entries.h"
#include "standalone/runtime/exceptions.h"
#include "standalone/runtime/host_state.h"
#include "standalone/runtime/leaks.h"
#include "standalone/runtime/objects.h"
#include "standalone/runtime/picture_storage.h"
#include "standalone/runtime/standard_input.h"

namespace standalone {

class Host : public HostState {
 public:
  using PluginMain = void (*)(REALresolver);

  // Starts the host: moves the standard input away from descriptor 0. Throws HostError if there is a host already.
  explicit Host(HostOptions options = {});
  // Ends the host. Objects that are still alive stay as they are.
  ~Host();

  // The running host. There must be one.
  static Host &Current();

  // What plug-ins get: an entry's address, or nil. An exact name is wanted.
  static void *Resolve(const char *name);

  // Loads a library, for good, and lets it register its classes. One that is in this process already is loaded as a
  // private copy, with a state of its own. Throws HostError.
  void Load(const std::string &path);
  // The same for a plug-in that is linked into this program.
  void Start(PluginMain pluginMain);
  // The table version that the plug-in has announced; 0 before.
  int32_t PluginVersion() const { return pluginVersion_; }

  // Puts a function in an entry's place, or adds an entry; nil denies it.
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
  // Marks an exception as pending, in place of one that is; takes a reference.
  void Raise(Object *exception);

  // Runs in the middle of each yield, as other code of a program does.
  std::function<void()> onYield;
  // Offers the platform's clocks to plug-ins, standing at `clock`; the reference is good for the host's life.
  HostClock &SetClock(HostClock clock);

  // The storage of a new picture, as the picture factory makes it: in the host's form, unless the factory is another.
  std::unique_ptr<PictureStorage> NewPictureStorage(int32_t width, int32_t height) const;

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

  StandardInput standardInput_;
  ClassRegistry classes_;
  std::map<std::string, EntryState, std::less<>> entries_;
  int32_t pluginVersion_ = 0;
  LeakBaseline baseline_;
};

}  // namespace standalone
