#include "CutQuality.h"

#include "kelpCheck.h"

#include <QVector>

#include <algorithm>
#include <numeric>
#include <vector>

namespace kelp::oct {

namespace {

constexpr Place place{"libraries/OCTScan/src/layerSeg/CutQuality", "kelp::oct::measureCutQuality"};

/// Rows that are open to a surface at one column.
struct OpenRows
{
    int first = 0;
    int last = 0;

    bool areNone() const { return first > last; }
};

/// A surface of the plan.
struct Surface
{
    VolumeLayerPtr top;
    VolumeLayerPtr bottom;
    int group = 0; ///< place of the first of the surfaces that hard distances tie together

    // At one column.
    OpenRows range{};
    OpenRows open{};        ///< that the surfaces above leave to it
    bool isBlocked = false; ///< of the first of a group: for the whole group
};

/// What a pair of surfaces must keep at every column.
struct HardDistance
{
    int top = 0; ///< places in the plan
    int bottom = 0;
    VolumeLayerPtr minimum;
    VolumeLayerPtr maximum;
};

QVector<Surface> surfacesOf(const SliceStackProperties& properties)
{
    QVector<Surface> surfaces;
    for (const LayerNamePtr& name : properties.getLayerNames()) {
        surfaces.append({properties.getSearchRangeTop(name), properties.getSearchRangeBottom(name),
                         surfaces.size()});
    }
    return surfaces;
}

int placeOf(const QList<LayerNamePtr>& names, const LayerNamePtr& name)
{
    const auto found = std::find_if(names.begin(), names.end(), [&](const LayerNamePtr& candidate) {
        return *candidate == *name;
    });
    return found == names.end() ? -1 : static_cast<int>(found - names.begin());
}

/// From the top down, those that the graph takes: it does not see a pair whose order is not that of
/// the plan.
QVector<HardDistance> distancesOf(const SliceStackProperties& properties)
{
    const QList<LayerNamePtr> names = properties.getLayerNames();
    QVector<HardDistance> distances;
    for (const auto& [top, bottom] : properties.getInterSurfPairs()) {
        const HardDistance distance{placeOf(names, top), placeOf(names, bottom),
                                    properties.getInterSurfDistanceMin(top, bottom),
                                    properties.getInterSurfDistanceMax(top, bottom)};
        if (distance.top >= 0 && distance.top < distance.bottom) {
            distances.append(distance);
        }
    }
    std::sort(distances.begin(), distances.end(),
              [](const HardDistance& a, const HardDistance& b) { return a.top < b.top; });
    return distances;
}

/// The search ranges and hard distances of a plan, column by column.
class Room
{
public:
    explicit Room(const SliceStackProperties& properties)
        : m_surfaces(surfacesOf(properties)), m_distances(distancesOf(properties))
    {
        for (const HardDistance& distance : m_distances) {
            m_surfaces[distance.bottom].group = m_surfaces[distance.top].group;
        }
    }

    void enter(unsigned z, unsigned x)
    {
        for (Surface& surface : m_surfaces) {
            surface.range = {(*surface.top)(z, x), (*surface.bottom)(z, x) - 1};
            surface.open = surface.range;
            surface.isBlocked = false;
        }
        // A surface is the upper one of one pair at most and the lower one of one at most, so the
        // pairs form chains. A chain has room if what the upper surface of each pair leaves to the
        // lower one, from the top down, is never nothing.
        for (const HardDistance& distance : m_distances) {
            keep(m_surfaces[distance.top], m_surfaces[distance.bottom],
                 int{(*distance.minimum)(z, x)}, int{(*distance.maximum)(z, x)});
        }
    }

    // At the column entered.

    bool isTop(int surface, int row) const { return row == m_surfaces[surface].range.first; }
    bool isBottom(int surface, int row) const { return row == m_surfaces[surface].range.last; }
    /// For the surface and all that are tied to it.
    bool isLeft(int surface) const { return !m_surfaces[m_surfaces[surface].group].isBlocked; }

private:
    void keep(const Surface& upperSurface, Surface& lower, int minimum, int maximum)
    {
        OpenRows upper = upperSurface.open;
        const int lowestAtMaximum = lower.range.first - maximum;
        if (upperSurface.range.first < lowestAtMaximum) {
            // The graph then forbids this row too, from which the lower surface's first row is at
            // exactly the maximum.
            upper.first = std::max(upper.first, lowestAtMaximum + 1);
        }
        lower.open.first = std::max(lower.open.first, upper.first + minimum);
        lower.open.last = std::min(lower.open.last, upper.last + maximum);
        if (minimum > maximum || upper.areNone() || lower.open.areNone()) {
            m_surfaces[lower.group].isBlocked = true;
        }
    }

    QVector<Surface> m_surfaces;
    QVector<HardDistance> m_distances;
};

} // namespace

QualityCounts& QualityCounts::operator+=(const QualityCounts& other)
{
    aScans += other.aScans;
    atTop += other.atTop;
    atBottom += other.atBottom;
    withoutRoom += other.withoutRoom;
    withoutRow += other.withoutRow;
    return *this;
}

QualityCounts SurfaceQuality::all() const
{
    return std::accumulate(
        bScans.begin(), bScans.end(), QualityCounts(),
        [](QualityCounts sum, const QualityCounts& part) { return sum += part; });
}

std::vector<SurfaceQuality> measureCutQuality(const SliceStackProperties& properties,
                                              const MaskMatrix& mask,
                                              const QList<VolumeLayerPtr>& layers,
                                              const IsWithoutRow& isWithoutRow)
{
    const auto [nrBScans, nrAScans] = properties.getDimensions();
    const int nrLayers = properties.getNrOfLayers();
    check(layers.size() == nrLayers, place, "Number of layers does not match the plan.");
    check(mask.rows == nrBScans && mask.columns == nrAScans, place,
          "Segmentation mask does not match the plan.");

    Room room(properties);
    std::vector<SurfaceQuality> qualities;
    for (const LayerNamePtr& name : properties.getLayerNames()) {
        qualities.push_back({name->getIdentifier(), {}});
    }
    std::vector<QualityCounts> counts(static_cast<std::size_t>(nrLayers));
    for (unsigned z = 0; z < nrBScans; ++z) {
        std::fill(counts.begin(), counts.end(), QualityCounts());
        for (unsigned x = 0; x < nrAScans; ++x) {
            if (mask(z, x) != 0) {
                continue;
            }
            room.enter(z, x);
            for (int layer = 0; layer < nrLayers; ++layer) {
                const bool hasRow = !isWithoutRow(layer, z, x);
                const int row = (*layers.at(layer))(z, x);
                counts[static_cast<std::size_t>(layer)] +=
                    {1, hasRow && room.isTop(layer, row), hasRow && room.isBottom(layer, row),
                     !room.isLeft(layer), !hasRow};
            }
        }
        for (int layer = 0; layer < nrLayers; ++layer) {
            qualities[static_cast<std::size_t>(layer)].bScans.push_back(
                counts[static_cast<std::size_t>(layer)]);
        }
    }
    return qualities;
}

} // namespace kelp::oct
