#include "standalone/runtime/host.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

namespace standalone {
namespace {

Host *current = nullptr;

// Throws if there is a host already, before anything of the new one exists.
HostOptions Claimed(HostOptions options) {
  if (current != nullptr) throw HostError("there is a host in this process already");
  return options;
}

uint8_t InRuntime() { return Host::Current().Options().inRuntime ? 1 : 0; }

double GetRBVersion() { return Host::Current().Version(); }

void YieldToRB() {
  // A copy, as the code that runs may put another in its place.
  const std::function<void()> otherCode = Host::Current().onYield;
  if (otherCode) otherCode();
}

}  // namespace

Host::Host(HostOptions options) : options_(Claimed(std::move(options))), classes_(options_.missingClasses) {
  const bool isDesktop = options_.kind == HostKind::Desktop;
  const std::string application = options_.applicationClass.value_or(isDesktop ? "Application" : "ConsoleApplication");
  if (!application.empty()) classes_.Define(application, nullptr, nullptr);

  for (const auto &entries :
       {ObjectEntries(), ClassEntries(), PropertyEntries(), StringEntries(), MemoryBlockEntries(), ArrayEntries(),
        FolderItemEntries(), ExceptionEntries(), PictureEntries(), GraphicsEntries()}) {
    AddEntries(entries);
  }
  AddEntries({MakeEntry<"RegisterPluginVersion", RegisterPluginVersion>(), MakeEntry<"REALinRuntime", InRuntime>(),
              MakeEntry<"REALYieldToRB", YieldToRB>()});
  if (options_.version) AddEntries({MakeEntry<"REALGetRBVersion", GetRBVersion>()});
  if (isDesktop) AddEntries(BitmapContextEntries());
  current = this;
}

Host::~Host() {
  pending_.Reset();
  current = nullptr;
}

Host &Host::Current() { return *current; }

bool Host::IsRunning() { return current != nullptr; }

void Host::AddEntries(const std::vector<Entry> &entries) {
  for (const Entry &entry : entries) {
    EntryState &state = entries_[std::string(entry.name)];
    state.own = state.offered = entry.address;
    state.calls = entry.calls;
    *state.calls = 0;
  }
}

void *Host::Resolve(const char *name) {
  if (current == nullptr || name == nullptr) return nullptr;
  EntryState &state = current->entries_[name];
  ++state.questions;
  return current->IsWithheld(name) ? nullptr : state.offered;
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
  const size_t before = misdeeds_.size();
  {
    const PluginCall call;
    pluginMain(&Resolve);
  }
  if (misdeeds_.size() > before) throw HostError(misdeeds_[before]);
}

void Host::Withhold(const std::string &name) { options_.withheld.insert(name); }

void Host::Offer(const std::string &name) { options_.withheld.erase(name); }

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

std::optional<RaisedException> Host::TakePendingException() {
  const Owned<ExceptionObject> taken = std::exchange(pending_, {});
  if (!taken) return std::nullopt;
  return RaisedException{taken->Type().Name(), taken->Message() == nullptr ? "" : taken->Message()->Text(),
                         taken->ErrorNumber()};
}

void Host::Raise(Object *exception) {
  auto *const raised = dynamic_cast<ExceptionObject *>(exception);
  if (raised == nullptr) {
    AddMisdeed("something was raised that is no exception");
    return;
  }
  pending_ = Owned<ExceptionObject>::Share(raised);
}

HostClock &Host::SetClock(HostClock clock) {
  if (!clock_) AddEntries(ClockEntries());
  return clock_.emplace(clock);
}

std::unique_ptr<PictureStorage> Host::NewPictureStorage(int32_t width, int32_t height) const {
  if (pictureFactory_) return pictureFactory_(width, height);
  if (options_.kind == HostKind::Console) return std::make_unique<GDStorage>(width, height, options_.fenced);
  return std::make_unique<BitmapStorage>(width, height, options_.newPictureLayout, options_.fenced);
}

std::vector<Leak> Host::Leaks() const { return baseline_.Since(); }

}  // namespace standalone
