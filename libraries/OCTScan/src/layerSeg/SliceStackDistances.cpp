#include "SliceStackBuilding.h"
#include "kelpCheck.h"
#include "kelpTrace.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace kelp::oct {

namespace {

constexpr kelp::Place placeSoft{"libraries/OCTScan/src/layerSeg/SliceStackGraphQPBO",
                                "kelp::oct::SliceStackGraphQPBO::addSoftDistances"};

int energyOf(float weight)
{
    return static_cast<int>(weight * 1000.0F);
}

} // namespace

void SliceStackGraphQPBO::connectSubgraphs(const LayerNamePtr& top, const LayerNamePtr& bottom,
                                           const VolumeLayerPtr& minimum,
                                           const VolumeLayerPtr& maximum)
{
    if (leaveIfAborted()) {
        return;
    }
    const int topLayer = m_properties.getLayerPosition(top);
    const int bottomLayer = m_properties.getLayerPosition(bottom);
    const VolumeLayer& topRange = *m_properties.getSearchRangeTop(top);
    const VolumeLayer& bottomRange = *m_properties.getSearchRangeTop(bottom);
    for (unsigned x = 0; x < m_nrAScans; ++x) {
        if (leaveIfAborted()) {
            return;
        }
        for (unsigned z = 0; z < m_nrBScans; ++z) {
            if (isMasked(x, z)) {
                continue;
            }
            const ColumnNodeIds& topIds = columnNodeIds(topLayer, x, z);
            const ColumnNodeIds& bottomIds = columnNodeIds(bottomLayer, x, z);
            const int offset = int{bottomRange(z, x)} - int{topRange(z, x)};
            limitMaximum(topIds, bottomIds, int{(*maximum)(z, x)} - offset);
            limitMinimum(topIds, bottomIds, int{(*minimum)(z, x)} - offset);
        }
    }
}

/// A top surface forces the bottom one to lie at most the maximum below it; distance is that
/// between the first nodes. Where the range of the bottom surface starts too deep for the uppermost
/// rows of the top one, these rows are forbidden, the one at the limit too.
void SliceStackGraphQPBO::limitMaximum(const ColumnNodeIds& top, const ColumnNodeIds& bottom,
                                       int distance)
{
    std::int64_t i = top.first;
    std::int64_t j = std::int64_t{bottom.first} + distance;
    if (j < bottom.first) {
        i += bottom.first - j;
        j = bottom.first;
        for (std::int64_t id = i; id >= top.first; --id) {
            forbidIfNode(id);
        }
    }
    for (; i <= top.base && j <= bottom.base; ++i, ++j) {
        m_solver->AddPairwiseTerm(static_cast<int>(i), static_cast<int>(j), 0, 0, hardWeight, 0);
    }
}

/// A bottom surface forces the top one to lie at least the minimum above it. The rows of the bottom
/// surface that no row of the top one allows are forbidden, here without the one at the limit.
void SliceStackGraphQPBO::limitMinimum(const ColumnNodeIds& top, const ColumnNodeIds& bottom,
                                       int distance)
{
    std::int64_t i = top.first;
    std::int64_t j = std::int64_t{bottom.first} + distance;
    if (j < bottom.first) {
        i += bottom.first - j;
        j = bottom.first;
    }
    for (std::int64_t id = j - 1; id >= bottom.first; --id) {
        forbidIfNode(id);
    }
    for (; i <= top.base && j <= bottom.base; ++i, ++j) {
        m_solver->AddPairwiseTerm(static_cast<int>(j), static_cast<int>(i), 0, 0, hardWeight, 0);
    }
}

void SliceStackGraphQPBO::addUnaryIfNode(std::int64_t id, int E0, int E1)
{
    if (id < m_solver->GetNodeNum()) {
        m_solver->AddUnaryTerm(static_cast<int>(id), E0, E1);
    }
}

