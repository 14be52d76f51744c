#include "standalone/runtime/own_classes.h"

#include <utility>

#include "standalone/runtime/exceptions.h"
#include "standalone/runtime/folder_item.h"
#include "standalone/runtime/memory_block.h"

namespace standalone {

void DefineOwnClasses(ClassRegistry &classes, const std::set<std::string> &missing) {
  const auto add = [&](const char *name, const Class *super, Class::Maker maker) -> const Class * {
    return missing.contains(name) ? super : &classes.Define(name, super, std::move(maker));
  };
  const auto makeException = [](const Class &type) { return new ExceptionObject(type); };
  const Class *const exception = add("RuntimeException", nullptr, makeException);
  for (const char *const name :
       {"OutOfBoundsException", "NilObjectException", "OutOfMemoryException", "UnsupportedOperationException"}) {
    add(name, exception, makeException);
  }
  add("MemoryBlock", nullptr, [](const Class &) { return MemoryBlock::Make(0); });
  add("FolderItem", nullptr, [](const Class &type) { return new FolderItem(type); });
  add("Integer()", nullptr, nullptr);
  add("Picture", nullptr, nullptr);
  add("Graphics", nullptr, nullptr);
}

}  // namespace standalone
