#include "ReferenceCut.h"

#include <boost/graph/adjacency_list.hpp>
#include <boost/graph/boykov_kolmogorov_max_flow.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <queue>

namespace kelp::oct::test {

namespace {

constexpr std::int64_t hard = 1000000000;

std::int64_t truncated(float value)
{
    return static_cast<std::int64_t>(value);
}

std::int64_t scaledWeight(float weight)
{
    return truncated(weight * 1000.0F);
}

/// As an unsigned 32-bit integer, in which node ids are compared.
std::uint32_t asId(std::int64_t value)
{
    return static_cast<std::uint32_t>(value);
}

} // namespace

ReferenceCut::ReferenceCut(const QList<kelp::ImagePtr>& images,
                           const SliceStackProperties& properties, const MaskMatrixPtr& mask)
    : m_properties(properties), m_mask(mask),
      m_nX(static_cast<int>(properties.getDimensions().second)),
      m_nZ(static_cast<int>(properties.getDimensions().first)),
      m_nLayers(properties.getNrOfLayers()),
      m_columns(static_cast<std::size_t>(m_nX * m_nZ * m_nLayers))
{
    for (int layer = 0; layer < m_nLayers; ++layer) {
        addColumns(layer, images);
        tieBases(layer);
        addSlopes(layer);
        addShape(layer);
    }
    for (int upper = 0; upper < m_nLayers; ++upper) {
        for (int lower = upper + 1; lower < m_nLayers; ++lower) {
            const LayerNamePtr upperName = m_properties.getLayerName(upper);
            const LayerNamePtr lowerName = m_properties.getLayerName(lower);
            const auto minimum = m_properties.getInterSurfDistanceMin(upperName, lowerName);
            if (minimum) {
                connect(upper, lower, *minimum,
                        *m_properties.getInterSurfDistanceMax(upperName, lowerName));
            }
        }
    }
}

int ReferenceCut::top(int layer, int x, int z) const
{
    return (*m_properties.getSearchRangeTop(m_properties.getLayerName(layer)))(z, x);
}

int ReferenceCut::bottom(int layer, int x, int z) const
{
    return (*m_properties.getSearchRangeBottom(m_properties.getLayerName(layer)))(z, x);
}

void ReferenceCut::addUnary(std::int64_t id, std::int64_t labelZero, std::int64_t labelOne)
{
    if (id < 0 || id >= static_cast<std::int64_t>(m_unary.size())) {
        return;
    }
    std::int64_t& capacity = m_unary[static_cast<std::size_t>(id)];
    capacity = std::clamp<std::int64_t>(capacity + labelOne - labelZero,
                                        std::numeric_limits<std::int32_t>::min(),
                                        std::numeric_limits<std::int32_t>::max());
}

void ReferenceCut::addEdge(std::int64_t i, std::int64_t j, std::int64_t zeroOne,
                           std::int64_t oneZero)
{
    m_edges.push_back({i, j, zeroOne, oneZero});
}

void ReferenceCut::addColumns(int layer, const QList<kelp::ImagePtr>& images)
{
    const CostFunctionPtr costFunction =
        m_properties.getCostFunction(m_properties.getLayerName(layer));
    for (int z = 0; z < m_nZ; ++z) {
        const kelp::ImagePtr wide = images[z]->convertTo(kelp::MonoUInt16);
        for (int x = 0; x < m_nX; ++x) {
            if (masked(x, z)) {
                continue;
            }
            kelp::DynamicVector<unsigned short> pixels(static_cast<std::size_t>(wide->getRows()));
            for (int y = 0; y < wide->getRows(); ++y) {
                pixels[static_cast<std::size_t>(y)] =
                    wide->pixels<std::uint16_t>()[y * wide->getColumns() + x];
            }
            CostFunction::Values cost;
            costFunction->computeColumnCost(pixels, top(layer, x, z), bottom(layer, x, z), cost);
            const int n = bottom(layer, x, z) - top(layer, x, z);
            Column& ids = m_columns[indexOf(layer, x, z)];
            ids.first = static_cast<std::int64_t>(m_unary.size());
            ids.base = ids.first + n - 1;
            m_unary.push_back(truncated(cost[0] - cost[1]));
            for (int k = 1; k < n - 1; ++k) {
                const auto index = static_cast<std::size_t>(k);
                m_unary.push_back(truncated((cost[index] - cost[index + 1]) * 1000.0F));
            }
            m_unary.push_back(-1000);
            for (std::int64_t id = ids.first; id < ids.base; ++id) {
                addEdge(id, id + 1, 0, hard);
            }
        }
    }
}

void ReferenceCut::tieBases(int layer)
{
    const auto tie = [&](int x1, int z1, int x2, int z2) {
        if (!masked(x1, z1) && !masked(x2, z2)) {
            addEdge(column(layer, x1, z1).base, column(layer, x2, z2).base, hard, hard);
        }
    };
    for (int z = 1; z < m_nZ; ++z) {
        tie(0, z, 0, z - 1);
    }
    for (int x = 1; x < m_nX; ++x) {
        tie(x, 0, x - 1, 0);
    }
    for (int x = 1; x < m_nX; ++x) {
        for (int z = 1; z < m_nZ; ++z) {
            tie(x, z, x - 1, z);
            tie(x, z, x, z - 1);
        }
    }
}

void ReferenceCut::addSlopes(int layer)
{
    const CostFunctionPtr costFunction =
        m_properties.getCostFunction(m_properties.getLayerName(layer));
    const int dX = costFunction->maxDeltaX;
    const int dZ = costFunction->maxDeltaZ;
    const auto alongRow = [&](int z) {
        addSlope(layer, 0, z, 1, z, dX);
        addSlope(layer, m_nX - 1, z, m_nX - 2, z, dX);
        for (int x = 1; x <= m_nX - 2; ++x) {
            addSlope(layer, x, z, x + 1, z, dX);
            addSlope(layer, x, z, x - 1, z, dX);
        }
    };
    const auto alongColumn = [&](int x) {
        addSlope(layer, x, 0, x, 1, dZ);
        addSlope(layer, x, m_nZ - 1, x, m_nZ - 2, dZ);
        for (int z = 1; z <= m_nZ - 2; ++z) {
            addSlope(layer, x, z, x, z + 1, dZ);
            addSlope(layer, x, z, x, z - 1, dZ);
        }
    };
    alongRow(0);
    if (m_nZ == 1) {
        return;
    }
    alongRow(m_nZ - 1);
    alongColumn(0);
    alongColumn(m_nX - 1);
    for (int x = 1; x <= m_nX - 2; ++x) {
        for (int z = 1; z <= m_nZ - 2; ++z) {
            addSlope(layer, x, z, x - 1, z, dX);
            addSlope(layer, x, z, x + 1, z, dX);
            addSlope(layer, x, z, x, z - 1, dZ);
            addSlope(layer, x, z, x, z + 1, dZ);
        }
    }
}

void ReferenceCut::addSlope(int layer, int x1, int z1, int x2, int z2, int delta)
{
    if (!inside(x1, z1) || !inside(x2, z2) || masked(x1, z1) || masked(x2, z2)) {
        return;
    }
    const Column& a = column(layer, x1, z1);
    const Column& b = column(layer, x2, z2);
    const int d = bottom(layer, x2, z2) - bottom(layer, x1, z1);
    std::int64_t i = a.base - delta;
    std::int64_t j = b.base - d;
    if (j > b.base) {
        i -= j - b.base;
        j = b.base;
    }
    for (; i >= a.first && j >= b.first; --i, --j) {
        addEdge(i, j, 0, hard);
    }
}

void ReferenceCut::link(int layer, int x, int z, int dx, int delta, int dz, int weight)
{
    if (!inside(x, z) || !inside(x + dx, z + dz) || masked(x, z) || masked(x + dx, z + dz)) {
        return;
    }
    const Column& a = column(layer, x, z);
    const Column& b = column(layer, x + dx, z + dz);
    std::int64_t i = a.first;
    std::int64_t j = b.first + delta;
    if (delta < 0) {
        i -= delta;
        j -= delta;
    }
    for (; i <= a.base && j <= b.base; ++i, ++j) {
        addEdge(i, j, weight, weight);
    }
}

void ReferenceCut::addShape(int layer)
{
    const LayerNamePtr name = m_properties.getLayerName(layer);
    const int weightX = static_cast<int>(m_properties.getShapeRegWeightX(name));
    const int weightZ = static_cast<int>(m_properties.getShapeRegWeightZ(name));
    const int stepX = static_cast<int>(m_properties.getShapeRegStepX(name));
    const int stepZ = static_cast<int>(m_properties.getShapeRegStepZ(name));
    const auto linkX = [&](int x, int z, int dx) {
        if (inside(x, z) && inside(x + dx, z)) {
            link(layer, x, z, dx, top(layer, x, z) - top(layer, x + dx, z), 0, weightX);
        }
    };
    const auto linkZ = [&](int x, int z, int dz) {
        if (inside(x, z) && inside(x, z + dz)) {
            link(layer, x, z, 0, top(layer, x, z) - top(layer, x, z + dz), dz, weightZ);
        }
    };
    if (weightX != 0) {
        for (int z = 0; z < m_nZ; ++z) {
            for (int x = 0; x < m_nX; ++x) {
                linkX(x, z, stepX);
            }
            for (int k = 1; k < stepX; ++k) {
                if (k < m_nX && !masked(k, z)) {
                    linkX(0, z, k);
                    linkX(m_nX - 1 - k, z, k);
                }
            }
        }
    }
    if (weightZ != 0) {
        for (int z = 0; z < m_nZ; ++z) {
            for (int x = 0; x < m_nX; ++x) {
                linkZ(x, z, stepZ);
            }
        }
        for (int k = 1; k < stepZ; ++k) {
            for (int x = 0; x < m_nX; ++x) {
                if (k < m_nZ && !masked(x, k)) {
                    linkZ(x, 0, k);
                    linkZ(x, m_nZ - 1 - k, k);
                }
            }
        }
    }
}

void ReferenceCut::connect(int upper, int lower, const VolumeLayer& minimum,
                           const VolumeLayer& maximum)
{
    for (int x = 0; x < m_nX; ++x) {
        for (int z = 0; z < m_nZ; ++z) {
            if (masked(x, z)) {
                continue;
            }
            const Column& a = column(upper, x, z);
            const Column& b = column(lower, x, z);
            const int offset = top(lower, x, z) - top(upper, x, z);

            std::int64_t j = maximum(z, x) - offset + b.first;
            std::int64_t i = a.first;
            if (j < b.first) {
                i = a.first + (b.first - j);
                j = b.first;
                for (std::int64_t id = i; id >= a.first; --id) {
                    addUnary(id, 0, hard);
                }
            }
            for (; i <= a.base && j <= b.base; ++i, ++j) {
                addEdge(i, j, 0, hard);
            }

            j = minimum(z, x) - offset + b.first;
            i = a.first;
            if (j < b.first) {
                i = a.first + (b.first - j);
                j = b.first;
            }
            for (std::int64_t id = j - 1; id >= b.first; --id) {
                addUnary(id, 0, hard);
            }
            for (; i <= a.base && j <= b.base; ++i, ++j) {
                addEdge(j, i, 0, hard);
            }
        }
    }
}

void ReferenceCut::addBetween(int upper, int lower, int x, int z, int distance, float weight)
{
    if (masked(x, z)) {
        return;
    }
    const Column& a = column(upper, x, z);
    const Column& b = column(lower, x, z);
    const std::int64_t w = scaledWeight(weight);
    std::int64_t j = distance - (bottom(lower, x, z) - bottom(upper, x, z)) + b.first;
    std::int64_t i = a.first;
    if (j < b.first) {
        const std::int64_t k = b.first - j;
        for (std::int64_t id = a.first; id < a.first + k; ++id) {
            addUnary(id, 0, w);
        }
        i = a.first + k;
        j = b.first;
    }
    for (std::int64_t id = b.first; id < j && id <= b.base; ++id) {
        addUnary(id, 0, w);
    }
    for (; i <= a.base && j <= b.base; ++i, ++j) {
        addEdge(i, j, w, w);
    }
    for (; j <= b.base; ++j) {
        addUnary(j, w, 0);
    }
    for (; i <= a.base; ++i) {
        addUnary(i, w, 0);
    }
}

void ReferenceCut::addToBottom(int layer, int x, int z, int distance, float weight)
{
    if (masked(x, z)) {
        return;
    }
    const Column& ids = column(layer, x, z);
    const std::int64_t w = scaledWeight(weight);
    for (std::int64_t id = ids.first; id <= ids.base; ++id) {
        const bool above = asId(id) < asId(ids.first + distance);
        addUnary(id, above ? 0 : w, above ? w : 0);
    }
}

void ReferenceCut::addToTop(int layer, int x, int z, int distance, float weight)
{
    if (masked(x, z)) {
        return;
    }
    const Column& ids = column(layer, x, z);
    const std::int64_t w = scaledWeight(weight);
    for (std::int64_t id = ids.first; id <= ids.base; ++id) {
        const bool above = asId(id + distance) < asId(ids.base);
        addUnary(id, above ? 0 : w, above ? w : 0);
    }
}

void ReferenceCut::addConstant(const LayerNamePtr& topName, const LayerNamePtr& bottomName,
                               const VolumeLayerPtr& offsets, unsigned distance, float weight,
                               const double step[2])
{
    const bool hasTop = m_properties.hasLayer(topName);
    const bool hasBottom = m_properties.hasLayer(bottomName);
    for (int z = 0; z < m_nZ; z = static_cast<int>(z + step[0])) {
        for (int x = 0; x < m_nX; x = static_cast<int>(x + step[1])) {
            const int given = static_cast<int>(distance);
            if (hasTop && hasBottom) {
                addBetween(m_properties.getLayerPosition(topName),
                           m_properties.getLayerPosition(bottomName), x, z, given, weight);
            } else if (hasBottom) {
                addToBottom(m_properties.getLayerPosition(bottomName), x, z,
                            given - (*offsets)(z, x), weight);
            } else if (hasTop) {
                addToTop(m_properties.getLayerPosition(topName), x, z, given - (*offsets)(z, x),
                         weight);
            }
        }
    }
}

void ReferenceCut::addStatistical(const LayerNamePtr& topName, const LayerNamePtr& bottomName,
                                  const VolumeLayerPtr& offsets,
                                  const LayerDistribution& distribution, float weight,
                                  const double step[2], const double spacing[3],
                                  const double origin[2])
{
    const bool hasTop = m_properties.hasLayer(topName);
    const bool hasBottom = m_properties.hasLayer(bottomName);
    auto zPosition = static_cast<float>(-origin[0]);
    for (int z = 0; z < m_nZ; z = static_cast<int>(z + step[0])) {
        auto xPosition = static_cast<float>(-origin[1]);
        for (int x = 0; x < m_nX; x = static_cast<int>(x + step[1])) {
            const float mean = distribution.getMean(xPosition, zPosition);
            const float variance = distribution.getVariance(xPosition, zPosition);
            xPosition += static_cast<float>(step[1]) * static_cast<float>(spacing[0]);
            const int meanRows = static_cast<int>(mean / spacing[1]);
            const auto deviationRows = static_cast<float>(std::sqrt(variance) / spacing[1]);
            const float sum = deviationRows + 1.0F;
            const auto scaled = static_cast<float>(20.0 * weight / sum);
            if (hasTop && hasBottom) {
                addBetween(m_properties.getLayerPosition(topName),
                           m_properties.getLayerPosition(bottomName), x, z, meanRows, scaled);
            } else if (hasBottom) {
                addToBottom(m_properties.getLayerPosition(bottomName), x, z,
                            meanRows - (*offsets)(z, x), scaled);
            } else if (hasTop) {
                addToTop(m_properties.getLayerPosition(topName), x, z, meanRows - (*offsets)(z, x),
                         scaled);
            }
        }
        zPosition += static_cast<float>(step[0]) * static_cast<float>(spacing[2]);
    }
}

std::vector<int> ReferenceCut::solveLabels() const
{
    using Traits = boost::adjacency_list_traits<boost::vecS, boost::vecS, boost::directedS>;
    using Graph = boost::adjacency_list<
        boost::vecS, boost::vecS, boost::directedS,
        boost::property<
            boost::vertex_color_t, boost::default_color_type,
            boost::property<boost::vertex_distance_t, long,
                            boost::property<boost::vertex_predecessor_t, Traits::edge_descriptor>>>,
        boost::property<
            boost::edge_capacity_t, std::int64_t,
            boost::property<boost::edge_residual_capacity_t, std::int64_t,
                            boost::property<boost::edge_reverse_t, Traits::edge_descriptor>>>>;
    const std::size_t count = m_unary.size();
    const std::size_t source = count;
    const std::size_t sink = count + 1;
    Graph graph(count + 2);
    const auto capacity = boost::get(boost::edge_capacity, graph);
    const auto reverse = boost::get(boost::edge_reverse, graph);
    const auto residual = boost::get(boost::edge_residual_capacity, graph);
    const auto add = [&](std::size_t from, std::size_t to, std::int64_t forward,
                         std::int64_t backward) {
        const auto there = boost::add_edge(from, to, graph).first;
        const auto back = boost::add_edge(to, from, graph).first;
        capacity[there] = forward;
        capacity[back] = backward;
        reverse[there] = back;
        reverse[back] = there;
    };
    for (std::size_t id = 0; id < count; ++id) {
        add(source, id, std::max<std::int64_t>(m_unary[id], 0), 0);
        add(id, sink, std::max<std::int64_t>(-m_unary[id], 0), 0);
    }
    for (const Edge& edge : m_edges) {
        add(static_cast<std::size_t>(edge.from), static_cast<std::size_t>(edge.to), edge.capacity,
            edge.reverseCapacity);
    }
    boost::boykov_kolmogorov_max_flow(graph, source, sink);

    std::vector<int> labels(count + 2, 0);
    std::queue<std::size_t> open;
    open.push(sink);
    labels[sink] = 1;
    while (!open.empty()) {
        const std::size_t node = open.front();
        open.pop();
        const auto [begin, end] = boost::out_edges(node, graph);
        for (auto edge = begin; edge != end; ++edge) {
            const std::size_t other = boost::target(*edge, graph);
            if (labels[other] == 0 && residual[reverse[*edge]] > 0) {
                labels[other] = 1;
                open.push(other);
            }
        }
    }
    labels.resize(count);
    return labels;
}

std::vector<std::vector<std::vector<int>>> ReferenceCut::solve() const
{
    const std::vector<int> labels = solveLabels();
    std::vector<std::vector<std::vector<int>>> rows(
        static_cast<std::size_t>(m_nLayers),
        std::vector<std::vector<int>>(static_cast<std::size_t>(m_nZ),
                                      std::vector<int>(static_cast<std::size_t>(m_nX), 0)));
    for (int layer = 0; layer < m_nLayers; ++layer) {
        for (int z = 0; z < m_nZ; ++z) {
            for (int x = 0; x < m_nX; ++x) {
                int row = 0;
                if (!masked(x, z)) {
                    const Column& ids = column(layer, x, z);
                    for (std::int64_t id = ids.first; id <= ids.base; ++id) {
                        if (labels[static_cast<std::size_t>(id)] == 1) {
                            row = static_cast<int>(id - ids.first);
                            break;
                        }
                    }
                }
                rows[static_cast<std::size_t>(layer)][static_cast<std::size_t>(z)]
                    [static_cast<std::size_t>(x)] = row + top(layer, x, z);
            }
        }
    }
    return rows;
}

} // namespace kelp::oct::test
