#include "LayerDistribution.h"

#include "kelpCheck.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace kelp::oct {

namespace {

constexpr const char* sourcePath = "libraries/OCTScan/src/layerSeg/LayerDistribution";
constexpr int deepestRow = std::numeric_limits<unsigned short>::max();

bool areOfOneLength(const LayerDistribution::Matrix& means,
                    const LayerDistribution::Matrix& variances)
{
    const std::size_t length = means.front().size();
    const auto hasLength = [length](const std::vector<double>& row) {
        return row.size() == length;
    };
    return length > 0 && std::all_of(means.begin(), means.end(), hasLength) &&
           std::all_of(variances.begin(), variances.end(), hasLength);
}

/// The nearest grid index, clamped to the grid.
std::size_t gridIndex(float position, double offset, double spacing, std::size_t count)
{
    const double index = (static_cast<double>(position) + offset) / spacing + 0.5;
    // The comparison this way round also brings "not a number" to the first index.
    if (!(index > 0.0)) {
        return 0;
    }
    return static_cast<std::size_t>(std::min(index, static_cast<double>(count - 1)));
}

/// The way from a scan's indices to positions relative to the fovea, in single precision.
class ScanFrame
{
public:
    ScanFrame(const double spacing[3], const double origin[2])
        : m_stepX(static_cast<float>(spacing[0])),
          m_stepZ(static_cast<float>(spacing[2])), m_origin{origin[0], origin[1]}
    {
    }
    float x(unsigned aScan) const
    {
        return static_cast<float>(static_cast<float>(aScan) * m_stepX - m_origin[1]);
    }
    float z(unsigned bScan) const
    {
        return static_cast<float>(static_cast<float>(bScan) * m_stepZ - m_origin[0]);
    }

private:
    float m_stepX;
    float m_stepZ;
    std::array<double, 2> m_origin;
};

/// Truncated; what is not above zero, or no number, is 0.
int toRows(float rows)
{
    if (!(rows > 0.0F)) {
        return 0;
    }
    return static_cast<int>(std::min(rows, static_cast<float>(deepestRow)));
}

} // namespace

LayerDistribution::LayerDistribution(Matrix means, Matrix variances, const Vector3d& spacing,
                                     const std::array<double, 2>& foveaOffset,
                                     const QString& upperLayerName, const QString& lowerLayerName)
    : m_means(std::move(means)), m_variances(std::move(variances)), m_spacing(spacing),
      m_foveaOffset(foveaOffset), m_upperLayerName(upperLayerName), m_lowerLayerName(lowerLayerName)
{
    constexpr Place place{sourcePath, "kelp::oct::LayerDistribution::LayerDistribution"};
    check(m_means.size() == m_variances.size(), place,
          "Mismatch between mean and variance vectors.");
    check(!m_means.empty(), place, "Mean vector <= 0.");
    check(m_spacing.x > 0.0, place, "X-Spacing <= 0.");
    check(m_spacing.y > 0.0, place, "Y-Spacing <= 0.");
    check(m_spacing.z > 0.0, place, "Z-Spacing <= 0.");
    check(areOfOneLength(m_means, m_variances), place, "Rows are empty or of different lengths.");
}

float LayerDistribution::getMean(float xPosition, float zPosition) const
{
    return static_cast<float>(lookup(m_means, xPosition, zPosition));
}

float LayerDistribution::getVariance(float xPosition, float zPosition) const
{
    return static_cast<float>(lookup(m_variances, xPosition, zPosition));
}

double LayerDistribution::lookup(const Matrix& matrix, float xPosition, float zPosition) const
{
    // The row direction of the grid lies across the B-scans.
    const std::vector<double>& row =
        matrix[gridIndex(zPosition, m_foveaOffset[0], m_spacing.z, matrix.size())];
    return row[gridIndex(xPosition, m_foveaOffset[1], m_spacing.x, row.size())];
}

LayerDistribution::Rows LayerDistribution::rowsAt(float xPosition, float zPosition, float rowHeight,
                                                  float k) const
{
    return {getMean(xPosition, zPosition) / rowHeight,
            std::sqrt(getVariance(xPosition, zPosition)) * k / rowHeight};
}

