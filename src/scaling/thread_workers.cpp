#include "scaling/thread_workers.h"

#include <pthread.h>

#include <cstdio>

namespace zvk::scaling {

void NameThread(const char *pass, int32_t threadIndex) {
  constexpr size_t kLongestName = 15;  // of a thread on this system; a longer one is refused
  char text[32] = {};
  std::snprintf(text, sizeof text, "%s %d", pass, threadIndex);
  text[kLongestName] = '\0';
  pthread_setname_np(pthread_self(), text);
}

}  // namespace zvk::scaling
