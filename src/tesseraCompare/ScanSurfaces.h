#pragma once

#include "AScanPlaces.h"
#include "SectorGrid.h"
#include "SurfaceRows.h"

#include <QMap>
#include <QString>
#include <QStringList>

#include <array>
#include <optional>

namespace kelp::compare {

using command::AScanPlaces;
using command::SectorGrid;

/// What a run's record tells of the scan.
struct ScanFacts
{
    QString version; ///< of the program that wrote it
    QString chain;
    QStringList warnings;          ///< sentences on what is not to be trusted
    double axialMillimetres = 0.0; ///< from row to row
    double aScanMillimetres = 0.0; ///< from A-scan to A-scan
    double bScanMillimetres = 0.0; ///< from B-scan to B-scan; of no meaning for a single one
    std::optional<AScanPlaces> places;
    std::optional<SectorGrid> grid;
    /// By column of the ETDRS table: the border of the scan cuts the sector around this grid.
    std::array<bool, kelp::oct::EtdrsTable::nrColumns> cutSectors{};
    /// Tells one acquisition from another; empty where the record is older.
    QString pixelDigest;
    /// Surfaces that have positions in the files, but were not found in the scan.
    QStringList notFound;
};

/// What one side of a comparison holds of one scan.
struct ScanSurfaces
{
    QString path; ///< of its folder, its table, or its tables with their pattern
    int nrBScans = 0;
    int nrAScans = 0;
    /// Tables may end before the last A-scan, so that their number of A-scans says little.
    bool mayEndEarly = false;
    /// By identifier; without those that were not found.
    QMap<QString, SurfaceRows> surfaces;
    std::optional<ScanFacts> facts; ///< of results of tessera-segment only
    QStringList notes;              ///< sentences on what was left aside
};

/// "11 B-scans of 768 A-scans".
QString sizeText(const ScanSurfaces& scan);

/// The identifiers of the final surfaces from the inner to the outer retina.
QStringList knownSurfaces();

/// The whole content. Throws IOFailure with path and reason for what is no readable file or larger
/// than anything that is compared.
QByteArray readWholeFile(const QString& path);

/// Throws ParsingError with the path: what the file holds cannot be used.
[[noreturn]] void refuseFile(const QString& path, const QString& text);

} // namespace kelp::compare
