#include "ScanGeometry.h"

#include "PhantomRandom.h"
#include "RetinaAnatomy.h"

#include <cmath>

namespace kelp::phantom {

namespace {

constexpr double pi = 3.14159265358979323846;
/// 20 degrees on a human retina, and the 30 degrees of the localizer, in mm.
constexpr double scanExtent = 5.888;
constexpr double localizerExtent = 9.0624;
constexpr double circleRadius = 1.75;
constexpr double axialSpacing = 0.003872;
/// A mouse's retina under the same angle, beside a human's.
constexpr double mouseScale = 0.25;

/// The export gives coordinates in whole micrometres. The phantom samples where the reader will
/// believe that it was sampled.
Vector2d asExported(const Vector2d& position)
{
    return {std::floor(position.x * 1000.0 + 0.5) / 1000.0,
            std::floor(position.y * 1000.0 + 0.5) / 1000.0};
}

ScanPath line(const Vector2d& start, const Vector2d& end, int aScans)
{
    ScanPath path;
    path.start = asExported(start);
    path.end = asExported(end);
    const Vector2d length = path.end - path.start;
    for (int i = 0; i < aScans; ++i) {
        path.positions.push_back(aScans == 1 ? path.start
                                             : path.start + (i * length) / (aScans - 1));
    }
    return path;
}

/// From the temporal side over the upper half of the disc, as circle scans are shown.
ScanPath circle(const Vector2d& center, double radius, bool rightEye, int aScans)
{
    ScanPath path;
    path.center = asExported(center);
    path.start = asExported({path.center.x + (rightEye ? -radius : radius), path.center.y});
    const Vector2d fromCenter = path.start - path.center;
    const double startAngle = 3.0 * pi - std::atan2(fromCenter.x, -fromCenter.y);
    const double step = (rightEye ? 2.0 : -2.0) * pi / aScans;
    for (int i = 0; i < aScans; ++i) {
        const double angle = startAngle + i * step;
        path.positions.push_back(path.center +
                                 fromCenter.length() * Vector2d{std::sin(angle), -std::cos(angle)});
    }
    return path;
}

void addPaths(ScanGeometry& geometry, const Options& options)
{
    const double extent = scanExtent * geometry.eyeScale;
    const Vector2d& center = geometry.scanCenter;
    const Vector2d half{0.5 * extent, 0.0};
    switch (options.pattern) {
    case Pattern::Volume:
        // The device scans upwards, and y runs downwards on the localizer.
        for (int b = 0; b < options.bScans; ++b) {
            const double share =
                options.bScans == 1 ? 0.0 : 0.5 - static_cast<double>(b) / (options.bScans - 1);
            const Vector2d middle{center.x, center.y + share * extent};
            geometry.paths.push_back(line(middle - half, middle + half, options.aScans));
        }
        break;
    case Pattern::Section:
        geometry.paths.push_back(line(center - half, center + half, options.aScans));
        break;
    case Pattern::Circle:
        geometry.counterClockwise = !options.rightEye;
        geometry.aScanSpacing = 2.0 * pi * circleRadius * geometry.eyeScale / options.aScans;
        geometry.paths.push_back(
            circle(center, circleRadius * geometry.eyeScale, options.rightEye, options.aScans));
        break;
    case Pattern::Star:
        for (int b = 0; b < options.bScans; ++b) {
            const double angle = pi * b / options.bScans;
            const Vector2d arm = 0.5 * extent * Vector2d{std::cos(angle), -std::sin(angle)};
            geometry.paths.push_back(
                line(geometry.fovea - arm, geometry.fovea + arm, options.aScans));
        }
        break;
    }
}

} // namespace

Vector2d ScanGeometry::toEye(const Vector2d& onLocalizer) const
{
    const Vector2d fromFovea = (onLocalizer - fovea) / eyeScale;
    return {rightEye ? fromFovea.x : -fromFovea.x, -fromFovea.y};
}

ScanGeometry makeGeometry(const Options& options)
{
    ScanGeometry geometry;
    geometry.eyeScale = options.kind == Kind::Mouse ? mouseScale : 1.0;
    geometry.localizerSpacing = localizerExtent * geometry.eyeScale / options.localizerSize;
    geometry.aScanSpacing = scanExtent * geometry.eyeScale / options.aScans;
    geometry.axialSpacing = axialSpacing;
    geometry.rightEye = options.rightEye;
    const double middle = 0.5 * localizerExtent * geometry.eyeScale;
    geometry.scanCenter = {middle, middle};

    // The patient never looks quite where he should.
    Random random(options.seed, Stream::Geometry);
    const double offset = random.uniform(0.2, 0.3) * geometry.eyeScale;
    const double angle = random.uniform(0.0, 2.0 * pi);
    geometry.fovea = geometry.scanCenter + offset * Vector2d{std::cos(angle), std::sin(angle)};
    if (options.pattern == Pattern::Circle) {
        // Here the camera looks at the disc.
        const Vector2d disc = geometry.eyeScale * RetinaAnatomy::discCenter();
        geometry.fovea = geometry.fovea + Vector2d{options.rightEye ? -disc.x : disc.x, disc.y};
    }
    addPaths(geometry, options);
    return geometry;
}

} // namespace kelp::phantom
