// Fitting the class tables, written for the newest host, to the host at hand, and handing them over.
#pragma once

#include <cstddef>

#include "abi/host_layouts.h"

namespace zvk::plugin {

// Flag bits of table entries, as the tables hold them and as the host knows them.
inline constexpr uint32_t kFlagPropertyDefault = 2;       // carried by every property
inline constexpr uint32_t kFlagConsole = 4;               // may be used in a console application
inline constexpr uint32_t kFlagConsoleCounterpart = 8;    // what kFlagNewCounterpart turns into
inline constexpr uint32_t kFlagNewConsole = 0x40000;      // kFlagConsole, on hosts from 2010.029 on only
inline constexpr uint32_t kFlagNewCounterpart = 0x80000;  // kFlagConsoleCounterpart, likewise
inline constexpr uint32_t kFlagInternal = 0x100000;       // never told to a host

// Turns each constant's bare name and number into the declaration that the host wants: "NAME = 7" up to 9,
// "NAME = &h0000000A" above. The texts stay allocated, as the host keeps pointers to them. A constant whose text finds
// no memory is left as it is.
void RewriteConstants(REALconstant *constants, size_t count);

// Settles every flag word of the definition (class, methods, shared methods, properties, shared properties) for the
// host's version.
void FixConsoleFlags(REALclassDefinition *definition);

// A copy of a property table in the records of version 9, which stays allocated; nil for an empty table.
REALproperty9 *FixProperties(const REALproperty *properties, size_t count);

// Registers one definition, converting it in place to version 9 for hosts below version 10. The definition's address is
// what the host gets: the host writes the class data offset into it.
void MyREALRegisterClass(REALclassDefinition *definition);

}  // namespace zvk::plugin
