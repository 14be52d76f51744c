#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "standalone/zvk/arguments/file_arguments.h"
#include "standalone/zvk/arguments/filter_forms.h"
#include "standalone/zvk/arguments/value_choice.h"
#include "standalone/zvk/arguments/written_values.h"
#include "standalone/zvk/commands/commands.h"
#include "standalone/zvk/help/footer.h"
#include "standalone/zvk/images/image_io.h"
#include "standalone/zvk/session/plugin_session.h"

namespace standalone {
namespace {

struct FilterRequest {
  std::string name;
  std::string input;
  std::string output;
  std::vector<std::string> words;
  bool listsFilters = false;
  std::optional<uint32_t> seed;
  Orient orient = Orient::Upright;
  uint32_t background = kWhite;
  PluginOptions plugin;
};

// A line for each form of each filter, or of the one that is named.
void ListFilters(const FilterRequest &request) {
  const PluginSession session(request.plugin);
  Forms filters = FiltersOf(session.Images());
  if (!request.name.empty()) filters = FormsNamed(filters, request.name);
  size_t width = 0;
  for (const MethodDeclaration *const filter : filters) width = std::max(width, filter->name.size());
  for (const MethodDeclaration *const filter : filters) {
    const std::string arguments = FormText(*filter);
    const std::string space(arguments.empty() ? 0 : width + 2 - filter->name.size(), ' ');
    std::printf("%s%s%s\n", filter->name.c_str(), space.c_str(), arguments.c_str());
  }
}

// All arguments of the form but the images, which are nil.
Arguments ReadArguments(const MethodDeclaration &form, const std::vector<GivenArgument> &given,
                        const std::vector<ConstantDeclaration> &constants) {
  Arguments arguments;
  for (const Parameter &parameter : form.parameters) {
    const GivenArgument *const argument = FindGiven(given, parameter.name);
    if (parameter.type.kind == TypeKind::Object) {
      arguments.emplace_back();
    } else if (argument != nullptr) {
      arguments.push_back(ReadValue(parameter, argument->text, constants));
    } else {
      arguments.push_back(FromLiteral(parameter.defaultValue.value()));
    }
  }
  return arguments;
}

// Like the source; with the same pixels if there is alpha, which a filter may leave as it is.
Value NewDest(const PluginSession &session, const Value &source) {
  Value dest = session.Images().New({source.Get("Width"), source.Get("Height"), source.Get("ImageFormat")});
  if (HasAlpha(source)) dest.Call("CopyPixels", {source});
  return dest;
}

// Fills in the images: those of the files that are given, with alpha if the source has it, and a dest like the source.
// A dest that may be left out is: its filter makes one itself, of a shape that need not be the source's.
void AddImages(const PluginSession &session, const FilterRequest &request, const MethodDeclaration &form,
               const std::vector<GivenArgument> &given, const Value &source, Arguments &arguments) {
  const bool hasAlpha = HasAlpha(source);
  for (size_t i = 0; i < arguments.size(); ++i) {
    const GivenArgument *const argument = FindGiven(given, form.parameters[i].name);
    const bool isImage = form.parameters[i].type.kind == TypeKind::Object;
    if (!isImage || argument == nullptr) continue;
    arguments[i] = hasAlpha ? LoadImageWithAlpha(session, argument->text, request.orient)
                            : LoadOpaqueImage(session, argument->text, request.background, request.orient);
  }
  if (HasDest(form) && !form.parameters[0].defaultValue) arguments[0] = NewDest(session, source);
}

// What a filter without a result is likely to have been refused for.
[[noreturn]] void FailOnRefusal(const FilterRequest &request, const MethodDeclaration &form,
                                const std::vector<GivenArgument> &given, const Value &source,
                                const Arguments &arguments) {
  const std::string problem = form.name + " refuses " + request.input;
  for (size_t i = HasDest(form) ? 1 : 0; i < arguments.size(); ++i) {
    const GivenArgument *const argument = FindGiven(given, form.parameters[i].name);
    const bool isImage = form.parameters[i].type.kind == TypeKind::Object;
    if (!isImage || argument == nullptr || SizeOf(arguments[i]) == SizeOf(source)) continue;
    throw std::runtime_error(problem + " of " + Text(SizeOf(source)) + " pixels with " + argument->text + " of " +
                             Text(SizeOf(arguments[i])) + "; take files of the same size");
  }
  throw std::runtime_error(problem + "; take other arguments, or a smaller picture if memory is short");
}

// The image that the filter returns, or the one that it has changed.
Value Filtered(const PluginSession &session, const FilterRequest &request) {
  const std::vector<GivenArgument> given = ReadGiven(request.words);
  const MethodDeclaration &form = ChooseForm(FormsNamed(FiltersOf(session.Images()), request.name), given);
  Arguments arguments = ReadArguments(form, given, session.Images().Constants());

  const Value source = LoadImage(session, request.input, request.orient);
  AddImages(session, request, form, given, source, arguments);
  const Value result = source.Call(form.name, arguments);
  const bool isDone = result.GetKind() == Value::Kind::Boolean ? result.AsBoolean() : !result.IsNil();
  if (!isDone) FailOnRefusal(request, form, given, source, arguments);
  return form.result.kind == TypeKind::Boolean ? source : result;
}

void Filter(const FilterRequest &request) {
  if (request.listsFilters) {
    ListFilters(request);
    return;
  }
  for (const auto &[name, value] :
       {std::pair{"NAME", &request.name}, std::pair{"IN", &request.input}, std::pair{"OUT", &request.output}}) {
    if (value->empty()) throw CLI::RequiredError(name);
  }
  RefuseUnknownExtension(request.output);
  const PluginSession session(request.plugin);
  // After the plug-in, which seeds them with the time when it is loaded.
  if (request.seed) std::srand(*request.seed);
  SaveImage(Filtered(session, request), request.output, request.background);
}

}  // namespace

void AddFilterCommand(CLI::App &program) {
  const auto request = std::make_shared<FilterRequest>();
  CLI::App &command = *program.add_subcommand("filter", "Apply a filter to an image file");
  NoteChoice(
      command.add_option("NAME", request->name, "The filter, in any case; 'zvk filter --list' tells which there are")
          ->type_name(""),
      Choice::Filters);
  AddInputArgument(command, request->input);
  AddOutputArgument(command, request->output);
  for (const char *name : {"IN", "OUT"}) command.get_option(name)->required(false);  // none is needed for a list
  NoteChoice(command
                 .add_option(
                     "NAME=VALUE", request->words,
                     "The filter's arguments, by their names in any case and in any\norder; those that --list shows in "
                     "brackets may be left out")
                 ->type_name(""),
             Choice::FilterArguments);
  command.add_flag("--list", request->listsFilters,
                   "Print all filters and their arguments, or those of the filter\nNAME, and exit");
  command
      .add_option("--seed", request->seed,
                  "Start the random numbers of filters that use them at this one,\n0 to 4294967295; the same N gives "
                  "the same picture [default: the\ntime]")
      ->check(CLI::Range(uint32_t{0}, std::numeric_limits<uint32_t>::max()))
      ->type_name("N");
  AddOrientOption(command, request->orient);
  AddBackgroundOption(command, request->background);
  AddPluginOptions(command, request->plugin);
  command.footer(
      HelpFooter("Values are written as --list tells:\n"
                 "  INTEGER              a whole number, or the name of a constant of the plug-in; its first\n"
                 "                       letters (matrix=Dither) get an answer that tells how it may go on\n"
                 "  INTEGER,INTEGER,...  such as 0,-1,0; nothing is an array without elements\n"
                 "  NUMBER               such as 2 or 0.75\n"
                 "  BOOLEAN              true or false\n"
                 "  #RRGGBB              a colour, such as #FF8000\n"
                 "  FILE                 an image file, whatever its name\n"
                 "Of several forms of a filter the names that are given decide.\n" +
                     std::string(kTransparencyHelp) +
                     "\n"
                     "Filters leave alpha alone or treat it as one more colour. A FILE is taken with alpha if IN has\n"
                     "transparent pixels, else without.",
                 {"zvk filter OilFilter photo.jpg oil.jpg levels=16 range=4",
                  "zvk filter GammaFilter photo.jpg bright.jpg gamma=1.8",
                  "zvk filter GammaFilter photo.jpg warm.jpg redGamma=1.3 greenGamma=1.1 blueGamma=0.9",
                  "zvk filter ApplyMatrix photo.jpg sharp.jpg MatrixDimension=3 matrix=0,-1,0,-1,5,-1,0,-1,0",
                  "zvk filter DitherFilter photo.jpg dots.png matrix=DitherOrdered8x8Matrix levels=4",
                  "zvk filter DiffuseFilter photo.jpg grain.jpg level=3 --seed 7",
                  "zvk filter BoxBlurFilter photo.jpg soft.png Radius=3",
                  "zvk filter UnsharpFilter photo.jpg crisp.jpg origpixels=soft.png Amount=0.3 Threshold=4"},
                 kOutWholeOrAsBefore));
  command.callback([request] { Filter(*request); });
}

}  // namespace standalone
