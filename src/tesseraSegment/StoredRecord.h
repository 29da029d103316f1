#pragma once

#include "DeviceFill.h"
#include "EtdrsGrid.h"
#include "ScanSettings.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace kelp::command {

/// What the command reads back from run.json.
struct StoredRecord
{
    QString input;
    QString series;
    ScanSettings settings;
    /// Its coverage is that of no A-scans for results of a version that did not count them.
    kelp::oct::EtdrsTable etdrs;
    kelp::oct::FillCount fill;
    /// Nothing for results of a version that did not look for any.
    std::optional<QStringList> warnings;
    /// Surfaces that are no segmentation; empty for results of a version that did not tell them.
    QStringList notFound;

    int nrWarnings() const { return warnings ? warnings->size() : 0; }

    /// Nothing if the file is not there or is no record of a scan that was segmented.
    static std::optional<StoredRecord> read(const QString& path);
};

} // namespace kelp::command
