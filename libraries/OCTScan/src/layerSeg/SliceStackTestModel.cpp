#include "SliceStackTestModel.h"

#include <algorithm>
#include <limits>

namespace kelp::oct::test {

namespace {

constexpr std::int64_t hard = 1000000000;

VolumeLayerPtr constant(unsigned nZ, unsigned nX, int value)
{
    auto layer = VolumeLayerPtr::create(nZ, nX);
    std::fill(layer->begin(), layer->end(), static_cast<unsigned short>(value));
    return layer;
}

} // namespace

TinyCut::TinyCut(unsigned aScans, unsigned bScans, int rows)
    : nX(aScans), nZ(bScans), mask(new MaskMatrix(bScans, aScans))
{
    for (unsigned z = 0; z < nZ; ++z) {
        images.append(kelp::Image::create(kelp::MonoUInt8, {static_cast<int>(aScans), rows, 1}));
    }
}

unsigned TinyCut::pixel(unsigned x, int row, unsigned z) const
{
    const kelp::Image& image = *images[static_cast<int>(z)];
    return image.pixels<unsigned char>()[row * image.getColumns() + static_cast<int>(x)];
}

void TinyCut::setPixel(unsigned x, int row, unsigned z, unsigned char value)
{
    kelp::Image& image = *images[static_cast<int>(z)];
    image.pixels<unsigned char>()[row * image.getColumns() + static_cast<int>(x)] = value;
}

TinySurface& TinyCut::addSurface(const LayerNamePtr& name, int top, int bottom)
{
    TinySurface surface;
    surface.name = name;
    surface.top = constant(nZ, nX, top);
    surface.bottom = constant(nZ, nX, bottom);
    surfaces.append(surface);
    return surfaces.last();
}

SliceStackProperties TinyCut::properties() const
{
    QList<LayerNamePtr> names;
    for (const TinySurface& surface : surfaces) {
        names.append(surface.name);
    }
    SliceStackProperties properties(names, nX, nZ);
    for (const TinySurface& surface : surfaces) {
        const CostFunctionPtr cost(new PixelCost);
        cost->maxDeltaX = surface.deltaX;
        cost->maxDeltaZ = surface.deltaZ;
        properties.setCostFunction(surface.name, cost);
        properties.setSearchRange(surface.name, surface.top, surface.bottom);
        properties.setShapeRegularizaton(surface.name, surface.weightZ, surface.weightX,
                                         surface.stepZ, surface.stepX);
    }
    for (const auto& [pair, distance] : distances) {
        properties.setInterSurfDistance(surfaces[pair.first].name, surfaces[pair.second].name,
                                        constant(nZ, nX, distance.first),
                                        constant(nZ, nX, distance.second));
    }
    return properties;
}

QSharedPointer<SliceStackGraphQPBO> TinyCut::build(double edgeFactor) const
{
    return QSharedPointer<SliceStackGraphQPBO>(
        new SliceStackGraphQPBO(images, properties(), mask, watcher, edgeFactor));
}

TinyEnergy::TinyEnergy(const TinyCut& cut) : m_cut(cut)
{
    const int nX = static_cast<int>(cut.nX);
    const int nZ = static_cast<int>(cut.nZ);
    for (int s = 0; s < cut.surfaces.size(); ++s) {
        for (int z = 0; z < nZ; ++z) {
            for (int x = 0; x < nX; ++x) {
                const auto row = static_cast<std::size_t>(z);
                const auto column = static_cast<std::size_t>(x);
                if ((*cut.mask)(row, column) == 0) {
                    m_index[{s, x, z}] = static_cast<int>(m_columns.size());
                    m_columns.push_back({(*cut.surfaces[s].top)(row, column),
                                         (*cut.surfaces[s].bottom)(row, column)});
                    addData(s, static_cast<unsigned>(x), static_cast<unsigned>(z));
                }
            }
        }
        for (int z = 0; z < nZ; ++z) {
            for (int x = 0; x < nX; ++x) {
                addTie(s, x, z, x - 1, z);
                addTie(s, x, z, x, z - 1);
            }
        }
        addSlopes(s);
        addShape(s);
    }
    for (const auto& [pair, distance] : cut.distances) {
        addHardDistance(pair.first, pair.second, distance.first, distance.second);
    }
}

int TinyEnergy::columnAt(int surface, int x, int z) const
{
    const auto found = m_index.find({surface, x, z});
    return found == m_index.end() ? -1 : found->second;
}

bool TinyEnergy::hasRow(int column, int row) const
{
    const Column& c = m_columns[static_cast<std::size_t>(column)];
    return row >= c.top && row < c.bottom;
}

void TinyEnergy::addPair(int columnA, int rowA, int columnB, int rowB, std::int64_t costA,
                         std::int64_t costB)
{
    if (hasRow(columnA, rowA) && hasRow(columnB, rowB)) {
        m_pairs.push_back({columnA, rowA, columnB, rowB, costA, costB});
    }
}

void TinyEnergy::addData(int surface, unsigned x, unsigned z)
{
    const int index = columnAt(surface, static_cast<int>(x), static_cast<int>(z));
    const Column& column = m_columns.back();
    for (int row = column.top; row + 1 < column.bottom; ++row) {
        const int fall =
            static_cast<int>(m_cut.pixel(x, row, z)) - static_cast<int>(m_cut.pixel(x, row + 1, z));
        m_unary.push_back({index, row, row == column.top ? fall : 1000 * fall});
    }
    m_unary.push_back({index, column.bottom - 1, -1000});
}

void TinyEnergy::addTie(int surface, int x1, int z1, int x2, int z2)
{
    const int a = columnAt(surface, x1, z1);
    const int b = columnAt(surface, x2, z2);
    if (a >= 0 && b >= 0) {
        addPair(a, m_columns[static_cast<std::size_t>(a)].bottom - 1, b,
                m_columns[static_cast<std::size_t>(b)].bottom - 1, hard, hard);
    }
}

void TinyEnergy::addSlopes(int surface)
{
    const int nX = static_cast<int>(m_cut.nX);
    const int nZ = static_cast<int>(m_cut.nZ);
    const int dX = m_cut.surfaces[surface].deltaX;
    const int dZ = m_cut.surfaces[surface].deltaZ;
    const auto isBorder = [](int i, int n) { return i == 0 || i == n - 1; };
    for (int z = 0; z < nZ; ++z) {
        for (int x = 0; x < nX; ++x) {
            // Along the borders both ways; from the interior to all sides; from a border inwards
            // never.
            const bool interior = !isBorder(x, nX) && !isBorder(z, nZ);
            if (isBorder(z, nZ) || interior) {
                addSlope(surface, x, z, x - 1, z, dX);
                addSlope(surface, x, z, x + 1, z, dX);
            }
            if (nZ > 1 && (isBorder(x, nX) || interior)) {
                addSlope(surface, x, z, x, z - 1, dZ);
                addSlope(surface, x, z, x, z + 1, dZ);
            }
        }
    }
}

/// The surface of the second column at most delta rows below that of the first, as far as the rows
/// above both bottoms can tell.
void TinyEnergy::addSlope(int surface, int x1, int z1, int x2, int z2, int delta)
{
    const int a = columnAt(surface, x1, z1);
    const int b = columnAt(surface, x2, z2);
    if (a < 0 || b < 0) {
        return;
    }
    const int end = m_columns[static_cast<std::size_t>(a)].bottom;
    for (int row = 0; row + delta < end; ++row) {
        addPair(a, row, b, row + delta, hard, 0);
    }
}

void TinyEnergy::addShapeLink(int surface, int x, int z, int dx, int dz, int weight)
{
    const int a = columnAt(surface, x, z);
    const int b = columnAt(surface, x + dx, z + dz);
    if (a < 0 || b < 0) {
        return;
    }
    for (int row = 0; row < m_columns[static_cast<std::size_t>(a)].bottom; ++row) {
        addPair(a, row, b, row, weight, weight);
    }
}

void TinyEnergy::addShape(int surface)
{
    const TinySurface& s = m_cut.surfaces[surface];
    const int nX = static_cast<int>(m_cut.nX);
    const int nZ = static_cast<int>(m_cut.nZ);
    const int stepX = static_cast<int>(s.stepX);
    const int stepZ = static_cast<int>(s.stepZ);
    for (int z = 0; z < nZ; ++z) {
        for (int x = 0; x < nX; ++x) {
            addShapeLink(surface, x, z, stepX, 0, s.weightX);
            addShapeLink(surface, x, z, 0, stepZ, s.weightZ);
        }
        for (int k = 1; k < stepX && k < nX; ++k) {
            if (columnAt(surface, k, z) >= 0) {
                addShapeLink(surface, 0, z, k, 0, s.weightX);
                addShapeLink(surface, nX - 1 - k, z, k, 0, s.weightX);
            }
        }
    }
    for (int k = 1; k < stepZ && k < nZ; ++k) {
        for (int x = 0; x < nX; ++x) {
            if (columnAt(surface, x, k) >= 0) {
                addShapeLink(surface, x, 0, 0, k, s.weightZ);
                addShapeLink(surface, x, nZ - 1 - k, 0, k, s.weightZ);
            }
        }
    }
}

void TinyEnergy::addHardDistance(int top, int bottom, int minimum, int maximum)
{
    for (const auto& [key, a] : m_index) {
        const auto& [surface, x, z] = key;
        if (surface != top) {
            continue;
        }
        const int b = columnAt(bottom, x, z);
        const Column& upper = m_columns[static_cast<std::size_t>(a)];
        const Column& lower = m_columns[static_cast<std::size_t>(b)];
        for (int row = upper.top; row < upper.bottom; ++row) {
            addPair(a, row, b, row + maximum, hard, 0);
            addPair(a, row, b, row + minimum, 0, hard);
            // Too far above the lower range; the row at the limit is forbidden too.
            if (upper.top + maximum < lower.top && row <= lower.top - maximum) {
                m_unary.push_back({a, row, hard});
            }
        }
        for (int row = lower.top; row < std::min(lower.bottom, upper.top + minimum); ++row) {
            m_unary.push_back({b, row, hard});
        }
    }
}

void TinyEnergy::addBetween(int top, int bottom, unsigned x, unsigned z, int distance, int weight)
{
    const int a = columnAt(top, static_cast<int>(x), static_cast<int>(z));
    const int b = columnAt(bottom, static_cast<int>(x), static_cast<int>(z));
    if (a < 0) {
        return;
    }
    const Column& upper = m_columns[static_cast<std::size_t>(a)];
    const Column& lower = m_columns[static_cast<std::size_t>(b)];
    // In places counted from the tops of the ranges, although the bottoms align them.
    const int shift = distance - (lower.bottom - upper.bottom);
    const int upperRows = upper.bottom - upper.top;
    const int lowerRows = lower.bottom - lower.top;
    for (int k = 0; k < upperRows; ++k) {
        if (k + shift < 0) {
            m_unary.push_back({a, upper.top + k, weight});
        } else if (k + shift < lowerRows) {
            addPair(a, upper.top + k, b, lower.top + k + shift, weight, weight);
        } else {
            m_unary.push_back({a, upper.top + k, -weight});
        }
    }
    for (int k = 0; k < lowerRows; ++k) {
        if (k - shift < 0) {
            m_unary.push_back({b, lower.top + k, weight});
        } else if (k - shift >= upperRows) {
            m_unary.push_back({b, lower.top + k, -weight});
        }
    }
}

void TinyEnergy::addToRow(int surface, unsigned x, unsigned z, int row, int weight)
{
    const int column = columnAt(surface, static_cast<int>(x), static_cast<int>(z));
    if (column < 0) {
        return;
    }
    const Column& range = m_columns[static_cast<std::size_t>(column)];
    for (int r = range.top; r < range.bottom; ++r) {
        m_unary.push_back({column, r, r < row ? weight : -weight});
    }
}

std::int64_t TinyEnergy::energyOf(const std::vector<int>& state) const
{
    const auto covers = [&](int column, int row) {
        return state[static_cast<std::size_t>(column)] <= row;
    };
    std::int64_t energy = 0;
    for (const Unary& term : m_unary) {
        energy += covers(term.column, term.row) ? term.cost : 0;
    }
    for (const Pair& term : m_pairs) {
        const bool a = covers(term.columnA, term.rowA);
        const bool b = covers(term.columnB, term.rowB);
        energy += a && !b ? term.costA : b && !a ? term.costB : 0;
    }
    return energy;
}

std::vector<std::vector<int>> TinyEnergy::bestSurfaces() const
{
    std::vector<int> state;
    for (const Column& column : m_columns) {
        state.push_back(column.top);
    }
    std::vector<int> best = state;
    std::int64_t least = std::numeric_limits<std::int64_t>::max();
    int deepest = 0;
    for (bool more = true; more;) {
        const std::int64_t energy = energyOf(state);
        int depth = 0;
        for (const int row : state) {
            depth += row;
        }
        if (energy < least || (energy == least && depth > deepest)) {
            least = energy;
            deepest = depth;
            best = state;
        }
        more = false;
        for (std::size_t c = 0; c < state.size() && !more; ++c) {
            more = ++state[c] <= m_columns[c].bottom;
            if (!more) {
                state[c] = m_columns[c].top;
            }
        }
    }
    std::vector<std::vector<int>> surfaces;
    for (int s = 0; s < m_cut.surfaces.size(); ++s) {
        const VolumeLayer& top = *m_cut.surfaces[s].top;
        surfaces.emplace_back(top.begin(), top.end());
        for (const auto& [key, column] : m_index) {
            const auto& [surface, x, z] = key;
            const int row = best[static_cast<std::size_t>(column)];
            if (surface == s && row < m_columns[static_cast<std::size_t>(column)].bottom) {
                surfaces
                    .back()[static_cast<std::size_t>(z) * m_cut.nX + static_cast<std::size_t>(x)] =
                    row;
            }
        }
    }
    return surfaces;
}

} // namespace kelp::oct::test
