#pragma once

#include "LayerDistribution.h"
#include "QpboGraph.h"
#include "SegWatcher.h"
#include "SliceStackGraph.h"

#include <QSharedPointer>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace kelp::oct {

/// The ids of a column's deepest and topmost node.
struct ColumnNodeIds
{
    std::uint32_t base = 0;
    std::uint32_t first = 0;
};

/// A wanted distance in rows and how much a row of deviation costs, in units of the cost functions.
struct ExpectedDistance
{
    int distance = 0;
    float weight = 0.0F;
};

/// All surfaces of a cut as one binary energy: a node per row of each column's search range, label
/// 1 at and below the surface. Optimal surfaces after Li, Wu, Chen and Sonka (IEEE TPAMI 28:119,
/// 2006), with soft terms after Dufour and others (IEEE TMI 32:531, 2013).
class SliceStackGraphQPBO : public SliceStackGraph
{
public:
    /// A column of the scan: A-scan x of B-scan z.
    struct Position
    {
        unsigned x = 0;
        unsigned z = 0;
    };

    /// Builds the whole graph. A user abort leaves it partial and returns normally. Throws
    /// kelp::Assertion for null arguments and kelp::Exception when it cannot be built, in
    /// particular for a search range of fewer than two rows.
    SliceStackGraphQPBO(const QList<kelp::ImagePtr>& images, const SliceStackProperties& properties,
                        const MaskMatrixPtr& mask, const QSharedPointer<SegWatcher>& segWatcher,
                        double edgeFactor);
    ~SliceStackGraphQPBO() override;

    /// Solves and reads the surfaces out. Does nothing on an invalid graph or after an abort.
    void segment() override;

    /// Soft link of column `position` with the column dx, dz away: each image row at which they
    /// disagree, shifted by delta, costs weight.
    virtual bool addRegularization(const LayerNamePtr& layer, const Position& position, unsigned dx,
                                   int delta, unsigned dz, int weight);
    /// Soft distance from the trained model. step = (B-scans, A-scans), spacing = (x, axial, z),
    /// origin = (z, x) in mm. One of the layers may be absent from the graph; offsets then express
    /// the fixed surface.
    virtual bool addStatisticalInterSurfaceRegularization(
        const LayerNamePtr& top, const LayerNamePtr& bottom, const VolumeLayerPtr& offsets,
        const LayerDistributionPtr& distribution, float weight, const double step[2],
        const double spacing[3], const double origin[2]);
    /// Soft distance of a constant number of rows.
    virtual bool addConstantInterSurfaceRegularization(const LayerNamePtr& top,
                                                       const LayerNamePtr& bottom,
                                                       const VolumeLayerPtr& offsets,
                                                       unsigned distance, float weight,
                                                       const double step[2]);

    /// The solver, for tests and benchmarks.
    const QpboGraph<int>& solver() const { return *m_solver; }
    const ColumnNodeIds& columnNodeIds(int layer, unsigned x, unsigned z) const;

private:
    std::shared_ptr<QpboGraph<int>> m_solver;
    std::vector<std::vector<std::vector<ColumnNodeIds>>> m_gridColNodeIds;
    std::vector<std::vector<std::vector<std::pair<int, int>>>> m_expectedAngles;
    QSharedPointer<SegWatcher> m_watcher;
};

} // namespace kelp::oct
