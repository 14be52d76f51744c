#include "standalone/runtime/host.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

#include "standalone/runtime/own_classes.h"

namespace standalone {
namespace {

uint8_t InRuntime() { return HostState::Current().Options().inRuntime ? 1 : 0; }

double GetRBVersion() { return HostState::Current().Version(); }

void YieldToRB() {
  // A copy, as the code that runs may put another in its place.
  const std::function<void()> otherCode = Host::Current().onYield;
  if (otherCode) otherCode();
}

// What makes the storage of new pictures in the form of the host's kind.
HostState::StorageFactory OwnPictureFactory(const HostOptions &options) {
  const bool fenced = options.fenced;
  if (options.kind == HostKind::Console) {
    return [fenced](int32_t width, int32_t height) { return std::make_unique<GDStorage>(width, height, fenced); };
  }
  return [layout = options.newPictureLayout, fenced](int32_t width, int32_t height) {
    return std::make_unique<BitmapStorage>(width, height, layout, fenced);
  };
}

}  // namespace

Host::Host(HostOptions options) : HostState(std::move(options), classes_) {
  DefineOwnClasses(classes_, Options().missingClasses);
  SetPictureFactory(OwnPictureFactory(Options()));
  const bool isDesktop = Options().kind == HostKind::Desktop;
  const std::string application = Options().applicationClass.value_or(isDesktop ? "Application" : "ConsoleApplication");
  if (!application.empty()) classes_.Define(application, nullptr, nullptr);

  for (const auto &entries :
       {ObjectEntries(), ClassEntries(), PropertyEntries(), StringEntries(), MemoryBlockEntries(), ArrayEntries(),
        FolderItemEntries(), ExceptionEntries(), PictureEntries(), GraphicsEntries()}) {
    AddEntries(entries);
  }
  AddEntries({MakeEntry<"RegisterPluginVersion", RegisterPluginVersion>(), MakeEntry<"REALinRuntime", InRuntime>(),
              MakeEntry<"REALYieldToRB", YieldToRB>()});
  if (Options().version) AddEntries({MakeEntry<"REALGetRBVersion", GetRBVersion>()});
  if (isDesktop) AddEntries(BitmapContextEntries());
}

// An exception that nobody has taken ends while its class is still there.
Host::~Host() { SetPending(nullptr); }

// Hosts alone have a state.
Host &Host::Current() { return static_cast<Host &>(HostState::Current()); }

void Host::AddEntries(const std::vector<Entry> &entries) {
  for (const Entry &entry : entries) {
    EntryState &state = entries_[std::string(entry.name)];
    state.own = state.offered = entry.address;
    state.calls = entry.calls;
    *state.calls = 0;
  }
}

void *Host::Resolve(const char *name) {
  if (!IsRunning() || name == nullptr) return nullptr;
  Host &host = Current();
  EntryState &state = host.entries_[name];
  ++state.questions;
  return host.IsWithheld(name) ? nullptr : state.offered;
}

void Host::RegisterPluginVersion(int32_t version) { Current().pluginVersion_ = version; }

namespace {

// True if the library is in this process already, under whatever name of its file.
bool IsLoaded(const std::string &path) {
  void *const library = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (library != nullptr) dlclose(library);
  return library != nullptr;
}

// Opens a library of that path, which is gone again before this returns.
void *OpenPrivateCopy(const std::string &path) {
  std::string copy = (std::filesystem::temp_directory_path() / "plugin-XXXXXX").string();
  const int descriptor = mkstemp(copy.data());
  if (descriptor < 0) throw HostError("cannot load the plug-in " + path + ": no place for a private copy");
  close(descriptor);
  std::error_code error;
  std::filesystem::copy_file(path, copy, std::filesystem::copy_options::overwrite_existing, error);
  void *const library = error ? nullptr : dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
  unlink(copy.c_str());
  return library;
}

}  // namespace

void Host::Load(const std::string &path) {
  // A bare name would be looked for among the system's libraries.
  const std::string place = path.find('/') == std::string::npos ? "./" + path : path;
  const bool isLoaded = IsLoaded(place);
  dlerror();
  void *const library = isLoaded ? OpenPrivateCopy(place) : dlopen(place.c_str(), RTLD_NOW | RTLD_LOCAL);
  void *const entry = library == nullptr ? nullptr : dlsym(library, "REALPluginMain");
  if (entry == nullptr) {
    const char *const error = dlerror();
    const std::string reason = error == nullptr ? "it cannot be read" : error;  // gone after the next call
    if (library != nullptr) dlclose(library);
    throw HostError("cannot load the plug-in " + path + ": " + reason);
  }
  try {
    Start(reinterpret_cast<PluginMain>(entry));
  } catch (const HostError &error) {
    throw HostError("cannot load the plug-in " + path + ": " + error.what());
  }
}

void Host::Start(PluginMain pluginMain) {
  const size_t before = Misdeeds().size();
  {
    const PluginCall call;
    pluginMain(&Resolve);
  }
  if (Misdeeds().size() > before) throw HostError(Misdeeds()[before]);
}

void Host::SetEntry(const std::string &name, void *address) { entries_[name].offered = address; }

void *Host::OwnEntry(std::string_view name) const {
  const auto found = entries_.find(name);
  return found == entries_.end() ? nullptr : found->second.own;
}

int64_t Host::Questions(std::string_view name) const {
  const auto found = entries_.find(name);
  return found == entries_.end() ? 0 : found->second.questions;
}

int64_t Host::Calls(std::string_view name) const {
  const auto found = entries_.find(name);
  return found == entries_.end() || found->second.calls == nullptr ? 0 : *found->second.calls;
}

std::optional<RaisedException> Host::TakePendingException() { return TakeRaisedException(); }

void Host::Raise(Object *exception) { RaiseException(exception); }

HostClock &Host::SetClock(HostClock clock) {
  if (!HasClock()) AddEntries(ClockEntries());
  return PutClock(clock);
}

std::unique_ptr<PictureStorage> Host::NewPictureStorage(int32_t width, int32_t height) const {
  return PictureFactory()(width, height);
}

std::vector<Leak> Host::Leaks() const { return baseline_.Since(); }

}  // namespace standalone
