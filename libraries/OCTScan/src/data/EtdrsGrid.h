#pragma once

#include "CoordOnLocalizer.h"
#include "LayerName.h"
#include "OCTScanSegmentation.h"

#include <QList>
#include <QString>

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

/// The table of mean thicknesses: rows are pairs of surfaces, columns sectors.
struct EtdrsTable
{
    static constexpr int nrRows = 6;
    static constexpr int nrColumns = 9;

    /// Micrometres; empty where no A-scan counts.
    std::array<std::array<std::optional<double>, nrColumns>, nrRows> means;

    /// "NFL", "GCL + IPL", ...
    static QString rowLabel(int row);
    /// "C", "N1", "N2", "S1", ...
    static QString columnLabel(int column);
    static EtdrsSector columnSector(int column);
    static LayerNamePtr topLayer(int row);
    static LayerNamePtr bottomLayer(int row);
    /// "-" or the mean with two decimals.
    static QString cellText(const std::optional<double>& mean);

    /// A line of column labels behind an empty cell, then per row its label and its cells.
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
