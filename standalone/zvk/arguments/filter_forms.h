// Filters as the command line sees them: which methods of the image class they are, how their arguments are written by
// name, and which of a filter's overloads is meant.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "standalone/binding/class_binding.h"
#include "standalone/binding/declaration.h"

namespace standalone {

// The overloads of one or of all filters. They belong to the class.
using Forms = std::vector<const MethodDeclaration *>;

// An argument as given: "levels=4".
struct GivenArgument {
  std::string name;
  std::string text;
};

// True if the method is a filter of images of that class: its first argument is an image and called dest or
// origpixels, all others are images or can be written, and it returns an image or whether it has changed the one it was
// called on.
bool IsFilter(const MethodDeclaration &method, const std::string &imageClass);

// True if the filter's first argument is the image to write to, which nobody gives by name.
bool HasDest(const MethodDeclaration &filter);

// The arguments that are given by name: all but dest.
std::span<const Parameter> NamedParameters(const MethodDeclaration &filter);

// How the arguments are written, those that may be left out in brackets and with their defaults: "Radius=NUMBER
// [Vertical=true]".
std::string FormText(const MethodDeclaration &filter);

// All filters of a class, in the order of its table.
Forms FiltersOf(const ClassBinding &images);

// The forms of the filter of that name, in any case. Throws UsageError that lists the filters there are.
Forms FormsNamed(const Forms &filters, const std::string &name);

// Reads words such as "levels=4". Throws UsageError on another word, and on a name that comes twice.
std::vector<GivenArgument> ReadGiven(const std::vector<std::string> &words);

// The argument of that name, in any case; nil if it is not given.
const GivenArgument *FindGiven(const std::vector<GivenArgument> &given, const std::string &name);

// The form, of one filter's, that takes all the given arguments and lacks none; of several the shortest. Throws
// UsageError that names what is unknown, does not go together or is missing.
const MethodDeclaration &ChooseForm(const Forms &forms, const std::vector<GivenArgument> &given);

}  // namespace standalone
