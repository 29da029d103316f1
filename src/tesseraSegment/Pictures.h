#pragma once

#include "OCTScanSegmentation.h"

#include <QImage>
#include <QStringList>

#include <functional>

namespace kelp::command {

/// The B-scan at true proportions with its final surfaces in their colours and a legend. Its finer
/// axis keeps its pixels and the other is stretched. Masked A-scans are darkened and show no
/// surface. Of those that were not found (identifiers) the legend tells this, and no line is drawn,
/// since wherever it were it would look like a result. Safe from several threads at once for a
/// segmentation that nobody changes.
QImage renderBScan(const OCTScanSegPtr& segmentation, int bScan,
                   const QList<kelp::oct::LayerNamePtr>& layers, const QStringList& notFound = {});

/// The localizer with the places of the B-scans; for a volume also with the thickness of the whole
/// retina in colours where both its surfaces are there, and the ETDRS grid around the fovea. Where
/// one of the two was not found (identifiers), a note says so in the map's place.
QImage renderEnface(const OCTScanSegPtr& segmentation, const QStringList& notFound = {});

/// pictures/bscan_001.png, the first B-scan, and so on, and pictures/enface.png below the folder.
/// Throws IOFailure with path and reason. progress is told the pictures written so far and their
/// number.
void writePictures(const OCTScanSegPtr& segmentation, const QStringList& notFound,
                   const QString& folder, const std::function<void(int, int)>& progress);

} // namespace kelp::command
