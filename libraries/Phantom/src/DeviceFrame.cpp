#include "DeviceFrame.h"

#include "PhantomRandom.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kelp::phantom {

namespace {

constexpr uchar white = 255;

// Measured in exports of an eye with oedema, in images of 496 rows and 768 columns: the rows that
// are missing at the end where most are, and the share of them that is missing at the other end,
// where it is above the frame if it is below here. That makes 4,500 to 35,000 pixels.
constexpr double usualRows = 496.0;
constexpr double leastMissing = 16.0;
constexpr double mostMissing = 58.0;
constexpr double leastShare = -0.9;
constexpr double largestShare = 0.5;
constexpr int mostMissingColumns = 2;
/// Narrow images would lose too much of their retina.
constexpr int columnsPerMissing = 32;

/// Rows between white and retina. JPEG smears an edge over its block of 8 rows.
constexpr double clearRows = 10.0;

/// How many rows of the shift there is room for.
double roomFor(double shift, const SurfaceColumn& surfaces, int rows)
{
    return shift > 0.0 ? surfaces.depth[ILM] - clearRows : rows - clearRows - surfaces.depth[BM];
}

} // namespace

DeviceFrame::DeviceFrame(const Options& options, std::size_t bScan, const SurfaceSlice& slice)
    : m_rows(options.rows), m_shifts(slice.size()), m_endColumn(options.aScans)
{
    Random random(streamSeed(options.seed, Stream::Frame, bScan), Stream::Frame);
    const double scale = options.rows / usualRows;
    const double most = scale * random.uniform(leastMissing, mostMissing);
    const double missing = random.chance(0.5) ? most : -most;
    double leftEnd = missing;
    double rightEnd = missing * random.uniform(leastShare, largestShare);
    if (random.chance(0.5)) {
        std::swap(leftEnd, rightEnd);
    }
    tilt(leftEnd, rightEnd, slice);

    const int missingColumns =
        std::min(random.integer(0, mostMissingColumns), options.aScans / columnsPerMissing);
    if (random.chance(0.5)) {
        m_firstColumn += missingColumns;
    } else {
        m_endColumn -= missingColumns;
    }
}

void DeviceFrame::tilt(double leftEnd, double rightEnd, const SurfaceSlice& slice)
{
    const auto shiftAt = [&](std::size_t column) {
        const double place =
            (static_cast<double>(column) + 0.5) / static_cast<double>(slice.size());
        return leftEnd + place * (rightEnd - leftEnd);
    };
    double possible = 1.0;
    for (std::size_t column = 0; column < slice.size(); ++column) {
        const double shift = shiftAt(column);
        const double room = std::max(0.0, roomFor(shift, slice[column], m_rows));
        if (std::abs(shift) > room) {
            possible = std::min(possible, room / std::abs(shift));
        }
    }
    for (std::size_t column = 0; column < slice.size(); ++column) {
        m_shifts[column] = static_cast<int>(std::lround(possible * shiftAt(column)));
    }
}

bool DeviceFrame::isUncovered(int row, int column) const
{
    const int shift = m_shifts[static_cast<std::size_t>(column)];
    return column < m_firstColumn || column >= m_endColumn || row < shift || row >= m_rows + shift;
}

int DeviceFrame::uncoveredPixels() const
{
    int pixels = 0;
    for (int column = 0; column < static_cast<int>(m_shifts.size()); ++column) {
        for (int row = 0; row < m_rows; ++row) {
            pixels += isUncovered(row, column) ? 1 : 0;
        }
    }
    return pixels;
}

void DeviceFrame::paintUncovered(QImage& image) const
{
    for (int row = 0; row < image.height(); ++row) {
        uchar* const pixels = image.scanLine(row);
        for (int column = 0; column < image.width(); ++column) {
            if (isUncovered(row, column)) {
                pixels[column] = white;
            }
        }
    }
}

} // namespace kelp::phantom
