#include "standalone/runtime/arrays.h"

#include <utility>

#include "standalone/runtime/class_registry.h"
#include "standalone/runtime/entries.h"
#include "standalone/runtime/host_state.h"

namespace standalone {

IntegerArray *IntegerArray::Make(std::vector<int32_t> values) {
  return new IntegerArray(HostState::Current().Classes().Get("Integer()"), std::move(values));
}

IntegerArray *IntegerArray::From(REALarray handle) {
  return ObjectAs<IntegerArray>(reinterpret_cast<REALobject>(handle));
}

namespace {

int32_t RuntimeUBound(REALarray handle) {
  const IntegerArray *const array = IntegerArray::From(handle);
  return array == nullptr ? -1 : static_cast<int32_t>(array->Values().size()) - 1;
}

// Zero outside the array.
int32_t RuntimeDirectReadIntArray(REALarray handle, int32_t index) {
  const IntegerArray *const array = IntegerArray::From(handle);
  const auto position = static_cast<size_t>(index);
  return array == nullptr || index < 0 || position >= array->Values().size() ? 0 : array->Values()[position];
}

}  // namespace

std::vector<Entry> ArrayEntries() {
  return {MakeEntry<"RuntimeUBound", RuntimeUBound>(),
          MakeEntry<"RuntimeDirectReadIntArray", RuntimeDirectReadIntArray>()};
}

}  // namespace standalone
