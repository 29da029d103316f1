#pragma once

#include "ScanComparison.h"
#include "Tally.h"

#include <QList>
#include <QMap>

#include <array>
#include <optional>
#include <vector>

namespace kelp::compare {

/// The differences of one surface, in rows and in micrometres.
struct SurfaceSummary
{
    QString identifier;
    int onlyA = 0;
    int onlyB = 0;
    DifferenceStatistics rows;
    /// Of what has a known height of a row.
    DifferenceStatistics micrometres;
};

/// The surfaces of one scan.
QList<SurfaceSummary> surfacesOf(const ScanComparison& scan);

/// The sector means of several scans of one layer, against each other.
struct Agreement
{
    int row = 0;
    std::optional<int> column; ///< none: all sectors together
    std::vector<ThicknessPair> means;
    DifferenceStatistics statistics;
};

/// What several scans amount to together. It keeps what the figures over all of them need, exactly,
/// and nothing of the scans themselves.
class ComparisonPool
{
public:
    void add(const ScanComparison& scan);

    int getNrScans() const { return m_nrScans; }
    QList<SurfaceSummary> surfaces() const;
    /// For each layer, each sector that some scan has, then all of them together.
    QList<Agreement> agreements() const;

    /// The A-scans that both have, of one row of the ETDRS table.
    const Tally<ThicknessPair>& thicknesses(int row) const
    {
        return m_layers[static_cast<std::size_t>(row)].aScans;
    }
    /// The highest row of all scans; 0 where nothing tells it.
    double getAxialMicrometres() const { return m_axialMicrometres; }

private:
    using EtdrsTable = kelp::oct::EtdrsTable;

    struct Surface
    {
        int onlyA = 0;
        int onlyB = 0;
        Tally<double> rows;
        Tally<double> micrometres;
    };
    struct Layer
    {
        Tally<ThicknessPair> aScans;
        std::array<std::vector<ThicknessPair>, EtdrsTable::nrColumns> sectors;
    };

    void addSurface(const ComparedSurface& surface, const std::optional<double>& axialMicrometres);

    int m_nrScans = 0;
    double m_axialMicrometres = 0.0;
    QMap<QString, Surface> m_surfaces;
    std::array<Layer, EtdrsTable::nrRows> m_layers;
};

} // namespace kelp::compare