VolumeLayerPtr LayerDistribution::getMinDistanceLayer(const double spacing[3], unsigned nrAScans,
                                                      unsigned nrBScans, const double origin[2],
                                                      float k) const
{
    const ScanFrame frame(spacing, origin);
    const auto rowHeight = static_cast<float>(spacing[1]);
    const VolumeLayerPtr distances(new VolumeLayer(nrBScans, nrAScans));
    for (unsigned z = 0; z < nrBScans; ++z) {
        for (unsigned x = 0; x < nrAScans; ++x) {
            const Rows rows = rowsAt(frame.x(x), frame.z(z), rowHeight, k);
            const bool reachable = rows.mean > 0.0F && rows.mean > rows.deviation;
            (*distances)(z, x) =
                static_cast<unsigned short>(reachable ? toRows(rows.mean - rows.deviation) : 0);
        }
    }
    return distances;
}

VolumeLayerPtr LayerDistribution::getMaxDistanceLayer(const double spacing[3], unsigned nrAScans,
                                                      unsigned nrBScans, const double origin[2],
                                                      float k) const
{
    const ScanFrame frame(spacing, origin);
    const auto rowHeight = static_cast<float>(spacing[1]);
    const VolumeLayerPtr distances(new VolumeLayer(nrBScans, nrAScans));
    for (unsigned z = 0; z < nrBScans; ++z) {
        for (unsigned x = 0; x < nrAScans; ++x) {
            const Rows rows = rowsAt(frame.x(x), frame.z(z), rowHeight, k);
            (*distances)(z, x) = static_cast<unsigned short>(toRows(rows.deviation + rows.mean));
        }
    }
    return distances;
}

void LayerDistribution::addSubtractRelativeSearchRange(const VolumeLayerPtr& topLayer,
                                                       const VolumeLayerPtr& bottomLayer,
                                                       const LayerDistribution& other,
                                                       const double spacing[3],
                                                       const double origin[2], float k) const
{
    constexpr Place place{sourcePath,
                          "kelp::oct::LayerDistribution::addSubtractRelativeSearchRange"};
    check(!topLayer.isNull(), place, "Top layer is null.");
    check(topLayer->columns > 0, place, "Top layer has no columns.");
    check(topLayer->rows > 0, place, "Top layer has no rows.");
    check(!bottomLayer.isNull(), place, "Bottom layer is null.");
    check(bottomLayer->columns == topLayer->columns, place,
          "Mismatch between bottom and top layer columns.");
    check(bottomLayer->rows == topLayer->rows, place,
          "Mismatch between bottom and top layer rows.");
    check(spacing[0] > 0.0, place, "Layer X-spacing <= 0.");
    check(spacing[1] > 0.0, place, "Layer Y-spacing <= 0.");
    check(spacing[2] > 0.0, place, "Layer Z-spacing <= 0.");

    const ScanFrame frame(spacing, origin);
    const auto rowHeight = static_cast<float>(spacing[1]);
    for (unsigned z = 0; z < topLayer->rows; ++z) {
        for (unsigned x = 0; x < topLayer->columns; ++x) {
            const Rows a = rowsAt(frame.x(x), frame.z(z), rowHeight, k);
            const Rows b = other.rowsAt(frame.x(x), frame.z(z), rowHeight, k);
            const int top = (*topLayer)(z, x);
            const int bottom = (*bottomLayer)(z, x);
            // The slack of the gap goes to the two ends by their variances.
            const float slack = static_cast<float>(bottom - top) - a.mean - b.mean;
            const float e = slack * a.deviation /
                            (b.deviation * b.deviation + a.deviation * a.deviation) * a.deviation;
            const float f = slack / b.deviation - e / b.deviation;
            const float smaller = std::min(a.deviation, b.deviation);
            const int add = toRows(std::floor(a.mean + e - smaller));
            const int subtract = toRows(std::floor(f * b.deviation + b.mean - smaller));
            (*topLayer)(z, x) = static_cast<unsigned short>(std::min(top + add, deepestRow));
            if (bottom >= subtract) {
                (*bottomLayer)(z, x) = static_cast<unsigned short>(bottom - subtract);
            }
        }
    }
}

} // namespace kelp::oct
