// A stand-alone host with the plug-in running in it, for the length of one command. Everything that a command does to
// an image goes through the plug-in's class tables from here.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/binding/class_binding.h"
#include "standalone/runtime/host.h"
#include "standalone/zvk/session/progress.h"

namespace CLI {
class App;
}

namespace standalone {

// What every command that uses the plug-in can be told.
struct PluginOptions {
  std::string path = {};  // empty: the plug-in beside this program, else the installed one
  bool reportsLeaks = false;
};

// Adds --plugin and --leaks to a command; `options` must live as long as the command.
void AddPluginOptions(CLI::App &command, PluginOptions &options);

// Values of a session must be gone before it. At its end it takes the factory from the plug-in and, if asked to, tells
// on the standard output what was not given back.
class PluginSession {
 public:
  // Starts a console host whose pictures are images of the GD library, and loads the plug-in. Throws
  // std::runtime_error if there is none.
  explicit PluginSession(const PluginOptions &options);
  PluginSession(const PluginSession &) = delete;
  PluginSession &operator=(const PluginSession &) = delete;
  ~PluginSession();

  // The class of images.
  const ClassBinding &Images() const { return images_; }

  // What the image class's constants PREFIXname are called without the prefix, in their order; one name for each number
  // but 0, which is that of no choice.
  std::vector<std::string> Choices(std::string_view prefix) const;

  // The number of the image class's constant PREFIXname, in any case. `what` says in the message what the name is to
  // stand for. Throws UsageError that lists the names there are.
  int32_t Choose(std::string_view what, std::string_view prefix, std::string_view name) const;

  // Does the work, with a progress line on the standard error stream that goes by the clock and moves whenever an image
  // yields to the host, or the work itself calls its argument.
  using MoveProgress = std::function<void()>;
  void RunWithProgress(const std::string &what, const ProgressLine::Clock &clock,
                       const std::function<void(const MoveProgress &move)> &work);

 private:
  Host host_;
  Bindings bindings_;
  const ClassBinding &images_;
  bool reportsLeaks_;
};

}  // namespace standalone
