#include "bench/peers/contest.h"

#include <ctime>

namespace zvk::peers {
namespace {

double Now(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

}  // namespace

Task TimedTask(std::function<void()> work, std::function<View()> result) {
  return {[work = std::move(work)] {
            const Seconds start{Now(CLOCK_PROCESS_CPUTIME_ID), Now(CLOCK_MONOTONIC)};
            work();
            return Seconds{Now(CLOCK_PROCESS_CPUTIME_ID) - start.processor, Now(CLOCK_MONOTONIC) - start.wall};
          },
          [result = std::move(result)] { return TileLevels(result()); }};
}

}  // namespace zvk::peers
