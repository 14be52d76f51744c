// The registered classes, callable from C++ by name and by what their declarations say. Names are taken in any case,
// overloads are chosen by what is given, optional arguments are filled in, exceptions of the host become C++ ones.
//
//   Host host;
//   host.Load("libPictureZVK.so");
//   Bindings bindings;                                     // one, for as long as the host is used
//   ClassBinding &pictures = ClassNamed("PictureZVK");
//   Value image = pictures.New({640, 480, pictures.Constant("ImageFormatRGB")});
//   image.Call("FillRectRGB", {Color{0xFF8000}});
//   Value half = pictures.New({320, 240, pictures.Constant("ImageFormatRGB")});
//   half.Call("Scale", {image, nullptr, pictures.Constant("ScaleLanczos3"), 320, 240}).AsBoolean();
//   half.Get("Width").AsInteger();
//   image.Assign("Row", {0}, half.Call("Row", {0}));
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/binding/caller.h"
#include "standalone/binding/declaration.h"
#include "standalone/binding/value.h"
#include "standalone/runtime/class_registry.h"
#include "standalone/runtime/exceptions.h"
#include "standalone/runtime/names.h"

namespace standalone {

// An exception of the host language that a call has raised, thrown after its handler has returned.
class HostException : public std::runtime_error {
 public:
  explicit HostException(RaisedException raised)
      : std::runtime_error(raised.className + (raised.message.empty() ? "" : ": " + raised.message)),
        raised_(std::move(raised)) {}

  const std::string &ClassName() const { return raised_.className; }
  const std::string &Message() const { return raised_.message; }
  int32_t ErrorNumber() const { return raised_.errorNumber; }

 private:
  RaisedException raised_;
};

// A method of a table, read.
struct BoundMethod {
  std::string text;  // the declaration as it stands in the table
  MethodDeclaration declaration;
  uint32_t flags;
  bool isShared;
  void *function;
  void *setter;  // of an assignable method, else nil
  std::unique_ptr<CallShape> shape;
  std::unique_ptr<CallShape> setterShape;  // nil without a setter
};

// A property of a table, read.
struct BoundProperty {
  const RegisteredProperty *registered;
  Type type;
  bool IsReadOnly() const { return registered->setter == nullptr; }
};

// What a subclass does on an event: gets the instance and the event's arguments, gives the result (nil for none). What
// it throws comes out of the call that led to the event, and the plug-in sees a zero or nil result.
using EventHandler = std::function<Value(const Value &instance, const Arguments &arguments)>;

// One class. What it does not find it looks for in its superclass. Everything throws BindingError for a use that does
// not fit and HostException for what the plug-in raised.
class ClassBinding {
 public:
  // Throws DeclarationError if the class's table cannot be read.
  explicit ClassBinding(const Class &type);
  ClassBinding(const ClassBinding &) = delete;
  ClassBinding &operator=(const ClassBinding &) = delete;

  const Class &Type() const { return *class_; }
  const std::string &Name() const { return class_->Name(); }
  // The superclass; nil at the top.
  const ClassBinding *Super() const;

  // A new instance, and its Constructor run on it; a shared Constructor makes the instance itself. A class without any
  // takes no arguments.
  Value New(const Arguments &arguments = {}) const;
  // A new instance as the host makes it before any Constructor.
  Value NewWithoutConstructor() const;

  Value Constant(std::string_view name) const;
  // A shared method. Nil if it has no result.
  Value Call(std::string_view method, const Arguments &arguments = {}) const;

  // Members of an instance, which is of this class; Value's own Call, Get, Set and Assign lead here.
  Value CallOn(Object &instance, std::string_view method, const Arguments &arguments) const;
  void AssignOn(Object &instance, std::string_view method, const Arguments &arguments, const Value &value) const;
  Value GetFrom(Object &instance, std::string_view property) const;
  void SetOn(Object &instance, std::string_view property, const Value &value) const;

  // What the class's own table holds, in table order; shared methods come after the others.
  const std::vector<BoundMethod> &Methods() const { return methods_; }
  const std::vector<BoundProperty> &Properties() const { return properties_; }
  const std::vector<ConstantDeclaration> &Constants() const { return constants_; }
  const std::vector<MethodDeclaration> &Events() const { return events_; }

 private:
  using Wanted = std::function<bool(const BoundMethod &)>;

  void AddMethods(const std::vector<RegisteredMethod> &methods, bool areShared);
  std::vector<const BoundMethod *> FindMethods(std::string_view name, const Wanted &isWanted) const;
  const BoundMethod &Choose(const std::vector<const BoundMethod *> &candidates, std::string_view name,
                            const Arguments &arguments, const Value *assigned) const;
  const BoundProperty *FindBoundProperty(std::string_view name, const ClassBinding **owner) const;

  const Class *class_;
  std::vector<BoundMethod> methods_;
  std::vector<BoundProperty> properties_;
  std::vector<ConstantDeclaration> constants_;
  std::vector<MethodDeclaration> events_;
};

// The bindings of all classes of the running host, and the functions behind its subclasses' events. One at a time; made
// after the host and gone before it.
class Bindings {
 public:
  Bindings();
  ~Bindings();
  Bindings(const Bindings &) = delete;
  Bindings &operator=(const Bindings &) = delete;

  // The one that there is. Throws BindingError if there is none.
  static Bindings &Current();

  // The class of that name, in any case. Throws BindingError if there is none, DeclarationError if its table is not to
  // be read.
  ClassBinding &ClassNamed(std::string_view name);

  // Defines a subclass with handlers for events, by the events' names. Throws BindingError on an event that no class
  // above has, ClassError if the host refuses the class.
  ClassBinding &DefineSubclass(const std::string &name, std::string_view superName,
                               const std::map<std::string, EventHandler> &handlers);

  // To be called after each call into a plug-in: throws what an event handler threw on the way, or what was raised.
  void ThrowPending();

 private:
  RawValue RunEvent(const MethodDeclaration &event, const EventHandler &handler, std::span<const RawValue> raw);

  std::map<std::string, std::unique_ptr<ClassBinding>, NameOrder> classes_;
  std::vector<std::unique_ptr<Callback>> callbacks_;
  std::exception_ptr thrown_;
};

// The class of that name of the current bindings.
inline ClassBinding &ClassNamed(std::string_view name) { return Bindings::Current().ClassNamed(name); }

// All classes that plug-ins have registered, in their order, then those of the host's own that are named.
std::vector<const ClassBinding *> RegisteredClassesAnd(std::initializer_list<std::string_view> own);

}  // namespace standalone
