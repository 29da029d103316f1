#include "OCTScan.h"

#include "kelpCheck.h"

using namespace kelp::oct;

namespace {

constexpr char sourcePath[] = "libraries/OCTScan/src/data/OCTScan";
constexpr char patternNotImplemented[] = "not implemented for OCT scan pattern %1";

double distance(const Vector2d& a, const Vector2d& b)
{
    return (b - a).length();
}

[[noreturn]] void throwNotImplemented(const kelp::Place& place, const QString& text)
{
    throw kelp::NotImplemented(kelp::locatedText(place, text));
}

} // namespace

QString OCTScan::patternText() const
{
    return m_pattern->toString();
}

const Vector2d& OCTScan::position(unsigned bScan, unsigned aScan) const
{
    return bScanAt(bScan)->getAScanPosition(aScan);
}

void OCTScan::checkTwoBScans(const kelp::Place& place) const
{
    if (m_bScans.size() < 2) {
        kelp::throwAssertion(
            place, QString("only have %1 BScans, but need at least two.").arg(m_bScans.size()));
    }
    kelp::check(!m_bScans.at(1).isNull(), place, "second BScan is null.");
}

Vector2d OCTScan::getVolumeOrigin() const
{
    constexpr kelp::Place place{sourcePath, "OCTScan::getVolumeOrigin"};
    kelp::check(!m_bScans.isEmpty(), place, "there are no BScans");
    kelp::check(!m_bScans.first().isNull(), place, "the first BScan is null");
    return position(0, 0);
}

Matrix2x2 OCTScan::getOrientationOnLocalizer() const
{
    constexpr kelp::Place place{sourcePath, "OCTScan::getOrientationOnLocalizer"};
    if (m_bScans.isEmpty()) {
        return Matrix2x2::identity();
    }
    kelp::check(!m_bScans.first().isNull(), place, "First BScan is null");
    const Vector2d u = m_bScans.first()->getNrAScans() > 1 ? m_bScans.first()->getScanDirection()
                                                           : Vector2d{1.0, 0.0};
    Vector2d v{u.y, -u.x};
    if (m_bScans.size() > 1) {
        kelp::check(!m_bScans.at(1).isNull(), place, "Second BScan is null");
        v = (position(1, 0) - position(0, 0)).scaledTo(1.0);
    }
    return {u.x, v.x, u.y, v.y};
}

Vector2d OCTScan::getSliceSpacing() const
{
    constexpr kelp::Place place{sourcePath, "OCTScan::getSliceSpacing"};
    if (!hasPattern<OCTScanPatternSingleBScan, OCTScanPatternVolume, OCTScanPatternCircularBScan,
                    OCTScanPatternStar>()) {
        kelp::throwAssertion(place, QString(patternNotImplemented).arg(patternText()) + ".");
    }
    kelp::check(!m_bScans.isEmpty(), place, "there are no BScans.");
    kelp::check(!m_bScans.first().isNull(), place, "first BScan is null");
    return {distance(position(0, 0), position(0, 1)), m_bScans.first()->getAxialResolution()};
}

Vector3d OCTScan::getVolumeSpacing() const
{
    const Vector2d slice = getSliceSpacing();
    const bool hasDepth = hasPattern<OCTScanPatternVolume>() && m_bScans.size() > 1;
    return {slice.x, slice.y, hasDepth ? distance(position(0, 0), position(1, 0)) : 1.0};
}

kelp::Vector3<int> OCTScan::getVolumeSize() const
{
    constexpr kelp::Place place{sourcePath, "OCTScan::getVolumeSize"};
    kelp::check(!m_bScans.isEmpty(), place, "there are no BScans.");
    kelp::check(!m_bScans.first().isNull(), place, "first BScan is null");
    // Stars have a spacing but no size: their B-scans do not span a volume.
    if (!hasPattern<OCTScanPatternSingleBScan, OCTScanPatternVolume,
                    OCTScanPatternCircularBScan>()) {
        kelp::throwAssertion(place, QString(patternNotImplemented).arg(patternText()) + ".");
    }
    const BScan& first = *m_bScans.first();
    return {first.getNrAScans(), first.getImage()->getRows(), m_bScans.size()};
}

Vector2d OCTScan::getCenter() const
{
    constexpr kelp::Place place{sourcePath, "OCTScan::getCenter"};
    if (hasPattern<OCTScanPatternSingleBScan, OCTScanPatternCircularBScan, OCTScanPatternStar>()) {
        kelp::check(!m_bScans.isEmpty(), place, "There are no BScans.");
        kelp::check(!m_bScans.first().isNull(), place, "First BScan is null.");
        return m_bScans.first()->getCenter();
    }
    if (hasPattern<OCTScanPatternVolume>()) {
        const kelp::Vector3<int> size = getVolumeSize();
        const Vector3d spacing = getVolumeSpacing();
        return getVolumeOrigin() + getOrientationOnLocalizer() *
                                       Vector2d{size.x * spacing.x * 0.5, size.z * spacing.z * 0.5};
    }
    throwNotImplemented(place,
                        QString("Not implemented for OCT scan pattern type %1").arg(patternText()));
}

