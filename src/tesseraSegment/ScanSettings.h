#pragma once

#include "CommandLine.h"
#include "JsonWriter.h"

#include <QJsonObject>
#include <QList>
#include <QPolygonF>

#include <optional>

namespace kelp::command {

/// How a scan is segmented and what is written: all that the results depend on beside the input.
struct ScanSettings
{
    kelp::oct::SegmentationChain chain = kelp::oct::SegmentationChain::Normal;
    bool etdrsMask = false;
    bool centerMask = false;
    QList<QPolygonF> maskPolygons;
    Formats formats;

    friend bool operator==(const ScanSettings&, const ScanSettings&) = default;
};

/// The items of an object that is being written.
void writeSettings(JsonWriter& json, const ScanSettings& settings);

/// Between the command and the processes that segment.
QJsonObject settingsToJson(const ScanSettings& settings);
/// Nothing if something is missing or of another kind.
std::optional<ScanSettings> settingsFromJson(const QJsonObject& object);

/// In words, where two differ; empty if they do not.
QString describeDifference(const ScanSettings& recorded, const ScanSettings& wanted);

} // namespace kelp::command
