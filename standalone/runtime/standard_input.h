// Keeps descriptor 0 out of the way of plug-ins that close it: the program's standard input lives elsewhere, and the
// null device is put on 0.
#pragma once

namespace standalone {

// Moves the standard input for as long as it lives, and puts it back at the end.
class StandardInput {
 public:
  StandardInput();
  StandardInput(const StandardInput &) = delete;
  StandardInput &operator=(const StandardInput &) = delete;
  ~StandardInput();

  // Where the program's standard input is now; -1 if the program came without one.
  int Descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

// Makes sure that descriptor 0 is taken: by the null device if by nothing else.
void KeepDescriptorZeroTaken();

// Lives as long as one call into a plug-in does, be it of a method, an accessor, a constructor, a destructor or the
// entry: at its end descriptor 0 is taken. Else the next file that is opened would be 0, for a later call to close.
class PluginCall {
 public:
  PluginCall() = default;
  PluginCall(const PluginCall &) = delete;
  PluginCall &operator=(const PluginCall &) = delete;
  ~PluginCall() { KeepDescriptorZeroTaken(); }
};

}  // namespace standalone