VolumeIndex OCTScan::localizerCoordToVolumeIndex(const CoordOnLocalizer& coord) const
{
    constexpr kelp::Place place{sourcePath, "OCTScan::localizerCoordToVolumeIndex"};
    kelp::check(!m_bScans.isEmpty(), place, "There are no BScans.");
    kelp::check(!m_bScans.first().isNull(), place, "first BScan is null.");
    const Vector2d& origin = position(0, 0);
    const Vector2d a = position(0, 1) - origin;
    const Vector2d q = coord.toVector() - origin;
    // B-scans along the localizer's y axis have an A-scan step without an x component, so their
    // A-scan index is taken from the other equation.
    const bool alongY = a.x == 0.0;
    if (hasPattern<OCTScanPatternVolume>()) {
        checkTwoBScans(place);
        const Vector2d b = position(1, 0) - origin;
        const double bScan = (a.x * q.y - a.y * q.x) / (b.y * a.x - a.y * b.x);
        const double aScan = alongY ? (q.y - b.y * bScan) / a.y : (q.x - b.x * bScan) / a.x;
        return {bScan, aScan};
    }
    if (hasPattern<OCTScanPatternSingleBScan>()) {
        const double t = (a.x * q.y - a.y * q.x) / (a.x * a.x + a.y * a.y);
        return {0.0, alongY ? (q.y - a.x * t) / a.y : (q.x + a.y * t) / a.x};
    }
    throwNotImplemented(place, QString(patternNotImplemented).arg(patternText()));
}

VolumeCoords OCTScan::localizerCoordToVolumeCoords(const CoordOnLocalizer& coord) const
{
    const VolumeIndex index = localizerCoordToVolumeIndex(coord);
    const Vector3d spacing = getVolumeSpacing();
    return {index.bScan * spacing.z, index.aScan * spacing.x};
}

CoordOnLocalizer OCTScan::volumeCoordsToLocalizerCoord(const VolumeCoords& coords) const
{
    const Vector3d spacing = getVolumeSpacing();
    return volumeIndexToLocalizerCoords(VolumeIndex{coords.z / spacing.z, coords.x / spacing.x});
}

CoordOnLocalizer OCTScan::gridPosition(const kelp::Place& place, double bScan, double aScan) const
{
    kelp::check(!bScanAt(0).isNull(), place, "first BScan is null");
    const Vector2d& origin = position(0, 0);
    const Vector2d a = position(0, 1) - origin;
    if (hasPattern<OCTScanPatternVolume>()) {
        checkTwoBScans(place);
        const Vector2d b = position(1, 0) - origin;
        return CoordOnLocalizer(origin + bScan * b + aScan * a);
    }
    if (hasPattern<OCTScanPatternSingleBScan>()) {
        return CoordOnLocalizer(origin + aScan * a);
    }
    throwNotImplemented(place, QString(patternNotImplemented).arg(patternText()));
}

CoordOnLocalizer OCTScan::volumeIndexToLocalizerCoords(const VolumeIndex& index) const
{
    constexpr kelp::Place place{sourcePath, "OCTScan::volumeIndexToLocalizerCoords"};
    return gridPosition(place, index.bScan, index.aScan);
}

CoordOnLocalizer OCTScan::volumeIndexToLocalizerCoords(int bScan, int aScan) const
{
    constexpr kelp::Place place{sourcePath, "OCTScan::volumeIndexToLocalizerCoords"};
    if (!hasPattern<OCTScanPatternStar, OCTScanPatternCircularBScan>()) {
        return gridPosition(place, bScan, aScan);
    }
    kelp::check(!bScanAt(0).isNull(), place, "first BScan is null");
    kelp::check(bScan >= 0 && aScan >= 0, place,
                "Cannot handle negative volume index coordinates.");
    if (bScan >= m_bScans.size()) {
        kelp::throwAssertion(place, QString("Tried to access BScan Nr %1, but only have %2.")
                                        .arg(bScan)
                                        .arg(m_bScans.size()));
    }
    kelp::check(!m_bScans.at(bScan).isNull(), place, QString("BScan Nr %1 is null.").arg(bScan));
    return CoordOnLocalizer(position(static_cast<unsigned>(bScan), static_cast<unsigned>(aScan)));
}
