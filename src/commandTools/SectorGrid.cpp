#include "SectorGrid.h"

#include "JsonPoint.h"
#include "JsonWriter.h"

namespace kelp::command {

namespace {

const QString keyOfGrid = "etdrsGrid";
const QString keyOfEye = "rightEye";

} // namespace

SectorGrid SectorGrid::of(const OCTScan& scan, const CoordOnLocalizer& center)
{
    return {center, kelp::oct::isRightEye(scan)};
}

void SectorGrid::write(JsonWriter& json) const
{
    json.beginObject(keyOfGrid);
    writePoint(json, center);
    json.value(keyOfEye, rightEye);
    json.endObject();
}

std::optional<SectorGrid> SectorGrid::read(const QJsonObject& record)
{
    const QJsonObject object = record.value(keyOfGrid).toObject();
    const auto center = readPoint(object);
    if (!center || !object.value(keyOfEye).isBool()) {
        return std::nullopt;
    }
    return SectorGrid{*center, object.value(keyOfEye).toBool()};
}

} // namespace kelp::command
