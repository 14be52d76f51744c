#include "standalone/runtime/standard_input.h"

#include <fcntl.h>
#include <unistd.h>

namespace standalone {
namespace {

// The lowest descriptor that is not one of the three standard ones.
constexpr int kFirstOwnDescriptor = 3;

void PutNullDeviceOnZero() {
  const int opened = open("/dev/null", O_RDWR);
  if (opened <= 0) return;
  dup2(opened, STDIN_FILENO);
  close(opened);
}

}  // namespace

StandardInput::StandardInput() : descriptor_(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, kFirstOwnDescriptor)) {
  PutNullDeviceOnZero();
}

StandardInput::~StandardInput() {
  if (descriptor_ < 0) return;
  dup2(descriptor_, STDIN_FILENO);
  close(descriptor_);
}

void KeepDescriptorZeroTaken() {
  if (fcntl(STDIN_FILENO, F_GETFD) < 0) PutNullDeviceOnZero();
}

}  // namespace standalone
