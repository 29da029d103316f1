#pragma once

#include "ScanSurfaces.h"

#include <QPoint>
#include <QSize>

#include <optional>

namespace kelp::compare {

/// How a map with a pixel per A-scan has to lie to be seen as on the localizer. Where the places
/// are not known or make no map, as those of stars and circles, A-scans run to the right and
/// B-scans downwards.
class MapLayout
{
public:
    MapLayout(const std::optional<AScanPlaces>& places, int nrBScans, int nrAScans);

    /// Laid as on the localizer.
    bool isKnown() const { return m_isKnown; }
    /// A-scans run along the height, B-scans along the width.
    bool isUpright() const { return m_isUpright; }
    /// To the left or upwards.
    bool areAScansBackward() const { return m_aScansBackward; }
    bool areBScansBackward() const { return m_bScansBackward; }

    QSize size() const;
    /// From the left upper corner.
    QPoint placeOf(int bScan, int aScan) const;

private:
    void lieAs(const AScanPlaces& places);

    int m_nrBScans;
    int m_nrAScans;
    bool m_isKnown = false;
    bool m_isUpright = false;
    bool m_aScansBackward = false;
    bool m_bScansBackward = false;
};

} // namespace kelp::compare
