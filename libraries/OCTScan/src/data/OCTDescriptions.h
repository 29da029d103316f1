#pragma once

/// Registers what the user is told of scans and segmentations where their classes are not known.
/// Returns 1. Also runs during static initialisation.
int createOCTDescriptions();
