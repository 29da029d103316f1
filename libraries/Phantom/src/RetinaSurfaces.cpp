#include "RetinaSurfaces.h"

#include "PhantomRandom.h"

#include <algorithm>
#include <cmath>

namespace kelp::phantom {

namespace {

/// Rows per square millimetre: how much the back of the eye rises in the image along a B-scan, and
/// from B-scan to B-scan, where the device follows the retina.
constexpr double curvature = 2.4;
constexpr double curvatureAcross = 0.9;
/// Rows per millimetre.
constexpr double largestTilt = 5.0;
/// Where the device keeps the retina: the share of the image above its middle.
constexpr double relativeHeight = 0.42;
constexpr double usualRows = 496.0;

/// What a large vessel takes of the light, and how large that is, in mm of a human eye.
constexpr double deepestShadow = 0.55;
constexpr double fullShadowHalfHeight = 0.045;

/// Bruch's membrane before the retina is moved into the image.
class BackOfTheEye
{
public:
    BackOfTheEye(const Options& options, const ScanGeometry& geometry)
        : m_geometry(geometry), m_separateScans(options.pattern == Pattern::Volume),
          // In a low image the retina has to lie flat to have room.
          m_flatness(std::min(1.0, options.rows / usualRows))
    {
        Random random(options.seed, Stream::Placement);
        m_tilt = {random.uniform(-largestTilt, largestTilt),
                  random.uniform(-largestTilt, largestTilt)};
        makeMotion(random);
    }

    double depthAt(std::size_t bScan, const Vector2d& position) const
    {
        const Vector2d p = (position - m_geometry.scanCenter) / m_geometry.eyeScale;
        const double along = m_tilt.x * p.x - curvature * p.x * p.x;
        // Between the B-scans of a volume the device corrects, so their depths go with the motion.
        const double across = m_separateScans ? 0.0 : m_tilt.y * p.y - curvature * p.y * p.y;
        return m_flatness * (along + across + m_motion[bScan]);
    }

private:
    /// A slow drift with small jumps, pulled back to the curved back of the eye. No step is larger
    /// than what a segmentation allows between neighbouring B-scans (two rows for the outer
    /// surfaces), less what the thickness of the outer retina changes over the distance.
    void makeMotion(Random& random)
    {
        const auto& paths = m_geometry.paths;
        const std::uint64_t driftSeed = random.next();
        m_motion.assign(paths.size(), 0.0);
        for (std::size_t b = 1; b < paths.size(); ++b) {
            const double distance =
                (paths[b].start - paths[b - 1].start).length() / m_geometry.eyeScale;
            const double largestStep = 1.85 - std::min(1.45, 2.25 * distance);
            const double y = (paths[b].start.y - m_geometry.scanCenter.y) / m_geometry.eyeScale;
            const double target = m_separateScans ? -curvatureAcross * y * y : 0.0;
            const double jump = random.uniform(-0.9, 0.9) * (random.chance(0.25) ? 1.0 : 0.25);
            const double drift = 0.6 * smoothNoise(driftSeed, 0.2 * static_cast<double>(b));
            const double start = b == 1 ? target : m_motion[b - 1];
            const double step = (b == 1 ? 0.0 : 0.2 * (target - start)) + drift + jump;
            m_motion[b] = start + std::clamp(step, -largestStep, largestStep);
            if (b == 1) {
                m_motion[0] = start;
            }
        }
    }

    const ScanGeometry& m_geometry;
    bool m_separateScans;
    double m_flatness;
    Vector2d m_tilt;
    std::vector<double> m_motion;
};

SurfaceColumn makeColumn(const LayerThicknesses& thickness, double bm, double rowsPerMicrometre)
{
    SurfaceColumn column;
    column.depth[BM] = bm;
    column.depth[IRPE] = bm - thickness.irpeToBm * rowsPerMicrometre;
    column.depth[ISe] = bm - thickness.iseToBm * rowsPerMicrometre;
    column.depth[ONL] = column.depth[ISe] - thickness.onlToIse * rowsPerMicrometre;
    column.depth[INL] = column.depth[ONL] - thickness.inlToOnl * rowsPerMicrometre;
    column.depth[GCL] = column.depth[INL] - thickness.gclToInl * rowsPerMicrometre;
    column.depth[ILM] = column.depth[GCL] - thickness.ilmToGcl * rowsPerMicrometre;
    return column;
}

void moveIntoImage(std::vector<SurfaceSlice>& slices, int rows)
{
    double highest = slices.front().front().depth[ILM];
    double lowest = slices.front().front().depth[BM];
    for (const SurfaceSlice& slice : slices) {
        for (const SurfaceColumn& column : slice) {
            highest = std::min(highest, column.depth[ILM]);
            lowest = std::max(lowest, column.depth[BM]);
        }
    }
    const double shift = relativeHeight * rows - 0.5 * (highest + lowest);
    for (SurfaceSlice& slice : slices) {
        for (SurfaceColumn& column : slice) {
            for (double& depth : column.depth) {
                depth += shift;
            }
        }
    }
}

} // namespace

std::vector<SurfaceSlice> placeSurfaces(const Options& options, const ScanGeometry& geometry,
                                        const RetinaAnatomy& anatomy, const VesselMap& vessels)
{
    const BackOfTheEye back(options, geometry);
    const double rowsPerMicrometre = 1.0 / (1000.0 * geometry.axialSpacing);
    std::vector<SurfaceSlice> slices;
    slices.reserve(geometry.paths.size());
    for (std::size_t b = 0; b < geometry.paths.size(); ++b) {
        SurfaceSlice& slice = slices.emplace_back();
        slice.reserve(geometry.paths[b].positions.size());
        for (const Vector2d& position : geometry.paths[b].positions) {
            const Vector2d inEye = geometry.toEye(position);
            SurfaceColumn& column = slice.emplace_back(
                makeColumn(anatomy.at(inEye), back.depthAt(b, position), rowsPerMicrometre));
            const double halfHeight = vessels.halfHeightAt(inEye);
            column.vesselHalfHeight = halfHeight * geometry.eyeScale * 1000.0 * rowsPerMicrometre;
            column.shadow = deepestShadow * std::min(1.0, halfHeight / fullShadowHalfHeight);
        }
    }
    moveIntoImage(slices, options.rows);
    return slices;
}

} // namespace kelp::phantom
