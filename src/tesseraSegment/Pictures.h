#pragma once

#include "OCTScanSegmentation.h"

#include <QImage>

#include <functional>

namespace kelp::command {

/// The B-scan at true proportions with its final surfaces in their colours and a legend. Its finer
/// axis keeps its pixels and the other is stretched. Masked A-scans are darkened and show no
/// surface. Safe from several threads at once for a segmentation that nobody changes.
QImage renderBScan(const OCTScanSegPtr& segmentation, int bScan,
                   const QList<kelp::oct::LayerNamePtr>& layers);

/// The localizer with the places of the B-scans; for a volume also with the thickness of the whole
/// retina in colours where both its surfaces are there, and the ETDRS grid around the fovea.
QImage renderEnface(const OCTScanSegPtr& segmentation);

/// pictures/bscan_NNN.png and pictures/enface.png below the folder. Throws IOFailure with path and
/// reason. progress is told the pictures written so far and their number.
void writePictures(const OCTScanSegPtr& segmentation, const QString& folder,
                   const std::function<void(int, int)>& progress);

/// Whether this machine has a font to label pictures with.
bool canDrawText();

} // namespace kelp::command
