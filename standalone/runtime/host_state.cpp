#include "standalone/runtime/host_state.h"

namespace standalone {
namespace {

HostState *current = nullptr;

}  // namespace

HostState::HostState(HostOptions options, ClassRegistry &classes) : options_(std::move(options)), classes_(classes) {
  if (current != nullptr) throw HostError("there is a host in this process already");
  current = this;
}

HostState::~HostState() { current = nullptr; }

HostState &HostState::Current() { return *current; }

bool HostState::IsRunning() { return current != nullptr; }

}  // namespace standalone