void SliceStackGraphQPBO::forbidIfNode(std::int64_t id)
{
    if (id < m_solver->GetNodeNum()) {
        m_solver->AddToUnaryCapacity(static_cast<int>(id), hardWeight);
    }
}

/// Whether a soft term at the position has a column to go to.
bool SliceStackGraphQPBO::isUsable(const Position& position) const
{
    const auto [x, z] = position;
    if (x < m_nrAScans && z < m_nrBScans) {
        return !isMasked(x, z);
    }
    if (x > m_nrAScans || z > m_nrBScans) {
        kelp::Trace() << "while adding statistical information: position does not lie on the area "
                         "that will be segmented";
    }
    return false;
}

/// W times the absolute deviation from the expected distance. The columns are aligned by the
/// bottoms of their ranges although the ids count from the tops: between columns of different
/// heights the distance moves by the difference. That is on purpose: the weights are tuned with it.
///
/// The loops over ids do not stop at the end of a column where the distance reaches beyond it.
void SliceStackGraphQPBO::addBetweenSurfaces(int top, int bottom, const Position& position,
                                             const ExpectedDistance& expected)
{
    if (!isUsable(position)) {
        return;
    }
    const auto [x, z] = position;
    const auto rangeBottom = [&, x = x, z = z](int layer) {
        return int{(*m_properties.getSearchRangeBottom(m_properties.getLayerName(layer)))(z, x)};
    };
    const ColumnNodeIds& a = columnNodeIds(top, x, z);
    const ColumnNodeIds& b = columnNodeIds(bottom, x, z);
    const int weight = energyOf(expected.weight);
    std::int64_t i = a.first;
    std::int64_t j =
        std::int64_t{expected.distance} - (rangeBottom(bottom) - rangeBottom(top)) + b.first;
    if (j < b.first) {
        for (; j < b.first; ++i, ++j) {
            addUnaryIfNode(i, 0, weight);
        }
    } else {
        for (std::int64_t id = b.first; id < j && id <= b.base; ++id) {
            addUnaryIfNode(id, 0, weight);
        }
    }
    for (; i <= a.base && j <= b.base; ++i, ++j) {
        m_solver->AddPairwiseTerm(static_cast<int>(i), static_cast<int>(j), 0, weight, weight, 0);
    }
    for (; j <= b.base; ++j) {
        addUnaryIfNode(j, weight, 0);
    }
    for (; i <= a.base; ++i) {
        addUnaryIfNode(i, weight, 0);
    }
}

/// Draws the surface to a number of rows below its range's top. Ids are unsigned, so a target above
/// the very first nodes of the graph counts as one below its last.
void SliceStackGraphQPBO::addToBottomOnly(int bottom, const Position& position,
                                          const ExpectedDistance& expected)
{
    if (!isUsable(position)) {
        return;
    }
    const ColumnNodeIds& ids = columnNodeIds(bottom, position.x, position.z);
    const int weight = energyOf(expected.weight);
    const std::uint32_t target = ids.first + static_cast<std::uint32_t>(expected.distance);
    for (std::uint32_t id = ids.first; id <= ids.base; ++id) {
        const bool isAbove = id < target;
        addUnaryIfNode(id, isAbove ? 0 : weight, isAbove ? weight : 0);
    }
}

/// Draws the surface to a number of rows above its base node, with unsigned ids as well.
void SliceStackGraphQPBO::addToTopOnly(int top, const Position& position,
                                       const ExpectedDistance& expected)
{
    if (!isUsable(position)) {
        return;
    }
    const ColumnNodeIds& ids = columnNodeIds(top, position.x, position.z);
    const int weight = energyOf(expected.weight);
    const auto distance = static_cast<std::uint32_t>(expected.distance);
    for (std::uint32_t id = ids.first; id <= ids.base; ++id) {
        const bool isAbove = id + distance < ids.base;
        addUnaryIfNode(id, isAbove ? 0 : weight, isAbove ? weight : 0);
    }
}

