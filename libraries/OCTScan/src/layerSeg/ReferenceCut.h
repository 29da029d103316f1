#pragma once

#include "LayerDistribution.h"
#include "SegmentationMask.h"
#include "SliceStackProperties.h"
#include "kelpImage.h"

#include <QList>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelp::oct::test {

/// A second, plain statement of what a cut means, for tests: it shares no code with the graph that
/// it checks, takes no shortcut, and is solved by Boost's maximum flow. Slow.
class ReferenceCut
{
public:
    ReferenceCut(const QList<kelp::ImagePtr>& images, const SliceStackProperties& properties,
                 const MaskMatrixPtr& mask);

    void addConstant(const LayerNamePtr& top, const LayerNamePtr& bottom,
                     const VolumeLayerPtr& offsets, unsigned distance, float weight,
                     const double step[2]);
    void addStatistical(const LayerNamePtr& top, const LayerNamePtr& bottom,
                        const VolumeLayerPtr& offsets, const LayerDistribution& distribution,
                        float weight, const double step[2], const double spacing[3],
                        const double origin[2]);

    /// Rows of every surface: [layer][z][x].
    std::vector<std::vector<std::vector<int>>> solve() const;
    /// 1 for the nodes that can still reach the sink, after solve's own flow.
    std::vector<int> solveLabels() const;
    std::size_t nodeCount() const { return m_unary.size(); }
    std::size_t edgeCount() const { return m_edges.size(); }

private:
    struct Column
    {
        std::int64_t first = 0;
        std::int64_t base = 0;
    };
    struct Edge
    {
        std::int64_t from;
        std::int64_t to;
        std::int64_t capacity;
        std::int64_t reverseCapacity;
    };

    bool masked(int x, int z) const { return (*m_mask)(z, x) != 0; }
    bool inside(int x, int z) const { return x >= 0 && z >= 0 && x < m_nX && z < m_nZ; }
    std::size_t indexOf(int layer, int x, int z) const
    {
        const int index = (layer * m_nZ + z) * m_nX + x;
        return static_cast<std::size_t>(index);
    }
    const Column& column(int layer, int x, int z) const { return m_columns[indexOf(layer, x, z)]; }
    int top(int layer, int x, int z) const;
    int bottom(int layer, int x, int z) const;

    void addUnary(std::int64_t id, std::int64_t labelZero, std::int64_t labelOne);
    void addEdge(std::int64_t i, std::int64_t j, std::int64_t zeroOne, std::int64_t oneZero);
    void addColumns(int layer, const QList<kelp::ImagePtr>& images);
    void tieBases(int layer);
    void addSlopes(int layer);
    void addSlope(int layer, int x1, int z1, int x2, int z2, int delta);
    void addShape(int layer);
    void link(int layer, int x, int z, int dx, int delta, int dz, int weight);
    void connect(int upper, int lower, const VolumeLayer& minimum, const VolumeLayer& maximum);
    void addBetween(int upper, int lower, int x, int z, int distance, float weight);
    void addToBottom(int layer, int x, int z, int distance, float weight);
    void addToTop(int layer, int x, int z, int distance, float weight);

    SliceStackProperties m_properties;
    MaskMatrixPtr m_mask;
    int m_nX;
    int m_nZ;
    int m_nLayers;
    std::vector<Column> m_columns;
    std::vector<std::int64_t> m_unary;
    std::vector<Edge> m_edges;
};

} // namespace kelp::oct::test
