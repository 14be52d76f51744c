#include "standalone/binding/class_binding.h"

#include <cstring>
#include <utility>

#include "standalone/runtime/host_state.h"
#include "standalone/runtime/properties.h"

namespace standalone {
namespace {

constexpr std::string_view kConstructor = "Constructor";

// What a call hands over besides its declared arguments.
const Type kInstanceType = {TypeKind::Object};
const Type kParamType = {TypeKind::Integer};
const Type kNoResult = {};

std::string Quoted(std::string_view name) { return "\"" + std::string(name) + "\""; }

std::string ListOf(const Arguments &arguments) {
  std::string list;
  for (const Value &argument : arguments) list += (list.empty() ? "" : ", ") + argument.KindText();
  return "(" + list + ")";
}

std::vector<Type> TypesOf(const MethodDeclaration &declaration) {
  std::vector<Type> types;
  for (const Parameter &parameter : declaration.parameters) types.push_back(parameter.type);
  return types;
}

BoundMethod ReadMethod(const RegisteredMethod &registered, bool isShared) {
  BoundMethod method = {registered.declaration,
                        ParseMethod(registered.declaration),
                        registered.flags,
                        isShared,
                        registered.function,
                        registered.setter,
                        {},
                        {}};
  for (const Parameter &parameter : method.declaration.parameters) {
    if (parameter.defaultValue && ConversionCost(FromLiteral(*parameter.defaultValue), parameter.type) < 0) {
      throw DeclarationError("the default of " + Quoted(parameter.name) + " is no " + parameter.type.Text() + " in " +
                             Quoted(method.text));
    }
  }
  std::vector<Type> types = TypesOf(method.declaration);
  if (!isShared) types.insert(types.begin(), kInstanceType);
  method.shape = std::make_unique<CallShape>(types, method.declaration.result);
  if (method.setter != nullptr) {
    types.push_back(method.declaration.result);
    method.setterShape = std::make_unique<CallShape>(types, kNoResult);
  }
  return method;
}

// How well the arguments fit: the sum of what the conversions cost, and less of two equal ones if fewer defaults are
// needed. Empty if they do not fit.
std::optional<int> CostOfCall(const BoundMethod &method, const Arguments &arguments) {
  constexpr int kCostOfConversion = 64;  // more than the defaults of any declaration
  const std::vector<Parameter> &parameters = method.declaration.parameters;
  if (arguments.size() > parameters.size()) return std::nullopt;
  int cost = 0;
  for (size_t i = 0; i < parameters.size(); ++i) {
    if (i >= arguments.size()) {
      if (!parameters[i].defaultValue) return std::nullopt;
      ++cost;
      continue;
    }
    const int conversion = ConversionCost(arguments[i], parameters[i].type);
    if (conversion < 0) return std::nullopt;
    cost += conversion * kCostOfConversion;
  }
  return cost;
}

// Calls the method, or its setter if a value is assigned. The arguments fit.
Value Invoke(const BoundMethod &method, Object *instance, Arguments arguments, const Value *assigned) {
  const std::vector<Parameter> &parameters = method.declaration.parameters;
  std::vector<RawValue> raw;
  // Whoever calls holds the instance only by a variable that the call may change.
  const Owned<Object> kept = Owned<Object>::Share(instance);
  if (!method.isShared) {
    raw.emplace_back();
    raw.back().address = kept.Handle();
  }
  for (size_t i = arguments.size(); i < parameters.size(); ++i) {
    arguments.push_back(FromLiteral(parameters[i].defaultValue.value()));
  }
  for (size_t i = 0; i < parameters.size(); ++i) raw.push_back(ToRaw(arguments[i], parameters[i].type));
  if (assigned != nullptr) {
    raw.push_back(ToRaw(*assigned, method.declaration.result));
    method.setterShape->Call(method.setter, raw);
    Bindings::Current().ThrowPending();
    return nullptr;
  }
  const Value result = FromRaw(method.shape->Call(method.function, raw), method.declaration.result, Reference::Given);
  Bindings::Current().ThrowPending();
  return result;
}

Value ReadField(const void *field, const Type &type) {
  RawValue raw;
  std::memcpy(static_cast<void *>(&raw), field, SizeInMemory(type));
  return FromRaw(raw, type, Reference::Lent);
}

void WriteField(void *field, const Type &type, const Value &value) {
  const RawValue raw = ToRaw(value, type);
  if (type.kind == TypeKind::Object) {
    AssignObjectField(static_cast<REALobject *>(field), static_cast<REALobject>(raw.address));
  } else if (type.kind == TypeKind::String) {
    AssignStringField(static_cast<REALstring *>(field), static_cast<REALstring>(raw.address));
  } else {
    std::memcpy(field, &raw, SizeInMemory(type));
  }
}

// Properties of the host's own classes have no table; the object itself tells them.
std::optional<Value> GetOwnProperty(Object &object, std::string_view name) {
  int32_t integer = 0;
  if (object.GetInteger(name, &integer)) return integer;
  bool boolean = false;
  if (object.GetBoolean(name, &boolean)) return boolean;
  String *text = nullptr;
  if (object.GetText(name, &text)) return Owned<String>::Share(text);
  return std::nullopt;
}

bool SetOwnProperty(Object &object, std::string_view name, const Value &value) {
  if (value.GetKind() == Value::Kind::String) return object.SetText(name, String::From(value.AsString()));
  return ConversionCost(value, {TypeKind::Integer}) >= 0 && object.SetInteger(name, value.AsInteger());
}

Object &ObjectOf(const Value &value, std::string_view member) {
  Object *const object = value.IsNil() ? nullptr : value.AsObject();
  if (object == nullptr) throw BindingError("nil has no " + Quoted(member));
  return *object;
}

Bindings *current = nullptr;

}  // namespace

ClassBinding::ClassBinding(const Class &type) : class_(&type) {
  const RegisteredClass *const definition = type.Definition();
  if (definition == nullptr) return;
  AddMethods(definition->methods, false);
  AddMethods(definition->sharedMethods, true);
  for (const RegisteredProperty &property : definition->properties) {
    properties_.push_back({&property, ParseType(property.type)});
  }
  for (const RegisteredConstant &constant : definition->constants) {
    constants_.push_back(ParseConstant(constant.declaration));
  }
  for (const RegisteredEvent &event : definition->events) events_.push_back(ParseMethod(event.declaration));
}

void ClassBinding::AddMethods(const std::vector<RegisteredMethod> &methods, bool areShared) {
  for (const RegisteredMethod &method : methods) methods_.push_back(ReadMethod(method, areShared));
}

const ClassBinding *ClassBinding::Super() const {
  return class_->Super() == nullptr ? nullptr : &ClassNamed(class_->Super()->Name());
}

// The overloads of the nearest class that has any.
std::vector<const BoundMethod *> ClassBinding::FindMethods(std::string_view name, const Wanted &isWanted) const {
  std::vector<const BoundMethod *> found;
  for (const ClassBinding *type = this; type != nullptr && found.empty(); type = type->Super()) {
    for (const BoundMethod &method : type->methods_) {
      if (NamesEqual(method.declaration.name, name) && isWanted(method)) found.push_back(&method);
    }
  }
  return found;
}

const BoundMethod &ClassBinding::Choose(const std::vector<const BoundMethod *> &candidates, std::string_view name,
                                        const Arguments &arguments, const Value *assigned) const {
  const BoundMethod *best = nullptr;
  int bestCost = 0;
  for (const BoundMethod *const method : candidates) {
    if (assigned != nullptr && ConversionCost(*assigned, method->declaration.result) < 0) continue;
    const std::optional<int> cost = CostOfCall(*method, arguments);
    if (cost && (best == nullptr || *cost < bestCost)) {
      best = method;
      bestCost = *cost;
    }
  }
  if (best != nullptr) return *best;
  std::string message = Name() + "." + std::string(name) + " does not take " + ListOf(arguments);
  if (assigned != nullptr) message += " = " + assigned->KindText();
  message += "; there " + std::string(candidates.size() == 1 ? "is" : "are");
  for (const BoundMethod *const method : candidates) message += "\n  " + method->text;
  throw BindingError(message);
}

Value ClassBinding::NewWithoutConstructor() const {
  Value instance = Owned<Object>::Adopt(HostState::Current().Classes().NewInstance(Name()));
  Bindings::Current().ThrowPending();
  if (instance.IsNil()) throw BindingError("there is no way to make a " + Name() + " by name");
  return instance;
}

Value ClassBinding::New(const Arguments &arguments) const {
  const auto constructors = FindMethods(kConstructor, [](const BoundMethod &) { return true; });
  if (constructors.empty()) {
    if (!arguments.empty()) throw BindingError(Name() + " has no Constructor, so it takes no arguments");
    return NewWithoutConstructor();
  }
  const BoundMethod &constructor = Choose(constructors, kConstructor, arguments, nullptr);
  if (constructor.isShared) return Invoke(constructor, nullptr, arguments, nullptr);
  Value instance = NewWithoutConstructor();
  Invoke(constructor, instance.AsObject(), arguments, nullptr);
  return instance;
}

Value ClassBinding::Constant(std::string_view name) const {
  for (const ClassBinding *type = this; type != nullptr; type = type->Super()) {
    for (const ConstantDeclaration &constant : type->constants_) {
      if (NamesEqual(constant.name, name)) return FromLiteral(constant.value);
    }
  }
  throw BindingError(Name() + " has no constant " + Quoted(name));
}

Value ClassBinding::Call(std::string_view method, const Arguments &arguments) const {
  const auto candidates = FindMethods(method, [](const BoundMethod &candidate) { return candidate.isShared; });
  if (candidates.empty()) throw BindingError(Name() + " has no shared method " + Quoted(method));
  return Invoke(Choose(candidates, method, arguments, nullptr), nullptr, arguments, nullptr);
}

Value ClassBinding::CallOn(Object &instance, std::string_view method, const Arguments &arguments) const {
  const auto candidates = FindMethods(method, [](const BoundMethod &) { return true; });
  if (candidates.empty()) throw BindingError(Name() + " has no method " + Quoted(method));
  return Invoke(Choose(candidates, method, arguments, nullptr), &instance, arguments, nullptr);
}

void ClassBinding::AssignOn(Object &instance, std::string_view method, const Arguments &arguments,
                            const Value &value) const {
  const auto candidates = FindMethods(method, [](const BoundMethod &candidate) { return candidate.setter != nullptr; });
  if (candidates.empty()) throw BindingError(Name() + " has no assignable method " + Quoted(method));
  Invoke(Choose(candidates, method, arguments, &value), &instance, arguments, &value);
}

const BoundProperty *ClassBinding::FindBoundProperty(std::string_view name, const ClassBinding **owner) const {
  for (const ClassBinding *type = this; type != nullptr; type = type->Super()) {
    for (const BoundProperty &property : type->properties_) {
      if (!NamesEqual(property.registered->name, name)) continue;
      *owner = type;
      return &property;
    }
  }
  return nullptr;
}

Value ClassBinding::GetFrom(Object &instance, std::string_view name) const {
  const ClassBinding *owner = nullptr;
  const BoundProperty *const property = FindBoundProperty(name, &owner);
  if (property == nullptr) {
    if (std::optional<Value> own = GetOwnProperty(instance, name)) return *std::move(own);
    throw BindingError(Name() + " has no property or method " + Quoted(name));
  }
  const RegisteredProperty &registered = *property->registered;
  if (registered.getter == nullptr) throw BindingError(Name() + "." + registered.name + " cannot be read");
  if (registered.getter == REALstandardAccessor) {
    return ReadField(PropertyField(instance, {owner->class_, &registered}), property->type);
  }
  const Owned<Object> kept = Owned<Object>::Share(&instance);
  std::vector<RawValue> raw(2);
  raw[0].address = kept.Handle();
  raw[1].integer = registered.param;
  const CallShape shape({kInstanceType, kParamType}, property->type);
  Value value = FromRaw(shape.Call(registered.getter, raw), property->type, Reference::Given);
  Bindings::Current().ThrowPending();
  return value;
}

void ClassBinding::SetOn(Object &instance, std::string_view name, const Value &value) const {
  const ClassBinding *owner = nullptr;
  const BoundProperty *const property = FindBoundProperty(name, &owner);
  if (property == nullptr) {
    if (SetOwnProperty(instance, name, value)) return;
    throw BindingError(Name() + " has no property " + Quoted(name) + " that takes " + value.KindText());
  }
  const RegisteredProperty &registered = *property->registered;
  if (property->IsReadOnly()) throw BindingError(Name() + "." + registered.name + " is read-only");
  if (ConversionCost(value, property->type) < 0) {
    throw BindingError(Name() + "." + registered.name + " is of type " + property->type.Text() + " and does not take " +
                       value.KindText());
  }
  if (registered.setter == REALstandardAccessor) {
    WriteField(PropertyField(instance, {owner->class_, &registered}), property->type, value);
    return;
  }
  const Owned<Object> kept = Owned<Object>::Share(&instance);
  std::vector<RawValue> raw(2);
  raw[0].address = kept.Handle();
  raw[1].integer = registered.param;
  raw.push_back(ToRaw(value, property->type));
  CallShape({kInstanceType, kParamType, property->type}, kNoResult).Call(registered.setter, raw);
  Bindings::Current().ThrowPending();
}

Value Value::Call(std::string_view name, const Arguments &arguments) const {
  Object &object = ObjectOf(*this, name);
  return ClassNamed(object.Type().Name()).CallOn(object, name, arguments);
}

Value Value::Get(std::string_view property) const {
  Object &object = ObjectOf(*this, property);
  return ClassNamed(object.Type().Name()).GetFrom(object, property);
}

void Value::Set(std::string_view property, const Value &value) const {
  Object &object = ObjectOf(*this, property);
  ClassNamed(object.Type().Name()).SetOn(object, property, value);
}

void Value::Assign(std::string_view method, const Arguments &arguments, const Value &value) const {
  Object &object = ObjectOf(*this, method);
  ClassNamed(object.Type().Name()).AssignOn(object, method, arguments, value);
}

Bindings::Bindings() {
  if (current != nullptr) throw BindingError("there are bindings already");
  if (!HostState::IsRunning()) throw BindingError("there is no host to bind; make one first");
  current = this;
}

Bindings::~Bindings() { current = nullptr; }

Bindings &Bindings::Current() {
  if (current == nullptr) throw BindingError("there are no bindings; make some for the host first");
  return *current;
}

ClassBinding &Bindings::ClassNamed(std::string_view name) {
  const auto known = classes_.find(name);
  if (known != classes_.end()) return *known->second;
  const Class *const type = HostState::Current().Classes().Find(name);
  if (type == nullptr) throw BindingError("there is no class " + Quoted(name));
  return *classes_.emplace(type->Name(), std::make_unique<ClassBinding>(*type)).first->second;
}

ClassBinding &Bindings::DefineSubclass(const std::string &name, std::string_view superName,
                                       const std::map<std::string, EventHandler> &handlers) {
  const ClassBinding &super = ClassNamed(superName);
  standalone::EventHandlers addresses;
  std::vector<std::unique_ptr<Callback>> callbacks;
  for (const auto &[eventName, handler] : handlers) {
    const MethodDeclaration *event = nullptr;
    for (const ClassBinding *type = &super; type != nullptr && event == nullptr; type = type->Super()) {
      for (const MethodDeclaration &candidate : type->Events()) {
        if (NamesEqual(candidate.name, eventName)) event = &candidate;
      }
    }
    if (event == nullptr) throw BindingError(super.Name() + " has no event " + Quoted(eventName));
    std::vector<Type> types = TypesOf(*event);
    types.insert(types.begin(), kInstanceType);
    callbacks.push_back(std::make_unique<Callback>(
        types, event->result,
        [this, event, handler = handler](std::span<const RawValue> raw) { return RunEvent(*event, handler, raw); }));
    addresses.emplace(event->name, callbacks.back()->Address());
  }
  HostState::Current().Classes().DefineSubclass(name, superName, std::move(addresses));
  for (std::unique_ptr<Callback> &callback : callbacks) callbacks_.push_back(std::move(callback));
  return ClassNamed(name);
}

// Runs between two frames of the plug-in, through which nothing may be thrown.
RawValue Bindings::RunEvent(const MethodDeclaration &event, const EventHandler &handler,
                            std::span<const RawValue> raw) {
  try {
    Arguments arguments;
    for (size_t i = 0; i < event.parameters.size(); ++i) {
      arguments.push_back(FromRaw(raw[i + 1], event.parameters[i].type, Reference::Lent));
    }
    const Value result = handler(FromRaw(raw[0], kInstanceType, Reference::Lent), arguments);
    if (event.result.kind == TypeKind::None) return {};
    if (ConversionCost(result, event.result) < 0) {
      throw BindingError("the handler of " + Quoted(event.name) + " gave " + result.KindText() + ", not " +
                         event.result.Text());
    }
    const RawValue given = ToRaw(result, event.result);
    if (event.result.isArray || event.result.kind == TypeKind::Object) {
      Owned<Object>::Share(Object::From(static_cast<REALobject>(given.address))).Release();
    } else if (event.result.kind == TypeKind::String) {
      Owned<String>::Share(String::From(static_cast<REALstring>(given.address))).Release();
    }
    return given;
  } catch (...) {
    if (!thrown_) thrown_ = std::current_exception();
    return {};
  }
}

void Bindings::ThrowPending() {
  std::optional<RaisedException> raised = TakeRaisedException();
  if (thrown_) std::rethrow_exception(std::exchange(thrown_, nullptr));
  if (raised) throw HostException(*std::move(raised));
}

std::vector<const ClassBinding *> RegisteredClassesAnd(std::initializer_list<std::string_view> own) {
  std::vector<const ClassBinding *> classes;
  for (const Class *const type : HostState::Current().Classes().Registered()) {
    classes.push_back(&ClassNamed(type->Name()));
  }
  for (const std::string_view name : own) classes.push_back(&ClassNamed(name));
  return classes;
}

}  // namespace standalone
