// What there is to call: the classes that a script can use, and their members.
#pragma once

#include <string>
#include <vector>

#include "standalone/binding/class_binding.h"

namespace standalone {

// One line of a class: what kind of member, its name, and its declaration.
struct ClassMember {
  const char *heading;
  std::string name;
  std::string text;
};

// All members of a class, kind by kind.
std::vector<ClassMember> MembersOf(const ClassBinding &type);

// The plug-in's classes, then those of the host's own that scripts use. To be called once in a session: it gives the
// latter their members.
std::vector<const ClassBinding *> ScriptClasses();

// The names of these classes and of their members, to be asked for in place of the classes.
std::vector<std::string> MemberNames();

}  // namespace standalone
