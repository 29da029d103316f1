#pragma once

#include "LayerDistribution.h"
#include "QpboGraph.h"
#include "SegWatcher.h"
#include "SliceStackGraph.h"

#include <QSharedPointer>

#include <cstddef>
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

    /// Links the columns so that the surface keeps the shape of its search range's top. False on
    /// abort.
    bool regularizeLayerWithExpectedAngle(const LayerNamePtr& layer);
    /// Hard distance limits per column, in rows.
    void connectSubgraphs(const LayerNamePtr& top, const LayerNamePtr& bottom,
                          const VolumeLayerPtr& minimum, const VolumeLayerPtr& maximum);

    /// After segment: whether the cut decided on a row for the surface, by its position in the
    /// properties. Where not, and where masked, getLayer gives the top of the search range.
    bool hasRow(int layer, unsigned x, unsigned z) const
    {
        return m_hasRow[columnIndex(layer, x, z)];
    }

    /// The solver, for tests and benchmarks.
    const QpboGraph<int>& solver() const { return *m_solver; }
    const ColumnNodeIds& columnNodeIds(int layer, unsigned x, unsigned z) const
    {
        return m_gridColNodeIds[columnIndex(layer, x, z)];
    }

    /// Called before and after every solve of the process; null for none. For benchmarks, which
    /// have no other way to the cuts inside a chain of steps.
    using SolveObserver = void (*)(const QpboGraph<int>& solver);
    static void setSolveObservers(SolveObserver before, SolveObserver after);

private:
    class BuildTimer;

    std::size_t columnIndex(int layer, unsigned x, unsigned z) const
    {
        return (static_cast<std::size_t>(layer) * m_nrBScans + z) * m_nrAScans + x;
    }
    bool isMasked(unsigned x, unsigned z) const { return (*m_mask)(z, x) != 0; }
    /// As isAborted of the watcher, with the status line that goes with it.
    bool leaveIfAborted() const;
    void checkArguments() const;
    std::int64_t estimateNodes();
    void createSolver(std::int64_t nodes, double edgeFactor);
    void constructGraph();
    bool constructSubgraphs();
    void connectAllSubgraphs();
    bool constructSubgraph(int layer);
    void checkColumnHeights(int layer) const;
    void addColumn(int layer, unsigned x, unsigned z, const int* capacities, int count);
    void addInterColumnEdges(int layer);
    void tieBaseNodes(int layer);
    void addSlopeEdgesAlongX(int layer, int z, int delta);
    void addSlopeEdgesAlongZ(int layer, int x, int delta);
    void addSlopeEdge(int layer, int x1, int z1, int x2, int z2, int delta);
    bool addShapeTermsX(const LayerNamePtr& layer, int weight, int step);
    bool addShapeTermsZ(const LayerNamePtr& layer, int weight, int step);
    void limitMaximum(const ColumnNodeIds& top, const ColumnNodeIds& bottom, int distance);
    void limitMinimum(const ColumnNodeIds& top, const ColumnNodeIds& bottom, int distance);
    bool isUsable(const Position& position) const;
    void addBetweenSurfaces(int top, int bottom, const Position& position,
                            const ExpectedDistance& expected);
    void addToBottomOnly(int bottom, const Position& position, const ExpectedDistance& expected);
    void addToTopOnly(int top, const Position& position, const ExpectedDistance& expected);
    /// Visits the positions of a soft distance by step; false on abort. expectedAt(position) gives
    /// the distance between the surfaces, endRow follows each row.
    template <typename ExpectedAt, typename EndRow>
    bool addSoftDistances(const LayerNamePtr& top, const LayerNamePtr& bottom,
                          const VolumeLayerPtr& offsets, const double step[2],
                          ExpectedAt&& expectedAt, EndRow&& endRow);
    void addUnaryIfNode(std::int64_t id, int E0, int E1);
    void forbidIfNode(std::int64_t id);
    void solve();
    void readLabels();
    void addRangeTops();

    std::shared_ptr<QpboGraph<int>> m_solver;
    unsigned m_nrBScans;
    unsigned m_nrAScans;
    /// By layer, B-scan, A-scan; (0, 0) where masked.
    std::vector<ColumnNodeIds> m_gridColNodeIds;
    std::vector<bool> m_hasRow; ///< by the same
    /// (x, z) offsets in rows by layer, B-scan, A-scan.
    std::vector<std::pair<int, int>> m_expectedAngles;
    QSharedPointer<SegWatcher> m_watcher;
    CutStatistics m_statistics;
};

} // namespace kelp::oct
