#pragma once

#include "OCTScanSegmentation.h"
#include "Study.h"
#include "kelpImage.h"

#include <QStringList>

/// Turns a scan and a segmentation into what other tools read.
namespace kelp::oct::OCTScanUtils {

/// The segmentations of the study that belong to the scan; of all scans if it is null.
QList<OCTScanSegPtr> getAllSegmentationsOf(const DataPointer<Study>& study, const OCTScanPtr& scan);

/// 8-bit volume of (A-scans, rows, B-scans).
kelp::ImagePtr getImageVolume(const OCTScanPtr& scan);
/// Label of a voxel: 0 in a masked column, else 1 plus the number of final layers at or above it.
kelp::ImagePtr getLabelVolume(const OCTScanSegPtr& segmentation);

/// The volumes as MetaImage files. Throw IOFailure when the file cannot be written whole.
void writeMetaImage(const OCTScanPtr& scan, const QString& path);
void writeMetaImage(const OCTScanSegPtr& segmentation, const QString& path);

// The directory exporters throw IOFailure when the directory does not exist. A file that cannot be
// opened or written is skipped without a word, unless the caller passes a list: the paths of all
// files that do not stand whole on the disk are then appended to it.

/// layer_<identifier>.csv per final layer: rows of tab-ended positions, -1 where masked.
void writeLayersCSV(const OCTScanSegPtr& segmentation, const QString& directory,
                    QStringList* failedFiles = nullptr);
/// thickness_<top>_<bottom>.csv per neighbouring pair of final layers, micrometres, -1 masked.
void writeThicknessCSV(const OCTScanSegPtr& segmentation, const QString& directory,
                       QStringList* failedFiles = nullptr);
/// layer_<identifier>.raw: in spite of the name one byte per position, its low 8 bits; 255 masked.
void writeLayersRawUInt16(const OCTScanSegPtr& segmentation, const QString& directory,
                          QStringList* failedFiles = nullptr);

} // namespace kelp::oct::OCTScanUtils
