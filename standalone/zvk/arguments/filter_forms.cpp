#include "standalone/zvk/arguments/filter_forms.h"

#include <algorithm>

#include "standalone/runtime/names.h"
#include "standalone/zvk/arguments/written_values.h"
#include "standalone/zvk/session/messages.h"

namespace standalone {
namespace {

constexpr char kDest[] = "dest";
constexpr char kOriginal[] = "origpixels";

std::string FormOf(const Parameter &parameter) { return parameter.name + "=" + Placeholder(parameter.type); }

std::string TextOf(const Forms &forms) {
  std::string text;
  for (const MethodDeclaration *const form : forms) {
    const std::string arguments = FormText(*form);
    AddToList(text, " or ", arguments.empty() ? "none" : arguments);
  }
  return text;
}

bool Takes(const MethodDeclaration &form, const GivenArgument &argument) {
  const std::span<const Parameter> parameters = NamedParameters(form);
  return std::any_of(parameters.begin(), parameters.end(),
                     [&](const Parameter &parameter) { return NamesEqual(parameter.name, argument.name); });
}

// The parameters without a default that are not given.
std::vector<Parameter> Missing(const MethodDeclaration &form, const std::vector<GivenArgument> &given) {
  std::vector<Parameter> missing;
  for (const Parameter &parameter : NamedParameters(form)) {
    if (!parameter.defaultValue && FindGiven(given, parameter.name) == nullptr) missing.push_back(parameter);
  }
  return missing;
}

// Throws UsageError if no form of the filter has the argument, whatever else is given.
void RefuseUnknown(const Forms &forms, const GivenArgument &argument) {
  const auto takes = [&](const MethodDeclaration *form) { return Takes(*form, argument); };
  if (std::any_of(forms.begin(), forms.end(), takes)) return;
  const MethodDeclaration &form = *forms.front();
  if (HasDest(form) && NamesEqual(argument.name, kDest)) {
    throw UsageError(form.name + " writes to OUT; leave out " + argument.name);
  }
  throw UsageError(form.name + " has no argument '" + argument.name + "'; it takes " + TextOf(forms));
}

}  // namespace

bool IsFilter(const MethodDeclaration &method, const std::string &imageClass) {
  const auto isImage = [&](const Type &type) {
    return type.kind == TypeKind::Object && !type.isArray && NamesEqual(type.className, imageClass);
  };
  const std::vector<Parameter> &parameters = method.parameters;
  return !parameters.empty() && isImage(parameters[0].type) &&
         (NamesEqual(parameters[0].name, kDest) || NamesEqual(parameters[0].name, kOriginal)) &&
         std::all_of(
             parameters.begin(), parameters.end(),
             [&](const Parameter &parameter) { return isImage(parameter.type) || IsWritable(parameter.type); }) &&
         (isImage(method.result) || method.result.kind == TypeKind::Boolean);
}

bool HasDest(const MethodDeclaration &filter) { return NamesEqual(filter.parameters[0].name, kDest); }

std::span<const Parameter> NamedParameters(const MethodDeclaration &filter) {
  return std::span(filter.parameters).subspan(HasDest(filter) ? 1 : 0);
}

std::string FormText(const MethodDeclaration &filter) {
  std::string text;
  for (const Parameter &parameter : NamedParameters(filter)) {
    AddToList(text, " ",
              parameter.defaultValue ? "[" + parameter.name + "=" + Written(*parameter.defaultValue) + "]"
                                     : FormOf(parameter));
  }
  return text;
}

Forms FiltersOf(const ClassBinding &images) {
  Forms filters;
  for (const BoundMethod &method : images.Methods()) {
    const bool isPlain = !method.isShared && method.setter == nullptr;
    if (isPlain && IsFilter(method.declaration, images.Name())) filters.push_back(&method.declaration);
  }
  return filters;
}

Forms FormsNamed(const Forms &filters, const std::string &name) {
  Forms forms;
  std::string names;
  const MethodDeclaration *last = nullptr;
  for (const MethodDeclaration *const filter : filters) {
    if (NamesEqual(filter->name, name)) forms.push_back(filter);
    if (last == nullptr || !NamesEqual(last->name, filter->name)) AddToList(names, ", ", filter->name);
    last = filter;
  }
  if (forms.empty()) throw UsageError("there is no filter '" + name + "'; choose one of " + names);
  return forms;
}

std::vector<GivenArgument> ReadGiven(const std::vector<std::string> &words) {
  std::vector<GivenArgument> given;
  for (const std::string &word : words) {
    const size_t equals = word.find('=');
    if (equals == std::string::npos || equals == 0) {
      throw UsageError("'" + word + "' is out of place; behind OUT come arguments as NAME=VALUE");
    }
    const std::string name = word.substr(0, equals);
    if (FindGiven(given, name) != nullptr) throw UsageError("'" + name + "' is given twice; give it once");
    given.push_back({name, word.substr(equals + 1)});
  }
  return given;
}

const GivenArgument *FindGiven(const std::vector<GivenArgument> &given, const std::string &name) {
  for (const GivenArgument &argument : given) {
    if (NamesEqual(argument.name, name)) return &argument;
  }
  return nullptr;
}

const MethodDeclaration &ChooseForm(const Forms &forms, const std::vector<GivenArgument> &given) {
  for (const GivenArgument &argument : given) RefuseUnknown(forms, argument);

  const MethodDeclaration *best = nullptr;
  std::vector<Parameter> missing;
  for (const MethodDeclaration *const form : forms) {
    const auto takes = [&](const GivenArgument &argument) { return Takes(*form, argument); };
    if (!std::all_of(given.begin(), given.end(), takes)) continue;
    std::vector<Parameter> lacking = Missing(*form, given);
    const bool isBetter = best == nullptr || lacking.size() < missing.size() ||
                          (lacking.size() == missing.size() && form->parameters.size() < best->parameters.size());
    if (!isBetter) continue;
    best = form;
    missing = std::move(lacking);
  }

  const std::string &name = forms.front()->name;
  if (best == nullptr) {
    std::string together;
    for (const GivenArgument &argument : given) AddToList(together, ", ", argument.name);
    throw UsageError(name + " does not take these together: " + together + "; it takes " + TextOf(forms));
  }
  if (!missing.empty()) {
    std::string lacking;
    for (const Parameter &parameter : missing) AddToList(lacking, " ", FormOf(parameter));
    throw UsageError(name + " is not told enough; add " + lacking);
  }
  return *best;
}

}  // namespace standalone
