#pragma once

#include "CostFunction.h"
#include "SegWatcher.h"
#include "SliceStackGraphQPBO.h"

#include <QList>
#include <QSharedPointer>

#include <cstdint>
#include <functional>
#include <map>
#include <tuple>
#include <vector>

/// Cuts so small that the best surfaces can be found by trying all of them.
namespace kelp::oct::test {

/// The cost of a row is its pixel.
class PixelCost : public CostFunction
{
public:
    void computeCost(const Values& in, Values& out) const override { out = in; }
};

/// One surface of a tiny cut.
struct TinySurface
{
    LayerNamePtr name;
    VolumeLayerPtr top;
    VolumeLayerPtr bottom;
    int deltaX = 1;
    int deltaZ = 1;
    int weightX = 0;
    int weightZ = 0;
    unsigned stepX = 1;
    unsigned stepZ = 1;
};

/// The input of a cut.
class TinyCut
{
public:
    TinyCut(unsigned aScans, unsigned bScans, int rows);

    unsigned pixel(unsigned x, int row, unsigned z) const;
    void setPixel(unsigned x, int row, unsigned z, unsigned char value);
    /// A search range of the same rows everywhere.
    TinySurface& addSurface(const LayerNamePtr& name, int top, int bottom);
    SliceStackProperties properties() const;
    /// A graph of these surfaces.
    QSharedPointer<SliceStackGraphQPBO> build(double edgeFactor = 5.0) const;

    const unsigned nX;
    const unsigned nZ;
    QList<kelp::ImagePtr> images;
    MaskMatrixPtr mask;
    QList<TinySurface> surfaces;
    /// Minimum and maximum by the places of two surfaces.
    std::map<std::pair<int, int>, std::pair<int, int>> distances;
    QSharedPointer<SegWatcher> watcher{new SegWatcher};
};

/// The energy of a tiny cut in terms of rows of the image, not of nodes. The state of a column is
/// the row of its surface; the row past the range means that it has none.
class TinyEnergy
{
public:
    /// Data, base nodes, slopes, shape and hard distances.
    explicit TinyEnergy(const TinyCut& cut);

    /// A soft distance between two surfaces of the cut, or from one to a fixed row of its range.
    void addBetween(int top, int bottom, unsigned x, unsigned z, int distance, int weight);
    /// Draws the surface to this row (at or past the range's end: to its end).
    void addToRow(int surface, unsigned x, unsigned z, int row, int weight);

    /// The surfaces of the minimum (of several the one with the deepest surfaces), by surface, as
    /// the graph gives them: where there is none, and where masked, the top of the search range.
    std::vector<std::vector<int>> bestSurfaces() const;

private:
    struct Column
    {
        int top;
        int bottom;
    };
    struct Unary
    {
        int column;
        int row;
        std::int64_t cost; ///< where the surface is at the row or above it
    };
    struct Pair
    {
        int columnA;
        int rowA;
        int columnB;
        int rowB;
        std::int64_t costA; ///< at or above the row in A only
        std::int64_t costB; ///< in B only
    };

    int columnAt(int surface, int x, int z) const;
    void addData(int surface, unsigned x, unsigned z);
    void addTie(int surface, int x1, int z1, int x2, int z2);
    void addSlopes(int surface);
    void addSlope(int surface, int x1, int z1, int x2, int z2, int delta);
    void addShape(int surface);
    void addShapeLink(int surface, int x, int z, int dx, int dz, int weight);
    void addHardDistance(int top, int bottom, int minimum, int maximum);
    void addPair(int columnA, int rowA, int columnB, int rowB, std::int64_t costA,
                 std::int64_t costB);
    bool hasRow(int column, int row) const;
    std::int64_t energyOf(const std::vector<int>& state) const;

    const TinyCut& m_cut;
    std::vector<Column> m_columns;
    std::map<std::tuple<int, int, int>, int> m_index;
    std::vector<Unary> m_unary;
    std::vector<Pair> m_pairs;
};

} // namespace kelp::oct::test
