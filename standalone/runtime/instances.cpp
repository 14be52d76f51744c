#include "standalone/runtime/instances.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

#include "standalone/runtime/fields.h"
#include "standalone/runtime/standard_input.h"

namespace standalone {
namespace {

constexpr std::align_val_t kAlignment{16};

using LifeHandler = void (*)(REALobject);

void Call(void *handler, REALobject instance) {
  if (handler == nullptr) return;
  const PluginCall call;
  reinterpret_cast<LifeHandler>(handler)(instance);
}

// The classes of an instance that have tables, from its own up.
std::vector<const Class *> ClassesFromBottom(const Class &type) {
  std::vector<const Class *> result;
  for (const Class *one = &type; one != nullptr; one = one->Super()) {
    if (one->Definition() != nullptr) result.push_back(one);
  }
  return result;
}

void GiveBackFields(Instance &instance, const Class &type) {
  for (const RegisteredProperty &property : type.Definition()->properties) {
    // A field that only the plug-in writes is the plug-in's to give back.
    if (property.getter != REALstandardAccessor || property.setter != REALstandardAccessor) continue;
    void *const field = instance.Field(type, property);
    switch (KindOfField(property.type)) {
      case FieldKind::Object:
        AssignObjectField(static_cast<REALobject *>(field), nullptr);
        break;
      case FieldKind::String:
        AssignStringField(static_cast<REALstring *>(field), nullptr);
        break;
      default:
        break;
    }
  }
}

}  // namespace

static_assert(sizeof(Instance) <= kFirstDataOffset);

Instance *Instance::Make(const Class &type) {
  const size_t size = std::max(kFirstDataOffset, type.DataEnd());
  void *const memory = ::operator new(size, kAlignment);
  auto *const made = new (memory) Instance(type);
  std::memset(static_cast<std::byte *>(memory) + sizeof(Instance), 0, size - sizeof(Instance));
  const std::vector<const Class *> classes = ClassesFromBottom(type);
  for (auto one = classes.rbegin(); one != classes.rend(); ++one) {
    Call((*one)->Definition()->constructor, made->Handle());
  }
  return made;
}

void Instance::operator delete(void *memory) { ::operator delete(memory, kAlignment); }

std::byte *Instance::Data(const Class &type) { return reinterpret_cast<std::byte *>(this) + type.DataOffset(); }

void Instance::Ending() {
  for (const Class *type : ClassesFromBottom(Type())) {
    Call(type->Definition()->destructor, Handle());
    GiveBackFields(*this, *type);
  }
}

}  // namespace standalone
