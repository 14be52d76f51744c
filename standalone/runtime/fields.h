// Fields of a plug-in's record that the host reads and writes for it.
#pragma once

#include <cstdint>
#include <string_view>

#include "abi/host_layouts.h"

namespace standalone {

// What lies in a field of a declared type, by its shape.
enum class FieldKind : uint8_t { Integer, Boolean, String, Object, Other };

// The kind of a declared type (any case): "integer" and its 32-bit kin with "color", "boolean", "string"; other numbers
// and addresses are Other; all else names a class.
FieldKind KindOfField(std::string_view type);

// What the standard setter does with an object field: takes a reference to the value and gives back the one before.
void AssignObjectField(REALobject *field, REALobject value);
void AssignStringField(REALstring *field, REALstring value);

}  // namespace standalone
