#include "EtdrsCoverage.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace kelp::oct {

namespace {

constexpr double gridRadius = etdrsRadii[2];
constexpr double diagonalSlopes[] = {-1.0, 1.0};

/// Within a sector the thickness differs by some 50 um, so that a missing part of this size moves
/// the mean by about 1 um, a quarter of an image row.
constexpr double largestMissingShare = 0.02;
/// Of fewer than this a single A-scan is a part that matters.
constexpr int fewAScans = 10;

/// Light does not resolve less than half a micrometre, so that A-scans closer than this are copies
/// of each other rather than a grid that could be continued. Above it the A-scans of a sector can
/// be counted in an int.
constexpr double smallestSpacing = 1e-4; // mm
/// Steps from the scan's first A-scan, beyond which numbers of A-scans are no longer exact.
constexpr double largestIndex = 1e9;
/// A line that stays this close to a diagonal of the grid has the sectors of both its sides mixed
/// by rounding; one that leaves it crosses what is mixed within one step.
constexpr double alongDiagonal = 1e-9; // mm

double cross(const Vector2d& a, const Vector2d& b)
{
    return a.x * b.y - a.y * b.x;
}

/// The numbers first, first + 1, ... without behind.
struct IndexRange
{
    double first = 0.0;
    double behind = 0.0;

    bool holds(double index) const { return index >= first && index < behind; }
};

/// The grid as it is laid around the fovea of this eye.
struct Grid
{
    CoordOnLocalizer fovea;
    bool rightEye = false;
};

/// Counts A-scans that stand at equal steps on a line. Between two places where the line meets a
/// circle or a diagonal of the grid all of them lie in one sector, so that only few are looked at.
class GridLine
{
public:
    GridLine(const Grid& grid, const Vector2d& start, const Vector2d& step)
        : m_grid(grid), m_offset(start - grid.fovea.toVector()), m_step(step),
          m_stepLength(step.length()), m_nearest(-dot(m_offset, step) / step.squaredLength())
    {
    }

    bool isUsable() const
    {
        // Also false for what is no number.
        return m_stepLength >= smallestSpacing && std::isfinite(m_stepLength) &&
               m_offset.length() / m_stepLength < largestIndex;
    }

    /// positionAt gives the place of an A-scan by its number, which for 0 is the line's start.
    template <typename PositionAt>
    void count(const IndexRange& leftOut, PositionAt&& positionAt, AScansOfSectors& counts) const
    {
        std::vector<double> bounds = boundsOfRuns();
        bounds.insert(bounds.end(), {leftOut.first, leftOut.behind});
        std::sort(bounds.begin(), bounds.end());
        for (std::size_t i = 0; i + 1 < bounds.size(); ++i) {
            if (bounds[i] == bounds[i + 1] || leftOut.holds(bounds[i])) {
                continue;
            }
            const EtdrsSector sector =
                etdrsSector(positionAt(bounds[i]), m_grid.fovea, m_grid.rightEye);
            if (sector != EtdrsSector::Outside) {
                counts[static_cast<std::size_t>(sector)] +=
                    static_cast<int>(bounds[i + 1] - bounds[i]);
            }
        }
    }

private:
    /// Where the line may pass from one sector to another, in steps from its start.
    std::vector<double> crossings() const
    {
        std::vector<double> places;
        const double distance = cross(m_step, m_offset) / m_stepLength;
        for (const double radius : etdrsRadii) {
            // A line that only touches the circle may miss it by rounding.
            const double half =
                std::sqrt(std::max(0.0, radius * radius - distance * distance)) / m_stepLength;
            places.insert(places.end(), {m_nearest - half, m_nearest + half});
        }
        for (const double slope : diagonalSlopes) {
            const double place = (slope * m_offset.x - m_offset.y) / (m_step.y - slope * m_step.x);
            // Not for a line beside the diagonal.
            if (std::abs(place) < largestIndex) {
                places.push_back(place);
            }
        }
        return places;
    }

    bool runsAlongDiagonal() const
    {
        const double across = gridRadius / m_stepLength;
        const auto isOnDiagonal = [this](double slope, double index) {
            const Vector2d place = m_offset + index * m_step;
            return std::abs(place.y - slope * place.x) < alongDiagonal;
        };
        return std::any_of(std::begin(diagonalSlopes), std::end(diagonalSlopes), [&](double slope) {
            return isOnDiagonal(slope, m_nearest - across) &&
                   isOnDiagonal(slope, m_nearest + across);
        });
    }

