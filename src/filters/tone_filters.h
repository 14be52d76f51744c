// Filters that change each sample by itself, through a table.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::filters {

// All are handlers and run in the filter frame: dest, or a new image for a nil dest, comes back with a reference for
// the caller; nil if the filter is refused. What an image has and the filter does not serve stays as it is in dest.

// All channels of every family through one fixed table that darkens towards the middle and lightens from there.
REALobject SolarizeFilter(REALobject instance, REALobject dest);

// Gamma correction of gray and RGB images: each colour to the power 1 / gamma. A gray image takes its one gamma from
// the first of these, or from a blend of the three that has lost its fractions. Alpha only where it has a gamma.
REALobject GammaFilterG(REALobject instance, REALobject dest, double gamma);
REALobject GammaFilterGA(REALobject instance, REALobject dest, double gamma, double alphaGamma);
REALobject GammaFilterRGB(REALobject instance, REALobject dest, double redGamma, double greenGamma, double blueGamma);
REALobject GammaFilterRGBA(REALobject instance, REALobject dest, double redGamma, double greenGamma, double blueGamma,
                           double alphaGamma);

// All channels of gray and RGB images through one curve; 0.5 and 0.5 change nothing.
REALobject GainFilter(REALobject instance, REALobject dest, double gain, double bias);

// The caller's tables, 256 elements of which the low byte counts, for gray and RGB images. A gray image takes its one
// table from the first of these, or the green one of three. Alpha only where it has a table.
REALobject TransferFilterG(REALobject instance, REALobject dest, REALarray gray);
REALobject TransferFilterGA(REALobject instance, REALobject dest, REALarray gray, REALarray alpha);
REALobject TransferFilterRGB(REALobject instance, REALobject dest, REALarray red, REALarray green, REALarray blue);
REALobject TransferFilterRGBA(REALobject instance, REALobject dest, REALarray red, REALarray green, REALarray blue,
                              REALarray alpha);

}  // namespace zvk::filters
