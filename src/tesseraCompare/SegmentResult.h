#pragma once

#include "ScanSurfaces.h"

namespace kelp::compare {

/// Whether the folder holds what tessera-segment writes for a scan, or the positions that the
/// application exports.
bool isSegmentResult(const QString& folder);

/// Reads the positions in a folder and, where there is one, its run.json. Surfaces that the run did
/// not find are left out, as their positions are no result. Throws RuntimeException
/// that names the file and says what is wrong.
ScanSurfaces readSegmentResult(const QString& folder);

/// The positions of a layer_<identifier>.csv: a line a B-scan, tab-separated, -1 where masked.
/// Throws ParsingError.
SurfaceRows parseLayerPositions(const QByteArray& content);

} // namespace kelp::compare
