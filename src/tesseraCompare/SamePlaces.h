#pragma once

#include "ScanSurfaces.h"

namespace kelp::compare {

/// Why A-scans of the same number of A and B are not held against each other: they are not at the
/// same place of the eye. A sentence for the user that says what is compared instead; empty where
/// they are. Two segmentations of the same B-scans are; so are, while nothing speaks against it,
/// results of which one does not tell its B-scans, and what the user says to be (isSaidSo). Throws
/// RuntimeException where that cannot be true.
QString reasonForSectorMeans(const ScanSurfaces& a, const ScanSurfaces& b, bool isSaidSo);

} // namespace kelp::compare
