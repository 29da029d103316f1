#pragma once

#include "OCTScan.h"

#include <QPointF>

#include <optional>
#include <vector>

namespace kelp::oct {

struct AScanPlace
{
    int bScan = 0;
    int aScan = 0;

    friend bool operator==(const AScanPlace&, const AScanPlace&) = default;
};

/// Finds the B-scan and A-scan that are closest to a position on the localizer (mm). Volumes and
/// single B-scans answer through the scan's grid at once; for circles and stars, which have none,
/// the stored positions of all A-scans are compared.
class AScanFinder
{
public:
    /// Finds nothing until a scan is set.
    AScanFinder() = default;
    /// Of a loaded scan.
    explicit AScanFinder(const OCTScanPtr& scan);

    /// Empty only for a scan without any usable position.
    std::optional<AScanPlace> closestTo(const QPointF& position) const;

private:
    struct StoredPosition
    {
        QPointF position;
        AScanPlace place;
    };

    std::optional<AScanPlace> closestOnGrid(const QPointF& position) const;
    std::optional<AScanPlace> closestStored(const QPointF& position) const;

    OCTScanPtr m_scan;
    std::vector<int> m_aScanCounts; ///< by B-scan
    /// Only without a grid.
    std::vector<StoredPosition> m_positions;
};

} // namespace kelp::oct
