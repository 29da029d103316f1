#pragma once

#include "CommandLine.h"
#include "EtdrsGrid.h"
#include "SegStatistics.h"
#include "Vector3d.h"
#include "kelpVector.h"

#include <QJsonObject>
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

/// What run.json tells of a scan that was segmented.
struct RunRecord
{
    QString input;  ///< canonical path of the XML file
    QString series; ///< its id
    QString pattern;
    QString eye;
    kelp::Vector3<int> size;
    Vector3d spacing;
    ScanSettings settings;
    kelp::oct::FoveaPosition fovea;
    kelp::oct::EtdrsTable etdrs;
    QStringList layers; ///< identifiers of the final surfaces
    QList<kelp::oct::StepStatistics> steps;
    double seconds = 0.0; ///< from reading to the last file
    std::size_t peakMemoryBytes = 0;

    QByteArray toJson() const;
};

/// What the command reads back from run.json.
struct StoredRecord
{
    QString input;
    QString series;
    ScanSettings settings;
    kelp::oct::EtdrsTable etdrs;

    /// Nothing if the file is not there or is no record of a scan that was segmented.
    static std::optional<StoredRecord> read(const QString& path);
};

/// Between the command and the processes that segment.
QJsonObject settingsToJson(const ScanSettings& settings);
/// Nothing if something is missing or of another kind.
std::optional<ScanSettings> settingsFromJson(const QJsonObject& object);

/// In words, where two differ; empty if they do not.
QString describeDifference(const ScanSettings& recorded, const ScanSettings& wanted);

/// "NFL C", the name of one number of the table.
QString etdrsCellName(int row, int column);

} // namespace kelp::command