template <typename ExpectedAt, typename EndRow>
bool SliceStackGraphQPBO::addSoftDistances(const LayerNamePtr& top, const LayerNamePtr& bottom,
                                           const VolumeLayerPtr& offsets, const double step[2],
                                           ExpectedAt&& expectedAt, EndRow&& endRow)
{
    const int topLayer = m_properties.hasLayer(top) ? m_properties.getLayerPosition(top) : -1;
    const int bottomLayer =
        m_properties.hasLayer(bottom) ? m_properties.getLayerPosition(bottom) : -1;
    if (topLayer < 0 && bottomLayer < 0) {
        return false;
    }
    kelp::check(step[0] >= 1.0 && step[1] >= 1.0, placeSoft, "Step is below 1.");
    const bool isOneSided = topLayer < 0 || bottomLayer < 0;
    kelp::check(!isOneSided || !offsets.isNull(), placeSoft, "Offsets are null.");
    for (unsigned z = 0; z < m_nrBScans; z = static_cast<unsigned>(z + step[0])) {
        if (leaveIfAborted()) {
            return false;
        }
        for (unsigned x = 0; x < m_nrAScans; x = static_cast<unsigned>(x + step[1])) {
            ExpectedDistance expected = expectedAt(Position{x, z});
            if (isOneSided) {
                expected.distance -= (*offsets)(z, x);
            }
            if (topLayer < 0) {
                addToBottomOnly(bottomLayer, {x, z}, expected);
            } else if (bottomLayer < 0) {
                addToTopOnly(topLayer, {x, z}, expected);
            } else {
                addBetweenSurfaces(topLayer, bottomLayer, {x, z}, expected);
            }
        }
        endRow();
    }
    return true;
}

bool SliceStackGraphQPBO::addConstantInterSurfaceRegularization(const LayerNamePtr& top,
                                                                const LayerNamePtr& bottom,
                                                                const VolumeLayerPtr& offsets,
                                                                unsigned distance, float weight,
                                                                const double step[2])
{
    const BuildTimer timer(m_statistics);
    if (leaveIfAborted()) {
        return false;
    }
    try {
        return addSoftDistances(
            top, bottom, offsets, step,
            [&](const Position&) {
                return ExpectedDistance{static_cast<int>(distance), weight};
            },
            [] {});
    } catch (const std::bad_alloc& failure) {
        throw kelp::Exception("Error adding constant inter-surface regularization.",
                              failure.what());
    }
}

bool SliceStackGraphQPBO::addStatisticalInterSurfaceRegularization(
    const LayerNamePtr& top, const LayerNamePtr& bottom, const VolumeLayerPtr& offsets,
    const LayerDistributionPtr& distribution, float weight, const double step[2],
    const double spacing[3], const double origin[2])
{
    const BuildTimer timer(m_statistics);
    if (leaveIfAborted() || distribution.isNull()) {
        return false;
    }
    auto zPosition = static_cast<float>(-origin[0]);
    auto xPosition = static_cast<float>(-origin[1]);
    const auto expectedAt = [&](const Position&) {
        const float mean = distribution->getMean(xPosition, zPosition);
        const float variance = distribution->getVariance(xPosition, zPosition);
        xPosition += static_cast<float>(step[1]) * static_cast<float>(spacing[0]);
        // The weight falls with the model's uncertainty at the place.
        const auto deviation = static_cast<float>(std::sqrt(variance) / spacing[1]);
        return ExpectedDistance{static_cast<int>(mean / spacing[1]),
                                static_cast<float>(20.0 * weight / (deviation + 1.0F))};
    };
    const auto endRow = [&] {
        zPosition += static_cast<float>(step[0]) * static_cast<float>(spacing[2]);
        xPosition = static_cast<float>(-origin[1]);
    };
    try {
        return addSoftDistances(top, bottom, offsets, step, expectedAt, endRow);
    } catch (const std::bad_alloc& failure) {
        throw kelp::Exception("Error adding statistical inter-surface regularization.",
                              failure.what());
    }
}

} // namespace kelp::oct
