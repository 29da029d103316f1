#pragma once

#include "Figure.h"
#include "OCTScanSegmentation.h"

/// What a user waits for, measured on the true widgets with true events.
namespace kelp::bench {

/// For what comes with the events of the window; no part of any figure.
constexpr int longestWaitMs = 120000;

struct Sizes
{
    int patients = 10000;
    int aScans = 512;
    int rows = 496;
    int bScans = 49;
};

/// A phantom scan below the folder with all nine layers.
OCTScanSegPtr makeSegmentedScan(const QString& folder, const Sizes& sizes);

/// Opening the store and showing the filled list of patients.
Figure measureStore(const QString& folder, const Sizes& sizes);
/// The batch tab, which reads all studies at its first visit and shows a scan of each.
Figure measureBatchTab(const QString& folder, const Sizes& sizes);
/// From one B-scan to the next until the window is painted.
Figure measurePaging(const OCTScanSegPtr& segmentation);
/// A move of the mouse that redraws a layer, until the window is painted.
Figure measureEditing(const OCTScanSegPtr& segmentation);
/// From dropping the fovea until map and table are painted.
Figure measureFoveaDrop(const OCTScanSegPtr& segmentation);
/// The longest times between two repaints of the window during "Segment Normal".
Figure measureRepaints(const OCTScanPtr& scan);

} // namespace kelp::bench