    /// First A-scans of runs that lie in one sector, the last one behind the grid. Those next to a
    /// crossing stand alone, since rounding decides on which side of it they lie.
    std::vector<double> boundsOfRuns() const
    {
        std::vector<double> bounds;
        for (const double place : crossings()) {
            const double below = std::floor(place);
            bounds.insert(bounds.end(), {below - 1.0, below, below + 1.0, below + 2.0});
        }
        if (runsAlongDiagonal()) {
            const auto [first, last] = std::minmax_element(bounds.begin(), bounds.end());
            const double behind = *last;
            for (double index = *first; index < behind; ++index) {
                bounds.push_back(index);
            }
        }
        return bounds;
    }

    const Grid& m_grid;
    Vector2d m_offset; ///< of the start from the fovea
    Vector2d m_step;
    double m_stepLength;
    double m_nearest; ///< steps from the start to the place nearest to the fovea
};

Vector2d positionOf(const OCTScan& scan, int bScan, int aScan)
{
    return scan.volumeIndexToLocalizerCoords(bScan, aScan).toVector();
}

/// Each B-scan along its own line.
AScansOfSectors countAlongBScans(const OCTScan& scan, int nrAScans, const Grid& grid)
{
    AScansOfSectors counts{};
    for (int i = 0; i < scan.getBScanCount(); ++i) {
        const Vector2d start = positionOf(scan, i, 0);
        const Vector2d step = positionOf(scan, i, 1) - start;
        const GridLine line(grid, start, step);
        if (line.isUsable()) {
            const auto positionAt = [&](double index) {
                return CoordOnLocalizer(start + index * step);
            };
            line.count({0.0, static_cast<double>(nrAScans)}, positionAt, counts);
        }
    }
    return counts;
}

/// Numbers of the B-scans of the continued volume that may reach into the grid; none where they do
/// not stand side by side.
std::optional<IndexRange> bScansOverGrid(const Vector2d& origin, const Vector2d& aScanStep,
                                         const Vector2d& bScanStep, const Grid& grid)
{
    const double area = cross(aScanStep, bScanStep);
    const double distance = std::abs(area) / aScanStep.length();
    const double middle = cross(aScanStep, grid.fovea.toVector() - origin) / area;
    if (!(distance >= smallestSpacing) || !(std::abs(middle) < largestIndex)) {
        return std::nullopt;
    }
    const double half = gridRadius / distance;
    return IndexRange{std::floor(middle - half), std::ceil(middle + half) + 1.0};
}

AScansOfSectors countOfVolume(const OCTScan& scan, int nrAScans, const Grid& grid)
{
    const Vector2d origin = positionOf(scan, 0, 0);
    const Vector2d aScanStep = positionOf(scan, 0, 1) - origin;
    const Vector2d bScanStep = positionOf(scan, 1, 0) - origin;
    const auto bScans = bScansOverGrid(origin, aScanStep, bScanStep, grid);
    if (!bScans) {
        return countAlongBScans(scan, nrAScans, grid);
    }
    AScansOfSectors counts{};
    const IndexRange bScansOfScan{0.0, static_cast<double>(scan.getBScanCount())};
    for (double bScan = bScans->first; bScan < bScans->behind; ++bScan) {
        const auto positionAt = [&](double aScan) {
            return scan.volumeIndexToLocalizerCoords(VolumeIndex{bScan, aScan});
        };
        const GridLine line(grid, positionAt(0.0).toVector(), aScanStep);
        if (line.isUsable()) {
            const double nrInside = bScansOfScan.holds(bScan) ? nrAScans : 0.0;
            line.count({0.0, nrInside}, positionAt, counts);
        }
    }
    return counts;
}

} // namespace

AScansOfSectors aScansBeyondScan(const OCTScan& scan, int nrAScans, const CoordOnLocalizer& fovea)
{
    if (*scan.getScanPattern() == OCTScanPatternCircularBScan()) {
        return {};
    }
    const Grid grid{fovea, isRightEye(scan)};
    return *scan.getScanPattern() == OCTScanPatternVolume()
               ? countOfVolume(scan, nrAScans, grid)
               : countAlongBScans(scan, nrAScans, grid);
}

bool SectorCoverage::isCut() const
{
    const int missing = expected - inside;
    // The scan's last A-scan lies a step before its far border: a scan as large as the grid lacks
    // the one A-scan on its rim.
    if (missing <= 1 && expected >= fewAScans) {
        return false;
    }
    return missing > largestMissingShare * expected;
}

QStringList EtdrsTable::cutSectors() const
{
    QStringList labels;
    for (int column = 0; column < nrColumns; ++column) {
        if (coverage[static_cast<std::size_t>(column)].isCut()) {
            labels.append(columnLabel(column));
        }
    }
    return labels;
}

QString EtdrsTable::coverageWarning() const
{
    const QStringList labels = cutSectors();
    if (labels.isEmpty()) {
        return {};
    }
    return QString(labels.size() == 1 ? "Sector %1 is cut by the border of the scan"
                                      : "Sectors %1 are cut by the border of the scan")
        .arg(labels.join(", "));
}

} // namespace kelp::oct
