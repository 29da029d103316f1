#include "BScanLine.h"

#include "kelpCheck.h"
#include "kelpTrace.h"

#include <cmath>

namespace kelp::oct {

namespace {

constexpr char sourcePath[] = "libraries/OCTScan/src/data/BScanLine";
constexpr char invalid[] = "Invalid BScan.";
constexpr char noPositions[] = "No AScan position information.";
/// Millimetres by which the image's spacing may exceed the stored resolution without a warning.
constexpr double spacingTolerance = 1e-5;

} // namespace

BScanLine::BScanLine(const QList<Vector2d>& aScanPositions, double axialResolution,
                     const QSharedPointer<kelp::Image>& image)
    : BScan(aScanPositions, axialResolution, image)
{
    if (m_aScanPositions.isEmpty()) {
        return;
    }
    // A single column divides by zero; isValid then refuses the result.
    m_aScanDistance =
        (m_aScanPositions.last() - m_aScanPositions.first()) / (m_data->getColumns() - 1);
    m_lateralResolution = m_aScanDistance.length();
}

QSharedPointer<BScan> BScanLine::clone() const
{
    const auto result = QSharedPointer<BScanLine>::create();
    copyMembersTo(*result);
    result->m_lateralResolution = m_lateralResolution;
    result->m_aScanDistance = m_aScanDistance;
    return result;
}

bool BScanLine::isValid() const
{
    // Comparisons are written such that not-a-number is invalid.
    if (!(m_aScanDistance.squaredLength() > 0.0)) {
        Trace() << "BScanLine: not valid because m_aScanDistance <= 0.0";
        return false;
    }
    if (!(m_axialResolution > 0.0)) {
        Trace() << "BScanLine: not valid because m_axialResolution <= 0.0";
        return false;
    }
    if (m_data.isNull()) {
        Trace() << "BScanLine: not valid because m_data is null";
        return false;
    }
    if (m_data->getColumns() != m_aScanPositions.size()) {
        Trace() << "BScanLine: not valid because number of AScan positions does not match actual "
                   "image data dimension";
        return false;
    }
    // A spacing of the image that is too large is only worth a warning, since exports round it. The
    // warning ends the tests, and a spacing that is too small passes in silence.
    const Vector3<double>& spacing = m_data->getSpacing();
    if (spacing.x - m_lateralResolution > spacingTolerance) {
        Trace() << "BScanLine: not valid because lateral image spacing is wrong";
        return true;
    }
    if (spacing.y - m_axialResolution > spacingTolerance) {
        Trace() << "BScanLine: not valid because axial image spacing is wrong";
        return true;
    }
    if (spacing.z != 1.0) {
        Trace() << "BScanLine: not valid because image data is not 2D";
        return false;
    }
    return true;
}

Vector2d BScanLine::getCenter() const
{
    constexpr Place place{sourcePath, "kelp::oct::BScanLine::getCenter"};
    check(isValid(), place, invalid);
    const Vector2d& start = m_aScanPositions.first();
    return start + (m_aScanPositions.last() - start) / 2.0;
}

Vector2d BScanLine::getClosestAScanPos(const Vector2d& point) const
{
    constexpr Place place{sourcePath, "kelp::oct::BScanLine::getClosestAScanPos"};
    check(isValid(), place, invalid);
    check(m_lateralResolution > 0.0, place, "Lateral resolution is <= 0");
    const Vector2d& start = m_aScanPositions.first();
    const Vector2d direction = m_aScanDistance.scaledTo(1.0);
    double steps = dot(direction, point - start) / m_lateralResolution;
    // Slightly negative values end at -1, which the clamping takes back to the first A-scan.
    steps = steps >= 0.0 ? steps + 0.5 : steps - 0.5;
    double index = std::floor(steps);
    const double count = m_aScanPositions.size();
    if (index >= count) {
        index = count - 1.0;
    }
    if (index < 0.0) {
        index = 0.0;
    }
    return start + (index * direction) * m_lateralResolution;
}

Vector2d BScanLine::getStartCoordinates() const
{
    constexpr Place place{sourcePath, "kelp::oct::BScanLine::getStartCoordinates"};
    check(isValid(), place, invalid);
    check(!m_aScanPositions.isEmpty(), place, noPositions);
    return m_aScanPositions.first();
}

Vector2d BScanLine::getEndCoordinates() const
{
    constexpr Place place{sourcePath, "kelp::oct::BScanLine::getEndCoordinates"};
    check(isValid(), place, invalid);
    check(!m_aScanPositions.isEmpty(), place, noPositions);
    return m_aScanPositions.last();
}

} // namespace kelp::oct

// Here rather than in one file with all others, so that a program links only what it uses.
#include "moc_BScanLine.cpp"
