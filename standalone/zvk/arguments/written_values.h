// Values of the host language as a command line writes them: levels=4 matrix=0,-1,0 Vertical=false Black=#102030.
#pragma once

#include <string>
#include <vector>

#include "standalone/binding/declaration.h"
#include "standalone/binding/value.h"

namespace standalone {

// True if values of the type can be written: numbers, booleans, colours, texts, arrays of integers.
bool IsWritable(const Type &type);

// What stands for a value of the type in a form to be filled in: "INTEGER", "NUMBER", "#RRGGBB"; "FILE" for an object.
std::string Placeholder(const Type &type);

// How a default is written; FILE for nil, which is an object.
std::string Written(const Literal &literal);

// The value that the text writes, of the very kind that the parameter's writable type asks for. Integers and numbers
// may be names of the constants, in any case. Throws UsageError that names the parameter and what can be written.
Value ReadValue(const Parameter &parameter, const std::string &text, const std::vector<ConstantDeclaration> &constants);

}  // namespace standalone
