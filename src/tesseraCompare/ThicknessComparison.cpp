#include "ThicknessComparison.h"

#include <array>
#include <cmath>

namespace kelp::compare {

namespace {

using kelp::oct::EtdrsSector;
using kelp::oct::EtdrsTable;

template <typename Content>
using PerSector = std::array<Content, EtdrsTable::nrColumns>;

/// The column of the table; none outside the grid.
std::optional<std::size_t> columnOf(EtdrsSector sector)
{
    for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
        if (EtdrsTable::columnSector(column) == sector) {
            return static_cast<std::size_t>(column);
        }
    }
    return std::nullopt;
}

/// The thickness of one row of the table over a scan.
class Layer
{
public:
    Layer(const ScanSurfaces& scan, int row, double axialMicrometres)
        : m_top(scan.surfaces.value(EtdrsTable::topLayer(row)->getIdentifier())),
          m_bottom(scan.surfaces.value(EtdrsTable::bottomLayer(row)->getIdentifier())),
          m_axialMicrometres(axialMicrometres)
    {
    }

    /// 0 where one of the surfaces is not there.
    int getNrBScans() const { return std::min(m_top.getNrBScans(), m_bottom.getNrBScans()); }
    int getNrAScans() const { return std::min(m_top.getNrAScans(), m_bottom.getNrAScans()); }

    /// Micrometres; not-a-number where one of the surfaces has no position.
    double at(int bScan, int aScan) const
    {
        return std::abs(m_bottom.at(bScan, aScan) - m_top.at(bScan, aScan)) * m_axialMicrometres;
    }

private:
    SurfaceRows m_top;
    SurfaceRows m_bottom;
    double m_axialMicrometres;
};

/// take(bScan, aScan, pair) for each A-scan that both have.
template <typename Take>
void forCommonAScans(const Layer& a, const Layer& b, const Take& take)
{
    const int nrBScans = std::min(a.getNrBScans(), b.getNrBScans());
    const int nrAScans = std::min(a.getNrAScans(), b.getNrAScans());
    for (int bScan = 0; bScan < nrBScans; ++bScan) {
        for (int aScan = 0; aScan < nrAScans; ++aScan) {
            const ThicknessPair pair{a.at(bScan, aScan), b.at(bScan, aScan)};
            if (!std::isnan(pair.difference())) {
                take(bScan, aScan, pair);
            }
        }
    }
}

ThicknessPair meanOf(const std::vector<ThicknessPair>& pairs)
{
    ThicknessPair sum;
    for (const ThicknessPair& pair : pairs) {
        sum.a += pair.a;
        sum.b += pair.b;
    }
    const auto count = static_cast<double>(pairs.size());
    return {sum.a / count, sum.b / count};
}

struct SectorMean
{
    double sum = 0.0;
    int count = 0;
};

PerSector<SectorMean> sectorMeans(const SectorSide& side, int row)
{
    const Layer layer(side.scan, row, side.axialMicrometres);
    PerSector<SectorMean> means{};
    for (int bScan = 0; bScan < layer.getNrBScans(); ++bScan) {
        for (int aScan = 0; aScan < layer.getNrAScans(); ++aScan) {
            const double thickness = layer.at(bScan, aScan);
            const auto column = columnOf(side.grid.sectorOf(side.places.at(bScan, aScan)));
            if (column && !std::isnan(thickness)) {
                means[*column].sum += thickness;
                ++means[*column].count;
            }
        }
    }
    return means;
}

} // namespace

DifferenceStatistics differencesOf(const std::vector<ThicknessPair>& pairs)
{
    std::vector<double> differences;
    differences.reserve(pairs.size());
    for (const ThicknessPair& pair : pairs) {
        differences.push_back(pair.difference());
    }
    return DifferenceStatistics::of(differences);
}

std::vector<ThicknessPair> thicknessPairs(const ScanSurfaces& a, const ScanSurfaces& b, int row,
                                          double axialMicrometres)
{
    std::vector<ThicknessPair> pairs;
    forCommonAScans(Layer(a, row, axialMicrometres), Layer(b, row, axialMicrometres),
                    [&](int, int, const ThicknessPair& pair) { pairs.push_back(pair); });
    return pairs;
}

QList<SectorComparison> compareSectors(const ScanSurfaces& a, const ScanSurfaces& b,
                                       double axialMicrometres, const AScanPlaces& places,
                                       const SectorGrid& grid)
{
    QList<SectorComparison> sectors;
    for (int row = 0; row < EtdrsTable::nrRows; ++row) {
        PerSector<std::vector<ThicknessPair>> pairs;
        forCommonAScans(Layer(a, row, axialMicrometres), Layer(b, row, axialMicrometres),
                        [&](int bScan, int aScan, const ThicknessPair& pair) {
                            const auto column = columnOf(grid.sectorOf(places.at(bScan, aScan)));
                            if (column) {
                                pairs[*column].push_back(pair);
                            }
                        });
        for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
            const auto& found = pairs[static_cast<std::size_t>(column)];
            if (!found.empty()) {
                const int count = static_cast<int>(found.size());
                sectors.append({row, column, count, count, meanOf(found), differencesOf(found)});
            }
        }
    }
    return sectors;
}

QList<SectorComparison> compareSectorMeans(const SectorSide& a, const SectorSide& b)
{
    QList<SectorComparison> sectors;
    for (int row = 0; row < EtdrsTable::nrRows; ++row) {
        const auto meansA = sectorMeans(a, row);
        const auto meansB = sectorMeans(b, row);
        for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
            const SectorMean& inA = meansA[static_cast<std::size_t>(column)];
            const SectorMean& inB = meansB[static_cast<std::size_t>(column)];
            if (inA.count > 0 && inB.count > 0) {
                const ThicknessPair thickness{inA.sum / inA.count, inB.sum / inB.count};
                sectors.append({row, column, inA.count, inB.count, thickness, std::nullopt});
            }
        }
    }
    return sectors;
}

} // namespace kelp::compare
