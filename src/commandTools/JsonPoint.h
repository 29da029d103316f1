#pragma once

#include "CoordOnLocalizer.h"

#include <QJsonObject>

#include <optional>

namespace kelp::command {

class JsonWriter;

/// A place on the localizer as two items of the object that is being written.
void writePoint(JsonWriter& json, const CoordOnLocalizer& point);

/// Nothing if the object does not hold both.
std::optional<CoordOnLocalizer> readPoint(const QJsonObject& object);

} // namespace kelp::command
