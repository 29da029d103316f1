#pragma once

#include "AScanPlaces.h"
#include "DeviceFill.h"
#include "EtdrsGrid.h"
#include "ScanSettings.h"
#include "SectorGrid.h"
#include "SegStatistics.h"
#include "Vector3d.h"
#include "kelpVector.h"

#include <QStringList>

#include <vector>

namespace kelp::command {

/// What run.json tells of a scan that was segmented.
struct RunRecord
{
    QString input;  ///< canonical path of the XML file
    QString series; ///< its id
    QString pattern;
    QString eye;
    kelp::Vector3<int> size;
    QString pixelDigest;
    Vector3d spacing;
    ScanSettings settings;
    kelp::oct::FoveaPosition fovea;
    kelp::oct::EtdrsTable etdrs;
    kelp::oct::FillCount fill;
    AScanPlaces places;
    SectorGrid grid;
    QStringList warnings; ///< sentences of qualityWarnings
    QStringList layers;   ///< identifiers of the final surfaces
    QStringList notFound; ///< those of surfacesNotFound
    std::vector<kelp::oct::StepStatistics> steps;
    double seconds = 0.0; ///< from reading to the last file
    std::size_t peakMemoryBytes = 0;

    QByteArray toJson() const;
};

/// "NFL C", the name of one number of the table.
QString etdrsCellName(int row, int column);

} // namespace kelp::command
