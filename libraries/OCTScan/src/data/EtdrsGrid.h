#pragma once

#include "CoordOnLocalizer.h"
#include "EtdrsCircles.h"
#include "LayerName.h"
#include "OCTScanSegmentation.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <array>
#include <optional>

namespace kelp::oct {

/// The nine sectors around the fovea of the Early Treatment Diabetic Retinopathy Study: circles of
/// 1, 3 and 6 mm diameter, rings cut by the diagonals. The numbers are the sector ids.
enum class EtdrsSector
{
    C = 0,
    N1,
    N2,
    S1,
    S2,
    I1,
    I2,
    T1,
    T2,
    Outside
};

/// The sector of a point. rightEye: nasal lies at positive x. Points on a circle belong to its
/// inside, points on a diagonal to nasal or temporal.
EtdrsSector etdrsSector(const CoordOnLocalizer& point, const CoordOnLocalizer& fovea,
                        bool rightEye);

/// Whether the localizer's "Laterality" is "R".
bool isRightEye(const OCTScan& scan);

/// What the means of one sector stand on, in A-scans.
struct SectorCoverage
{
    int counted = 0; ///< inside the scan and not masked
    int inside = 0;  ///< inside the scan
    /// The scan's grid, continued beyond its borders as it is spaced, would have so many: B-scans
    /// along their lines, and in volumes further B-scans before the first and behind the last.
    /// Circles are closed and have no more than they hold.
    int expected = 0;

    /// The scan's border takes a part of the sector that matters.
    bool isCut() const;
};

/// The table of mean thicknesses: rows are pairs of surfaces, columns sectors.
struct EtdrsTable
{
    static constexpr int nrRows = 6;
    static constexpr int nrColumns = 9;

    /// Micrometres; empty where no A-scan counts.
    std::array<std::array<std::optional<double>, nrColumns>, nrRows> means;

    std::array<SectorCoverage, nrColumns> coverage;

    /// Labels of the sectors that the scan's border cuts, in the order of the columns.
    QStringList cutSectors() const;
    /// "Sectors T2, S2 are cut by the border of the scan"; empty if none is.
    QString coverageWarning() const;

    /// "NFL", "GCL + IPL", ...
    static QString rowLabel(int row);
    /// "C", "N1", "N2", "S1", ...
    static QString columnLabel(int column);
    static EtdrsSector columnSector(int column);
    static LayerNamePtr topLayer(int row);
    static LayerNamePtr bottomLayer(int row);
    /// "-" or the mean with two decimals.
    static QString cellText(const std::optional<double>& mean);

    /// A line of column labels behind an empty cell, then per row its label and its cells. Two more
    /// lines tell the A-scans that each mean stands on, and how many a whole sector would have.
    QString toTabSeparated() const;
};

/// The mean over all A-scans of a sector that are not masked, each with the same weight.
///
/// Which layers of a row are missing decides what happens: with requireAllLayers the Assertion of
/// getVolumeLayer passes through; otherwise a row whose layers are not there stays empty.
EtdrsTable measureEtdrs(const OCTScanSegPtr& segmentation, const CoordOnLocalizer& fovea,
                        bool requireAllLayers = true);

/// The stored fovea, or the scan's centre where none is set.
CoordOnLocalizer foveaOrCenter(const OCTScanSegPtr& segmentation);

} // namespace kelp::oct
