#pragma once

#include "CoordOnLocalizer.h"
#include "EtdrsGrid.h"

#include <QJsonObject>

#include <optional>

namespace kelp::command {

class JsonWriter;

/// Where the sectors of a scan are laid.
struct SectorGrid
{
    CoordOnLocalizer center; ///< the fovea, or the scan's centre where none was found
    bool rightEye = false;

    static SectorGrid of(const OCTScan& scan, const CoordOnLocalizer& center);

    kelp::oct::EtdrsSector sectorOf(const CoordOnLocalizer& point) const
    {
        return kelp::oct::etdrsSector(point, center, rightEye);
    }

    void write(JsonWriter& json) const;
    /// Nothing if the record does not hold it.
    static std::optional<SectorGrid> read(const QJsonObject& record);
};

} // namespace kelp::command
