#pragma once

#include "OCTScan.h"
#include "VolumeLayer.h"

#include <QList>
#include <QPolygonF>
#include <QRectF>
#include <QSharedPointer>

#include <vector>

namespace kelp::oct {

/// One byte per A-scan, nonzero = excluded.
class MaskMatrix : public ScanMatrix<unsigned char>
{
public:
    using ScanMatrix::ScanMatrix;

    /// Removes one element from each end of every run of set bytes along a row; a run that touches
    /// a border keeps its element there.
    void shrinkRuns();
};

using MaskMatrixPtr = QSharedPointer<MaskMatrix>;

/// The parts of a scan that are not to count: polygons on the localizer (mm), which are stored, and
/// the byte matrix made from them, which is read. Shared by viewers and segmentation steps.
class SegmentationMask
{
public:
    explicit SegmentationMask(const OCTScanPtr& scan);

    /// Loads the scan if need be and makes an empty matrix for it; the polygons stay.
    void setOCT(const OCTScanPtr& scan);
    /// Excludes every A-scan whose position on the localizer lies inside (odd-even rule). Polygons
    /// add up. Passes on the scan's NotImplemented for patterns without positions.
    void addPolygon(QPolygonF polygon);
    void clear();

    /// A copy of one row.
    QSharedPointer<QList<bool>> getMaskRow(unsigned row) const;
    QList<QPolygonF> getPolygons() const { return m_polygons; }
    /// Shared, not copied.
    MaskMatrixPtr getMaskMatrix() const { return m_mask; }
    /// The scan on the localizer in mm, half a B-scan distance beyond its outer B-scans.
    QRectF getBoundingRect() const { return m_boundingRect; }

private:
    /// Asks the scan once for the positions of all its A-scans.
    void findPositions();

    OCTScanPtr m_oct;
    QList<QPolygonF> m_polygons;
    MaskMatrixPtr m_mask;
    QRectF m_boundingRect;
    /// One per element of the matrix, millimetres on the localizer; empty until a polygon needs it.
    std::vector<QPointF> m_positions;
};

using SegmentationMaskPtr = QSharedPointer<SegmentationMask>;

} // namespace kelp::oct
