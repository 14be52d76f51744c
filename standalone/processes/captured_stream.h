// What another process writes, kept until it is wanted.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

namespace standalone {

// A file without a name that is there for a process to write to. Everything throws std::runtime_error.
class CapturedStream {
 public:
  CapturedStream();

  // Closed in processes that are started, unless it is handed to them.
  int Descriptor() const { return fileno(file_.get()); }

  bool IsEmpty() const;

  // Writes all of it to a descriptor; a last line without an end gets one.
  void CopyTo(int descriptor) const;

  // The end of it, at most so many bytes; where something is left out, from the start of a line on if there is one.
  std::string Tail(size_t limit) const;

 private:
  struct Closer {
    void operator()(std::FILE *file) const { std::fclose(file); }
  };
  std::unique_ptr<std::FILE, Closer> file_;
};

}  // namespace standalone
