#include "SegmentationMask.h"

#include "kelpCheck.h"

#include <algorithm>
#include <limits>

namespace kelp::oct {

namespace {

constexpr const char* sourcePath = "libraries/OCTScan/src/layerSeg/SegmentationMask";
constexpr Place addPolygonPlace{sourcePath, "kelp::oct::SegmentationMask::addPolygon"};
constexpr Place getMaskRowPlace{sourcePath, "kelp::oct::SegmentationMask::getMaskRow"};
constexpr Place setOCTPlace{sourcePath, "kelp::oct::SegmentationMask::setOCT"};

/// The scan's rectangle in the single precision in which it has always been computed.
struct Corners
{
    float left;
    float top;
    float right;
    float bottom;
};

Corners cornersOf(const BScan& first, const BScan& last)
{
    const auto lastAScan = static_cast<unsigned>(last.getNrAScans() - 1);
    return {static_cast<float>(last.getAScanPosition(0).x),
            static_cast<float>(last.getAScanPosition(0).y),
            static_cast<float>(first.getAScanPosition(lastAScan).x),
            static_cast<float>(first.getAScanPosition(lastAScan).y)};
}

/// A polygon made ready for many inside tests. Answers as QPolygonF::containsPoint with the
/// odd-even rule does, but knows at once the points beside which no edge lies.
class InsideTest
{
public:
    explicit InsideTest(const QPolygonF& polygon)
    {
        for (const QPointF& point : polygon) {
            // An edge of no length never counts. A damaged stored form may hold thousands.
            if (m_polygon.isEmpty() || point != m_polygon.constLast()) {
                m_polygon.append(point);
            }
            // Written so that a coordinate that is no number is passed over: its edges never count.
            m_top = point.y() < m_top ? point.y() : m_top;
            m_bottom = point.y() > m_bottom ? point.y() : m_bottom;
        }
    }

    bool canHold() const { return m_top < m_bottom; }

    bool operator()(const QPointF& point) const
    {
        // Only an edge with one end at or above and the other one below the point counts.
        return point.y() >= m_top && point.y() < m_bottom &&
               m_polygon.containsPoint(point, Qt::OddEvenFill);
    }

private:
    QPolygonF m_polygon;
    double m_top = std::numeric_limits<double>::infinity();
    double m_bottom = -std::numeric_limits<double>::infinity();
};

} // namespace

void MaskMatrix::shrinkRuns()
{
    // Deliberately not reset between rows.
    bool justCleared = false;
    for (unsigned row = 0; row < rows && columns > 0; ++row) {
        unsigned char* const line = data + static_cast<std::size_t>(row) * columns;
        bool previous = line[0] != 0;
        for (unsigned k = 1; k < columns; ++k) {
            const bool current = line[k] != 0;
            justCleared = current && !previous && !justCleared;
            if (justCleared) {
                line[k] = 0;
            }
            if (!current && previous) {
                line[k - 1] = 0;
            }
            previous = line[k] != 0;
        }
    }
}

SegmentationMask::SegmentationMask(const OCTScanPtr& scan)
    : m_mask(QSharedPointer<MaskMatrix>::create(0U, 0U))
{
    setOCT(scan);
}

void SegmentationMask::setOCT(const OCTScanPtr& scan)
{
    check(!scan.isNull(), setOCTPlace, "OCT scan is null.");
    scan->ensureLoaded();
    const int nrBScans = scan->getBScanCount();
    check(nrBScans >= 1, setOCTPlace, "No BScans.");
    const auto first = scan->getBScan(0);
    check(!first.isNull(), setOCTPlace, "First BScan is null.");
    check(first->getNrAScans() >= 1, setOCTPlace, "First BScan has no AScans.");
    const auto last = scan->getBScan(static_cast<unsigned>(nrBScans - 1));
    check(!last.isNull(), setOCTPlace, "Last BScan is null.");
    check(last->getNrAScans() >= 1, setOCTPlace, "Last BScan has no AScans.");

    Corners corners = cornersOf(*first, *last);
    if (nrBScans > 1) {
        const auto second = scan->getBScan(1);
        check(!second.isNull(), setOCTPlace, "Second BScan is null.");
        const float halfSpacing = 0.5F * (static_cast<float>(first->getAScanPosition(0).y) -
                                          static_cast<float>(second->getAScanPosition(0).y));
        corners.top -= halfSpacing;
        corners.bottom += halfSpacing;
    }
    m_boundingRect.setCoords(corners.left, corners.top, corners.right, corners.bottom);
    m_mask = QSharedPointer<MaskMatrix>::create(static_cast<unsigned>(nrBScans),
                                                static_cast<unsigned>(last->getNrAScans()));
    m_positions.clear();
    m_oct = scan;
}

void SegmentationMask::findPositions()
{
    if (!m_positions.empty()) {
        return;
    }
    // The matrix is as wide as the last B-scan; A-scans that it has no place for are left out.
    const unsigned columns = std::min(
        m_mask->columns, static_cast<unsigned>(std::max(0, m_oct->getBScan(0)->getNrAScans())));
    std::vector<QPointF> positions;
    positions.reserve(m_mask->size());
    for (unsigned i = 0; i < m_mask->rows; ++i) {
        for (unsigned j = 0; j < columns; ++j) {
            const CoordOnLocalizer position =
                m_oct->volumeIndexToLocalizerCoords(static_cast<int>(i), static_cast<int>(j));
            positions.emplace_back(position.x, position.y);
        }
        // No polygon holds these.
        positions.resize((i + 1) * static_cast<std::size_t>(m_mask->columns),
                         QPointF(std::numeric_limits<double>::quiet_NaN(),
                                 std::numeric_limits<double>::quiet_NaN()));
    }
    m_positions = std::move(positions);
}

void SegmentationMask::addPolygon(QPolygonF polygon)
{
    check(!m_mask.isNull(), addPolygonPlace, "Mask matrix is null.");
    m_polygons.append(polygon);
    check(!m_oct.isNull(), addPolygonPlace, "OCT scan is null.");
    findPositions();
    const InsideTest isInside(polygon);
    if (!isInside.canHold()) {
        return;
    }
    for (std::size_t k = 0; k < m_positions.size(); ++k) {
        if (isInside(m_positions[k])) {
            m_mask->data[k] = 1;
        }
    }
}

void SegmentationMask::clear()
{
    m_polygons.clear();
    if (m_mask) {
        std::fill(m_mask->begin(), m_mask->end(), static_cast<unsigned char>(0));
    }
}

QSharedPointer<QList<bool>> SegmentationMask::getMaskRow(unsigned row) const
{
    check(!m_mask.isNull(), getMaskRowPlace, "Mask matrix is null.");
    check(row < m_mask->rows, getMaskRowPlace, "Row index out of bounds.");
    auto excluded = QSharedPointer<QList<bool>>::create();
    excluded->reserve(static_cast<int>(m_mask->columns));
    for (unsigned column = 0; column < m_mask->columns; ++column) {
        excluded->append((*m_mask)(row, column) != 0);
    }
    return excluded;
}

} // namespace kelp::oct
