#pragma once

#include "CoordOnLocalizer.h"
#include "OCTScan.h"

#include <QJsonObject>
#include <QList>
#include <QPair>

#include <optional>

namespace kelp::command {

class JsonWriter;

/// Where a scan's A-scans lie on the localizer in mm, as the measurements take them to be: with the
/// grid of the sectors enough to measure these again from the positions alone.
class AScanPlaces
{
public:
    /// Equal steps along a line from A-scan 0 to the last one.
    using Ends = QPair<CoordOnLocalizer, CoordOnLocalizer>;
    /// Equal steps around a center, for circular scans.
    struct Circle
    {
        CoordOnLocalizer center;
        double radiansPerAScan = 0.0; ///< positive from x to y
    };

    AScanPlaces() = default;
    AScanPlaces(const QList<Ends>& ends, int nrAScans,
                const std::optional<Circle>& circle = std::nullopt);

    static AScanPlaces of(const OCTScan& scan);

    CoordOnLocalizer at(int bScan, int aScan) const;

    /// The largest distance between A-scans of the same number. For scans of the same size.
    double largestDistanceTo(const AScanPlaces& other) const;

    /// As items of the record that is being written.
    void write(JsonWriter& json) const;
    /// Nothing if the record does not hold them, as older ones do not. Throws ParsingError if what
    /// it holds makes no sense for so many B-scans.
    static std::optional<AScanPlaces> read(const QJsonObject& record, int nrBScans, int nrAScans);

private:
    QList<Ends> m_ends;
    int m_nrAScans = 0;
    std::optional<Circle> m_circle;
};

} // namespace kelp::command
