#include "ComparisonPool.h"

#include <algorithm>

namespace kelp::compare {

namespace {

void appendAgreement(QList<Agreement>& list, int row, std::optional<int> column,
                     const std::vector<ThicknessPair>& means)
{
    if (!means.empty()) {
        list.append({row, column, means, differencesOf(means)});
    }
}

std::vector<double> scaled(std::vector<double> values, double factor)
{
    for (double& value : values) {
        value *= factor;
    }
    return values;
}

} // namespace

QList<SurfaceSummary> surfacesOf(const ScanComparison& scan)
{
    QList<SurfaceSummary> summaries;
    for (const ComparedSurface& surface : scan.surfaces) {
        const SurfaceOverlap overlap = sumOf(surface.bScans);
        summaries.append({surface.identifier, overlap.onlyA, overlap.onlyB, overlap.statistics(1.0),
                          scan.axialMicrometres ? overlap.statistics(*scan.axialMicrometres)
                                                : DifferenceStatistics()});
    }
    return summaries;
}

void ComparisonPool::add(const ScanComparison& scan)
{
    ++m_nrScans;
    m_axialMicrometres = std::max(m_axialMicrometres, scan.axialMicrometres.value_or(0.0));
    for (const ComparedSurface& surface : scan.surfaces) {
        addSurface(surface, scan.axialMicrometres);
    }
    for (int row = 0; row < EtdrsTable::nrRows; ++row) {
        const auto index = static_cast<std::size_t>(row);
        m_layers[index].aScans.add(scan.thicknesses[index]);
    }
    for (const SectorComparison& sector : scan.sectors) {
        m_layers[static_cast<std::size_t>(sector.row)]
            .sectors[static_cast<std::size_t>(sector.column)]
            .push_back(sector.thickness);
    }
}

void ComparisonPool::addSurface(const ComparedSurface& surface,
                                const std::optional<double>& axialMicrometres)
{
    Surface& pooled = m_surfaces[surface.identifier];
    const SurfaceOverlap overlap = sumOf(surface.bScans);
    pooled.onlyA += overlap.onlyA;
    pooled.onlyB += overlap.onlyB;
    pooled.rows.add(overlap.differences);
    if (axialMicrometres) {
        pooled.micrometres.add(scaled(overlap.differences, *axialMicrometres));
    }
}

QList<SurfaceSummary> ComparisonPool::surfaces() const
{
    QList<SurfaceSummary> summaries;
    for (const QString& identifier : knownSurfaces()) {
        const auto surface = m_surfaces.constFind(identifier);
        if (surface != m_surfaces.constEnd()) {
            summaries.append({identifier, surface->onlyA, surface->onlyB,
                              DifferenceStatistics::ofTally(surface->rows),
                              DifferenceStatistics::ofTally(surface->micrometres)});
        }
    }
    return summaries;
}

QList<Agreement> ComparisonPool::agreements() const
{
    QList<Agreement> agreements;
    for (int row = 0; row < EtdrsTable::nrRows; ++row) {
        const Layer& layer = m_layers[static_cast<std::size_t>(row)];
        std::vector<ThicknessPair> all;
        for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
            const auto& means = layer.sectors[static_cast<std::size_t>(column)];
            all.insert(all.end(), means.begin(), means.end());
            appendAgreement(agreements, row, column, means);
        }
        appendAgreement(agreements, row, std::nullopt, all);
    }
    return agreements;
}

} // namespace kelp::compare
