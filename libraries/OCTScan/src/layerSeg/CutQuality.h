#pragma once

#include "SegmentationMask.h"
#include "SliceStackProperties.h"

#include <QList>
#include <QString>

#include <functional>
#include <vector>

namespace kelp::oct {

/// How a surface came out, in counts of A-scans that are not masked. None of them proves an error;
/// many of them say that the cut had to make do with what was left to it.
struct QualityCounts
{
    int aScans = 0; ///< not masked: the whole that the others are parts of
    /// The surface lies on the first or the last row of its search range.
    int atTop = 0;
    int atBottom = 0;
    /// The hard distances of the cut's surfaces cannot all be kept within the search ranges. Counts
    /// for all surfaces that such distances tie together.
    int withoutRoom = 0;
    /// The cut gave the surface no row at all. The layer then holds the top of the search range,
    /// which is no result. Counts neither in atTop nor in atBottom.
    int withoutRow = 0;

    QualityCounts& operator+=(const QualityCounts& other);
    friend bool operator==(const QualityCounts&, const QualityCounts&) = default;
};

/// How one surface of a cut came out.
struct SurfaceQuality
{
    QString surface; ///< identifier of the layer name
    std::vector<QualityCounts> bScans;

    /// Over all B-scans.
    QualityCounts all() const;
};

/// Whether the cut decided on no row for a surface (its position in the plan) at a column.
using IsWithoutRow = std::function<bool(int layer, unsigned bScan, unsigned aScan)>;

/// The figures of a solved cut, by surface in the order of the plan.
/// layers: the result in image rows, in the order of the plan.
std::vector<SurfaceQuality> measureCutQuality(const SliceStackProperties& properties,
                                              const MaskMatrix& mask,
                                              const QList<VolumeLayerPtr>& layers,
                                              const IsWithoutRow& isWithoutRow);

} // namespace kelp::oct
