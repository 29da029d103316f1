#include "JsonPoint.h"

#include "JsonWriter.h"

namespace kelp::command {

namespace {

const QString keyOfX = "xMillimetres";
const QString keyOfY = "yMillimetres";

} // namespace

void writePoint(JsonWriter& json, const CoordOnLocalizer& point)
{
    json.value(keyOfX, point.x);
    json.value(keyOfY, point.y);
}

std::optional<CoordOnLocalizer> readPoint(const QJsonObject& object)
{
    const QJsonValue x = object.value(keyOfX);
    const QJsonValue y = object.value(keyOfY);
    if (!x.isDouble() || !y.isDouble()) {
        return std::nullopt;
    }
    return CoordOnLocalizer(x.toDouble(), y.toDouble());
}

} // namespace kelp::command
