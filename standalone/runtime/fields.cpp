#include "standalone/runtime/fields.h"

#include <utility>

#include "standalone/runtime/names.h"
#include "standalone/runtime/objects.h"
#include "standalone/runtime/strings.h"

namespace standalone {

FieldKind KindOfField(std::string_view type) {
  static constexpr std::pair<std::string_view, FieldKind> kKinds[] = {
      {"integer", FieldKind::Integer}, {"int32", FieldKind::Integer},  {"uint32", FieldKind::Integer},
      {"color", FieldKind::Integer},   {"colour", FieldKind::Integer}, {"boolean", FieldKind::Boolean},
      {"string", FieldKind::String},   {"int8", FieldKind::Other},     {"uint8", FieldKind::Other},
      {"int16", FieldKind::Other},     {"uint16", FieldKind::Other},   {"int64", FieldKind::Other},
      {"uint64", FieldKind::Other},    {"single", FieldKind::Other},   {"double", FieldKind::Other},
      {"ptr", FieldKind::Other},       {"cstring", FieldKind::Other}};
  for (const auto &[name, kind] : kKinds) {
    if (NamesEqual(name, type)) return kind;
  }
  return FieldKind::Object;
}

void AssignObjectField(REALobject *field, REALobject value) {
  if (Object *const taken = LiveObject(value); taken != nullptr) taken->Lock();
  // Emptied or filled first: the end of the old object may look here.
  Object *const dropped = LiveObject(std::exchange(*field, value));
  if (dropped != nullptr) dropped->Unlock();
}

void AssignStringField(REALstring *field, REALstring value) {
  if (value != nullptr) String::From(value)->Lock();
  String *const dropped = String::From(std::exchange(*field, value));
  if (dropped != nullptr) dropped->Unlock();
}

}  // namespace standalone
