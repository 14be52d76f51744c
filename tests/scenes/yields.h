// Takes and counts every chance of a yield: the clock moves whenever it is read, so none comes too early.
#pragma once

#include <cstdint>

#include "image/image_record.h"
#include "tests/support/plugin_host.h"

namespace scenes {

inline void UseRestlessClock(PluginHost &host) {
  static uint32_t ticks;
  ticks = 1000;
  host->SetEntry(
      "TickCount", +[]() -> uint32_t { return ticks += 10; });
}

inline void YieldAlways(PluginHost &host, REALobject image) {
  UseRestlessClock(host);
  zvk::image::RecordOf(image)->Yield.YieldTicks = 1;
}

inline int64_t Yields(PluginHost &host) { return host->Calls("REALYieldToRB"); }

}  // namespace scenes
