#include <CLI/CLI.hpp>
#include <cstdio>
#include <iostream>
#include <memory>

#include "standalone/fuzz/fuzzer.h"
#include "standalone/zvk/commands/commands.h"
#include "standalone/zvk/help/footer.h"
#include "standalone/zvk/session/plugin_session.h"

namespace standalone {
namespace {

struct FuzzRequest {
  FuzzOptions options;
  bool isTraced = false;
  PluginOptions plugin;
};

void RunFuzz(FuzzRequest request) {
  const PluginSession session(request.plugin);
  if (request.isTraced) request.options.trace = &std::cout;
  const FuzzReport report = Fuzz(request.options);
  std::printf("%lld calls of %zu members in %lld cases, %lld host exceptions: nothing wrong\n",
              static_cast<long long>(report.calls), report.members.size(), static_cast<long long>(report.cases),
              static_cast<long long>(report.exceptions));
}

}  // namespace

void AddFuzzCommand(CLI::App &program) {
  const auto request = std::make_shared<FuzzRequest>();
  CLI::App &command = *program.add_subcommand("fuzz", "Call everything that the plug-in offers with random arguments");
  command.add_option("--calls", request->options.calls, "How many calls to make")
      ->type_name("N")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  command.add_option("--seed", request->options.seed, "Where the random numbers start")
      ->type_name("S")
      ->capture_default_str();
  command.add_option("--case", request->options.onlyCase, "Run only this case, of up to 100 calls")
      ->type_name("K")
      ->check(CLI::NonNegativeNumber);
  command.add_flag("--trace", request->isTraced, "Print each call before it is made");
  AddPluginOptions(command, request->plugin);
  command.footer(
      HelpFooter("The same seed makes the same calls. Whatever they are, no call may end the program, touch a byte\n"
                 "outside its images, or keep a reference. What is found is told with the case, to be repeated.",
                 {"zvk fuzz --calls 1000000 --seed 7", "zvk fuzz --seed 7 --case 112 --trace"},
                 {.done = "nothing wrong", .workFailed = "something was found"}));
  command.callback([request] { RunFuzz(*request); });
}

}  // namespace standalone
