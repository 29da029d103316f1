#include "SliceStackBuilding.h"
#include "kelpCheck.h"
#include "kelpTrace.h"

#include <new>

namespace kelp::oct {

namespace {

constexpr kelp::Place placeRegularize{
    "libraries/OCTScan/src/layerSeg/SliceStackGraphQPBO",
    "kelp::oct::SliceStackGraphQPBO::regularizeLayerWithExpectedAngle"};

} // namespace

bool SliceStackGraphQPBO::addRegularization(const LayerNamePtr& layer, const Position& position,
                                            unsigned dx, int delta, unsigned dz, int weight)
{
    const int index = m_properties.getLayerPosition(layer);
    const auto [x, z] = position;
    const bool isInGrid = x < m_nrAScans && z < m_nrBScans;
    if (isInGrid && isMasked(x, z)) {
        return true;
    }
    if (std::uint64_t{x} + dx >= m_nrAScans) {
        kelp::Trace() << "x-dir out of bounds";
        return false;
    }
    if (std::uint64_t{z} + dz >= m_nrBScans) {
        kelp::Trace() << "z-dir out of bounds";
        return false;
    }
    if (isMasked(x + dx, z + dz)) {
        return true;
    }
    const ColumnNodeIds& a = columnNodeIds(index, x, z);
    const ColumnNodeIds& b = columnNodeIds(index, x + dx, z + dz);
    std::int64_t i = a.first;
    std::int64_t j = std::int64_t{b.first} + delta;
    if (delta < 0) {
        i -= delta;
        j -= delta;
    }
    try {
        for (; i <= a.base && j <= b.base; ++i, ++j) {
            m_solver->AddPairwiseTerm(static_cast<int>(i), static_cast<int>(j), 0, weight, weight,
                                      0);
        }
    } catch (const std::bad_alloc& failure) {
        throw kelp::Exception("Error adding regularization.", failure.what());
    }
    return true;
}

bool SliceStackGraphQPBO::regularizeLayerWithExpectedAngle(const LayerNamePtr& layer)
{
    if (leaveIfAborted()) {
        return false;
    }
    const int weightX = static_cast<int>(m_properties.getShapeRegWeightX(layer));
    const int weightZ = static_cast<int>(m_properties.getShapeRegWeightZ(layer));
    const int stepX = static_cast<int>(m_properties.getShapeRegStepX(layer));
    const int stepZ = static_cast<int>(m_properties.getShapeRegStepZ(layer));
    if (weightX != 0 && !addShapeTermsX(layer, weightX, stepX)) {
        return false;
    }
    if (weightZ != 0 && !addShapeTermsZ(layer, weightZ, stepZ)) {
        return false;
    }
    kelp::Trace() << "regularization done";
    return true;
}

/// Chains along each B-scan. A step above 1 leaves columns at the ends of a row without a partner
/// on one side; these are tied to the end.
bool SliceStackGraphQPBO::addShapeTermsX(const LayerNamePtr& layer, int weight, int step)
{
    kelp::Trace() << kelp::locatedText(placeRegularize, "regualrizing in X-direction");
    const int index = m_properties.getLayerPosition(layer);
    const VolumeLayer& tops = *m_properties.getSearchRangeTop(layer);
    const int nX = static_cast<int>(m_nrAScans);
    for (unsigned z = 0; z < m_nrBScans; ++z) {
        if (leaveIfAborted()) {
            return false;
        }
        const auto link = [&](int x, int distance) {
            const auto first = static_cast<unsigned>(x);
            const int delta = int{tops(z, first)} -
                              int{tops(z, static_cast<unsigned>(x + distance))} +
                              m_expectedAngles[columnIndex(index, first, z)].first;
            addRegularization(layer, {first, z}, static_cast<unsigned>(distance), delta, 0, weight);
        };
        for (int x = 0; x + step < nX; ++x) {
            if (!isMasked(static_cast<unsigned>(x), z)) {
                link(x, step);
            }
        }
        for (int k = 1; k < step && k < nX; ++k) {
            if (!isMasked(static_cast<unsigned>(k), z)) {
                link(0, k);
                link(nX - 1 - k, k);
            }
        }
    }
    return true;
}

/// The same across the B-scans; the ends are closed once, after all chains.
bool SliceStackGraphQPBO::addShapeTermsZ(const LayerNamePtr& layer, int weight, int step)
{
    kelp::Trace() << kelp::locatedText(placeRegularize, "regualrizing in Z-direction");
    const int index = m_properties.getLayerPosition(layer);
    const VolumeLayer& tops = *m_properties.getSearchRangeTop(layer);
    const int nZ = static_cast<int>(m_nrBScans);
    const auto link = [&](unsigned x, int z, int distance) {
        const auto first = static_cast<unsigned>(z);
        const int delta = int{tops(first, x)} - int{tops(static_cast<unsigned>(z + distance), x)} +
                          m_expectedAngles[columnIndex(index, x, first)].second;
        addRegularization(layer, {x, first}, 0, delta, static_cast<unsigned>(distance), weight);
    };
    for (int z = 0; z < nZ; ++z) {
        if (leaveIfAborted()) {
            return false;
        }
        for (unsigned x = 0; x < m_nrAScans && z + step < nZ; ++x) {
            if (!isMasked(x, static_cast<unsigned>(z))) {
                link(x, z, step);
            }
        }
    }
    for (int k = 1; k < step && k < nZ; ++k) {
        for (unsigned x = 0; x < m_nrAScans; ++x) {
            if (!isMasked(x, static_cast<unsigned>(k))) {
                link(x, 0, k);
                link(x, nZ - 1 - k, k);
            }
        }
    }
    return true;
}

} // namespace kelp::oct
