#include "BScanRenderer.h"

#include "DeviceFrame.h"
#include "GreyImage.h"
#include "PhantomRandom.h"
#include "ReflectivityColumn.h"
#include "Speckle.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kelp::phantom {

namespace {

// The choroid: grey values below Bruch's membrane and far below, and how fast it fades.
constexpr double choroidTop = 108.0;
constexpr double choroidBottom = 7.0;
constexpr double choroidFadingRows = 40.0;
/// How much of the choroid's brightness its vessels take or give.
constexpr double choroidTexture = 0.62;

/// Half a row of Gaussian spread to each side, as taps over two rows.
constexpr std::array<float, 3> pointSpread{0.5312F, 0.2192F, 0.0152F};

double choroidAt(double rowsBelow, double texture)
{
    const double fading = std::exp(-rowsBelow / choroidFadingRows);
    // Directly below the membrane lie the finest vessels, an even sheet.
    const double coarse = std::min(1.0, rowsBelow / 8.0);
    return choroidBottom +
           (choroidTop - choroidBottom) * fading * (1.0 + choroidTexture * coarse * texture);
}

void addChoroid(std::vector<float>& column, double membrane, double x, std::uint64_t seed)
{
    const double bottom = static_cast<double>(column.size());
    for (double row = std::max(0.0, std::floor(membrane)); row < bottom; row += 1.0) {
        const double from = std::max(row, membrane);
        const double below = 0.5 * (from + row + 1.0) - membrane;
        // Vessels of the choroid grow with the depth, in mm along and in rows down.
        const double texture = 0.75 * smoothNoise(seed, x / 0.085, below / 11.0) +
                               0.6 * smoothNoise(seed + 1, x / 0.22, below / 26.0);
        column[static_cast<std::size_t>(row)] +=
            static_cast<float>((row + 1.0 - from) * choroidAt(below, texture));
    }
}

/// The vessel's own section, and its shadow on everything below it.
void addVessel(std::vector<float>& column, const SurfaceColumn& surfaces)
{
    const double halfHeight = surfaces.vesselHalfHeight;
    if (halfHeight <= 0.0) {
        return;
    }
    const double ilm = surfaces.depth[ILM];
    const double center = std::max(ilm + halfHeight + 1.5, surfaces.depth[GCL]);
    const double upper = center - halfHeight;
    const double lower = center + halfHeight;
    for (double row = std::max(0.0, std::floor(upper)); row < static_cast<double>(column.size());
         row += 1.0) {
        float& value = column[static_cast<std::size_t>(row)];
        const double middle = row + 0.5;
        const double inside = std::clamp(std::min(middle - upper, lower - middle) + 0.5, 0.0, 1.0);
        // Blood scatters strongly where the light enters and hides what is below.
        const double blood = 165.0 - 55.0 * (middle - upper) / (lower - upper);
        value += static_cast<float>(0.8 * inside * (blood - static_cast<double>(value)));
        const double below = std::clamp((middle - lower) / 4.0 + 0.5, 0.0, 1.0);
        value *= static_cast<float>(1.0 - surfaces.shadow * below);
    }
}

/// In the outermost rows the value goes on beyond the image.
void spreadAxially(std::vector<float>& column, std::vector<float>& scratch)
{
    const auto last = static_cast<std::ptrdiff_t>(column.size()) - 1;
    scratch = column;
    const auto at = [&scratch, last](std::ptrdiff_t row) {
        return scratch[static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(row, 0, last))];
    };
    for (std::ptrdiff_t row = 0; row <= last; ++row) {
        column[static_cast<std::size_t>(row)] = pointSpread[0] * at(row) +
                                                pointSpread[1] * (at(row - 1) + at(row + 1)) +
                                                pointSpread[2] * (at(row - 2) + at(row + 2));
    }
}

} // namespace

BScanRenderer::BScanRenderer(const Options& options, const ScanGeometry& geometry)
    : m_options(options), m_aScanSpacing(geometry.aScanSpacing / geometry.eyeScale)
{
}

QImage BScanRenderer::render(std::size_t bScan, const SurfaceSlice& slice) const
{
    const int columns = m_options.aScans;
    const int rows = m_options.rows;
    const std::uint64_t choroidSeed = streamSeed(m_options.seed, Stream::Choroid, bScan);
    const std::uint64_t gainSeed = streamSeed(m_options.seed, Stream::Brightness, bScan);
    const double scanGain = 1.0 + 0.04 * smoothNoise(gainSeed, 0.5);

    std::vector<float> image(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
    ReflectivityColumn reflectivity(rows);
    std::vector<float> scratch;
    for (int column = 0; column < columns; ++column) {
        const SurfaceColumn& surfaces = slice[static_cast<std::size_t>(column)];
        const double x = column * m_aScanSpacing;
        reflectivity.paint(surfaces, m_options.kind);
        std::vector<float>& values = reflectivity.values();
        addChoroid(values, surfaces.depth[BM], x, choroidSeed);
        addVessel(values, surfaces);
        spreadAxially(values, scratch);
        const auto gain =
            static_cast<float>(scanGain * (1.0 + 0.06 * smoothNoise(gainSeed + 1, x / 0.5) +
                                           0.03 * smoothNoise(gainSeed + 2, x / 0.05)));
        for (int row = 0; row < rows; ++row) {
            image[static_cast<std::size_t>(row) * static_cast<std::size_t>(columns) +
                  static_cast<std::size_t>(column)] = gain * values[static_cast<std::size_t>(row)];
        }
    }
    addSpeckle(image, columns, rows, m_options.noise,
               streamSeed(m_options.seed, Stream::Speckle, bScan));
    QImage grey = toGrey(image, columns, rows);
    if (m_options.fill) {
        DeviceFrame(m_options, bScan, slice).paintUncovered(grey);
    }
    return grey;
}

} // namespace kelp::phantom
