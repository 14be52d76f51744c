#include "standalone/zvk/session/plugin_session.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <set>
#include <stdexcept>
#include <system_error>

#include "standalone/gd/gd_picture.h"
#include "standalone/zvk/session/messages.h"

namespace standalone {
namespace {

constexpr char kLibraryName[] = "libPictureZVK.so";
constexpr char kImageClass[] = "PictureZVK";
constexpr char kFactoryClass[] = "PictureFactoryZVK";

// Beside this program, as in a build, or where both have been installed.
std::string FindPlugin() {
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
  const std::string beside = (folder / kLibraryName).string();
  const std::string installed = (folder / ZVK_LIBRARY_FOLDER / kLibraryName).lexically_normal().string();
  for (const std::string &path : {beside, installed}) {
    if (std::filesystem::exists(path, error)) return path;
  }
  throw std::runtime_error("no plug-in at " + beside + " or " + installed +
                           "; build it, or name one with --plugin PATH");
}

// Loads the plug-in into the running host and gives its class of images.
const ClassBinding &LoadPlugin(Host &host, const std::string &wantedPath) {
  const std::string path = wantedPath.empty() ? FindPlugin() : wantedPath;
  try {
    host.Load(path);
  } catch (const HostError &error) {
    throw std::runtime_error(std::string(error.what()) + "; name a working plug-in with --plugin PATH");
  }
  for (const char *name : {kImageClass, kFactoryClass}) {
    if (host.Classes().Find(name) == nullptr) {
      throw std::runtime_error(path + " has no class " + name + "; name a working plug-in with --plugin PATH");
    }
  }
  return ClassNamed(kImageClass);
}

bool HasPrefix(const ConstantDeclaration &constant, std::string_view prefix) {
  return NamesEqual(std::string_view(constant.name).substr(0, prefix.size()), prefix);
}

int32_t NumberOf(const ConstantDeclaration &constant) { return FromLiteral(constant.value).AsInteger(); }

}  // namespace

void AddPluginOptions(CLI::App &command, PluginOptions &options) {
  command
      .add_option("--plugin", options.path,
                  "The plug-in to use [default: " + std::string(kLibraryName) +
                      " beside this\nprogram, else in " ZVK_LIBRARY_FOLDER " from there]")
      ->type_name("PATH");
  command.add_flag("--leaks", options.reportsLeaks, "Tell at the end which references were not given back");
}

PluginSession::PluginSession(const PluginOptions &options)
    : images_(LoadPlugin(host_, options.path)), reportsLeaks_(options.reportsLeaks) {
  UseGdPictures(host_);
}

PluginSession::~PluginSession() {
  ClassNamed(kFactoryClass).Call("SetFactory", {nullptr});
  if (!reportsLeaks_) return;
  const std::string left = Describe(host_.Leaks());
  std::printf("references not given back: %s\n", left.empty() ? "none" : left.c_str());
  for (const std::string &misdeed : host_.Misdeeds()) std::printf("misdeed: %s\n", misdeed.c_str());
}

std::vector<std::string> PluginSession::Choices(std::string_view prefix) const {
  std::vector<std::string> names;
  std::set<int32_t> listed = {0};
  for (const ConstantDeclaration &constant : images_.Constants()) {
    if (!HasPrefix(constant, prefix)) continue;
    if (listed.insert(NumberOf(constant)).second) names.push_back(constant.name.substr(prefix.size()));
  }
  return names;
}

int32_t PluginSession::Choose(std::string_view what, std::string_view prefix, std::string_view name) const {
  for (const ConstantDeclaration &constant : images_.Constants()) {
    if (!HasPrefix(constant, prefix) || NumberOf(constant) == 0) continue;
    if (NamesEqual(std::string_view(constant.name).substr(prefix.size()), name)) return NumberOf(constant);
  }
  std::string names;
  for (const std::string &choice : Choices(prefix)) AddToList(names, ", ", choice);
  throw UsageError("unknown " + std::string(what) + " '" + std::string(name) + "'; choose one of " + names);
}

void PluginSession::RunWithProgress(const std::string &what, const ProgressLine::Clock &clock,
                                    const std::function<void(const MoveProgress &move)> &work) {
  ProgressLine progress(STDERR_FILENO, what, clock);
  struct Watch {
    Host &host;
    ~Watch() { host.onYield = nullptr; }
  } const watch{host_};
  host_.onYield = [&progress] { progress.Update(); };
  work(host_.onYield);
}

}  // namespace standalone
