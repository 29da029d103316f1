#pragma once

#include "SurfaceComparison.h"
#include "ThicknessComparison.h"

#include <QMap>
#include <QString>
#include <QStringList>

#include <array>
#include <optional>
#include <vector>

namespace kelp::compare {

/// What the user says where the inputs do not tell it or are not to be followed.
struct ComparisonChoices
{
    std::optional<double> axialMicrometres;
    std::optional<CoordOnLocalizer> fovea; ///< only where scans are compared by place
    /// A-scans of the same number lie at the same place of the eye, though the images differ.
    bool samePlaces = false;
};

struct ComparedSurface
{
    QString identifier;
    std::vector<SurfaceOverlap> bScans;
};

/// All that is found between A's and B's surfaces of one scan.
struct ScanComparison
{
    QString name;
    ScanSurfaces a;
    ScanSurfaces b;
    /// A-scans of the same number are held against each other. Else there are sector means alone,
    /// each side's over its own A-scans.
    bool byPlace = false;
    /// Height of a row; empty where nothing tells it and where scans are not compared by place.
    std::optional<double> axialMicrometres;
    /// Empty if not by place. In the order of the surfaces.
    QList<ComparedSurface> surfaces;
    /// By row of the ETDRS table: the A-scans of the whole scan that both have; empty if not by
    /// place.
    std::array<std::vector<ThicknessPair>, kelp::oct::EtdrsTable::nrRows> thicknesses;
    QList<SectorComparison> sectors;
    QStringList notes; ///< sentences about what was not compared, or with care

    /// Of the side that has them: tables have none.
    const ScanFacts* facts() const;
};

/// Throws RuntimeException if A and B cannot be compared at all.
ScanComparison compareScans(const QString& name, const ScanSurfaces& a, const ScanSurfaces& b,
                            const ComparisonChoices& choices);

} // namespace kelp::compare
