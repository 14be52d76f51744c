#include "standalone/zvk/help/class_members.h"

#include "standalone/lua/host_classes.h"
#include "standalone/runtime/host_state.h"

namespace standalone {

std::vector<ClassMember> MembersOf(const ClassBinding &type) {
  std::vector<ClassMember> members;
  for (const BoundProperty &property : type.Properties()) {
    members.push_back(
        {"Properties", property.registered->name,
         property.registered->name + " as " + property.type.Text() + (property.IsReadOnly() ? " (read-only)" : "")});
  }
  for (const BoundMethod &method : type.Methods()) {
    members.push_back({method.isShared ? "Shared methods" : "Methods", method.declaration.name,
                       method.text + (method.setter != nullptr ? " (can be assigned to)" : "")});
  }
  for (const RegisteredEvent &event : type.Type().Definition()->events) {
    members.push_back({"Events", ParseMethod(event.declaration).name, event.declaration});
  }
  for (const RegisteredConstant &constant : type.Type().Definition()->constants) {
    members.push_back({"Constants", ParseConstant(constant.declaration).name, constant.declaration});
  }
  return members;
}

std::vector<const ClassBinding *> ScriptClasses() {
  DescribeHostClasses(HostState::Current());
  return RegisteredClassesAnd({"Picture", "Graphics", "MemoryBlock", "FolderItem"});
}

std::vector<std::string> MemberNames() {
  std::vector<std::string> names;
  for (const ClassBinding *const type : ScriptClasses()) {
    names.push_back(type->Name());
    for (const ClassMember &member : MembersOf(*type)) names.push_back(member.name);
  }
  return names;
}

}  // namespace standalone
