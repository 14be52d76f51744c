// A small plug-in made by hand, linked into the tests: plain functions over a plain record, and tables that name them.
// Its class "Gadget" has something of every type and kind of member, "Maker" has events.
#pragma once

#include <cstdint>
#include <string>

#include "host/host_layouts.h"

namespace standalone::gadgets {

// The data of a Gadget.
struct GadgetData {
  int32_t number;
  uint8_t flag;
  uint8_t neighbour;  // belongs to no property
  int64_t wide;
  double real;
  uint32_t tint;
  REALobject partner;
  REALstring label;
};

extern REALclassDefinition gadgetDefinition;

// What the handlers saw last.
extern std::string constructorRun;  // "plain" or "number"
extern int32_t gotParam;            // third word of the accessors of the property "Double"

GadgetData &DataOf(REALobject gadget);

// The plug-in's entry.
void GadgetMain(REALresolver resolver);

}  // namespace standalone::gadgets
