#include "SliceStackBuilding.h"

namespace kelp::oct {

void SliceStackGraphQPBO::addInterColumnEdges(int layer)
{
    if (leaveIfAborted()) {
        return;
    }
    tieBaseNodes(layer);
    if (leaveIfAborted()) {
        return;
    }
    const CostFunctionPtr costFunction =
        m_properties.getCostFunction(m_properties.getLayerName(layer));
    const int deltaX = costFunction->maxDeltaX;
    const int deltaZ = costFunction->maxDeltaZ;
    const int nX = static_cast<int>(m_nrAScans);
    const int nZ = static_cast<int>(m_nrBScans);
    addSlopeEdgesAlongX(layer, 0, deltaX);
    if (nZ == 1) {
        return;
    }
    // The borders get edges along themselves only, and those between a border and the interior
    // lead outwards only, so a border may lie any number of rows above its inner neighbour. That is
    // on purpose: at the ends of a scan the surface may rise out of the image faster than inside.
    addSlopeEdgesAlongX(layer, nZ - 1, deltaX);
    addSlopeEdgesAlongZ(layer, 0, deltaZ);
    addSlopeEdgesAlongZ(layer, nX - 1, deltaZ);
    for (int x = 1; x + 1 < nX; ++x) {
        if (leaveIfAborted()) {
            return;
        }
        for (int z = 1; z + 1 < nZ; ++z) {
            addSlopeEdge(layer, x, z, x - 1, z, deltaX);
            addSlopeEdge(layer, x, z, x + 1, z, deltaX);
            addSlopeEdge(layer, x, z, x, z - 1, deltaZ);
            addSlopeEdge(layer, x, z, x, z + 1, deltaZ);
        }
    }
}

/// Neighbouring columns take or leave the surface together.
void SliceStackGraphQPBO::tieBaseNodes(int layer)
{
    const auto tie = [&](unsigned x1, unsigned z1, unsigned x2, unsigned z2) {
        if (!isMasked(x1, z1) && !isMasked(x2, z2)) {
            m_solver->AddPairwiseTerm(static_cast<int>(columnNodeIds(layer, x1, z1).base),
                                      static_cast<int>(columnNodeIds(layer, x2, z2).base), 0,
                                      hardWeight, hardWeight, 0);
        }
    };
    for (unsigned z = 1; z < m_nrBScans; ++z) {
        tie(0, z, 0, z - 1);
    }
    for (unsigned x = 1; x < m_nrAScans; ++x) {
        tie(x, 0, x - 1, 0);
    }
    for (unsigned x = 1; x < m_nrAScans; ++x) {
        for (unsigned z = 1; z < m_nrBScans; ++z) {
            tie(x, z, x - 1, z);
            tie(x, z, x, z - 1);
        }
    }
}

void SliceStackGraphQPBO::addSlopeEdgesAlongX(int layer, int z, int delta)
{
    const int nX = static_cast<int>(m_nrAScans);
    addSlopeEdge(layer, 0, z, 1, z, delta);
    addSlopeEdge(layer, nX - 1, z, nX - 2, z, delta);
    for (int x = 1; x + 1 < nX; ++x) {
        addSlopeEdge(layer, x, z, x + 1, z, delta);
        addSlopeEdge(layer, x, z, x - 1, z, delta);
    }
}

void SliceStackGraphQPBO::addSlopeEdgesAlongZ(int layer, int x, int delta)
{
    const int nZ = static_cast<int>(m_nrBScans);
    addSlopeEdge(layer, x, 0, x, 1, delta);
    addSlopeEdge(layer, x, nZ - 1, x, nZ - 2, delta);
    for (int z = 1; z + 1 < nZ; ++z) {
        addSlopeEdge(layer, x, z, x, z + 1, delta);
        addSlopeEdge(layer, x, z, x, z - 1, delta);
    }
}

/// The surface of the second column lies at most delta rows below that of the first. Nodes are
/// paired from the bottoms of the two ranges, so the limit is in image rows.
void SliceStackGraphQPBO::addSlopeEdge(int layer, int x1, int z1, int x2, int z2, int delta)
{
    const auto isInGrid = [this](int x, int z) {
        return x >= 0 && z >= 0 && x < static_cast<int>(m_nrAScans) &&
               z < static_cast<int>(m_nrBScans);
    };
    if (!isInGrid(x1, z1) || !isInGrid(x2, z2)) {
        return;
    }
    const Position first{static_cast<unsigned>(x1), static_cast<unsigned>(z1)};
    const Position second{static_cast<unsigned>(x2), static_cast<unsigned>(z2)};
    if (isMasked(first.x, first.z) || isMasked(second.x, second.z)) {
        return;
    }
    const VolumeLayer& bottoms =
        *m_properties.getSearchRangeBottom(m_properties.getLayerName(layer));
    const ColumnNodeIds& a = columnNodeIds(layer, first.x, first.z);
    const ColumnNodeIds& b = columnNodeIds(layer, second.x, second.z);
    const int d = int{bottoms(second.z, second.x)} - int{bottoms(first.z, first.x)};
    std::int64_t i = std::int64_t{a.base} - delta;
    std::int64_t j = std::int64_t{b.base} - d;
    if (j > b.base) {
        i -= j - b.base;
        j = b.base;
    }
    for (; i >= a.first && j >= b.first; --i, --j) {
        m_solver->AddPairwiseTerm(static_cast<int>(i), static_cast<int>(j), 0, 0, hardWeight, 0);
    }
}

} // namespace kelp::oct
