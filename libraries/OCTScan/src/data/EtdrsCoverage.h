#pragma once

#include "EtdrsGrid.h"

#include <array>

namespace kelp::oct {

/// A number of A-scans for each sector, by its id; those outside the grid are not counted.
using AScansOfSectors = std::array<int, EtdrsTable::nrColumns>;

/// How many more A-scans each sector would have if the scan went on beyond its borders as it is
/// spaced: B-scans along their lines, and in volumes further B-scans on both sides. None for
/// circles, and none where the spacing says no direction to go on in.
///
/// nrAScans is that of each B-scan.
AScansOfSectors aScansBeyondScan(const OCTScan& scan, int nrAScans, const CoordOnLocalizer& fovea);

} // namespace kelp::oct
