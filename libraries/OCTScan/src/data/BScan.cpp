#include "BScan.h"

#include "kelpCheck.h"
#include "kelpImageTools.h"

#include <limits>

namespace kelp::oct {

namespace {

constexpr char sourcePath[] = "libraries/OCTScan/src/data/BScan";
constexpr char noPositions[] = "There is no AScan position information.";

/// Truncated toward zero. A size that no image can have becomes -1, which resizing refuses.
int scaledSize(int size, double scale)
{
    const double scaled = size * scale;
    return scaled >= 0.0 && scaled <= std::numeric_limits<int>::max() ? static_cast<int>(scaled)
                                                                      : -1;
}

} // namespace

BScan::BScan(const QList<Vector2d>& aScanPositions, double axialResolution,
             const QSharedPointer<kelp::Image>& image)
    : m_aScanPositions(aScanPositions), m_axialResolution(axialResolution), m_data(image)
{
    constexpr Place place{sourcePath, "kelp::oct::BScan::BScan"};
    check(!image.isNull(), place, "Image data is null.");
    check(aScanPositions.size() == image->getColumns(), place,
          "Size mismatch between image and nr of AScans.");
    check(axialResolution > 0.0, place, "Axial resolution is <= 0");
}

QSharedPointer<kelp::Image> BScan::getImage() const
{
    return m_data;
}

QSharedPointer<kelp::Image> BScan::getScaledImage(double xScale, double yScale) const
{
    constexpr Place place{sourcePath, "kelp::oct::BScan::getScaledImage"};
    check(!m_data.isNull(), place, "Image data is null.");
    const Vector3<int>& size = m_data->getDimensions();
    return ImageTools::resize(m_data,
                              {scaledSize(size.x, xScale), scaledSize(size.y, yScale), size.z},
                              InterpolationModes::AreaOrLinear);
}

Vector2d BScan::getCenter() const
{
    constexpr Place place{sourcePath, "kelp::oct::BScan::getCenter"};
    check(!m_aScanPositions.isEmpty(), place, noPositions);
    Vector2d sum;
    for (const Vector2d& position : m_aScanPositions) {
        sum = sum + position;
    }
    return sum / m_aScanPositions.size();
}

Vector2d BScan::getClosestAScanPos(const Vector2d& point) const
{
    constexpr Place place{sourcePath, "kelp::oct::BScan::getClosestAScanPos"};
    check(!m_aScanPositions.isEmpty(), place, noPositions);
    double shortest = std::numeric_limits<float>::max();
    Vector2d closest = m_aScanPositions.first();
    for (const Vector2d& position : m_aScanPositions) {
        const double distance = (position - point).squaredLength();
        if (distance < shortest) {
            shortest = distance;
            closest = position;
        }
    }
    return closest;
}

Vector2d BScan::getScanDirection() const
{
    if (m_aScanPositions.size() < 2) {
        return {1.0, 0.0};
    }
    return (m_aScanPositions.last() - m_aScanPositions.first()).scaledTo(1.0);
}

const Vector2d& BScan::getAScanPosition(unsigned index) const
{
    constexpr Place place{sourcePath, "kelp::oct::BScan::getAScanPosition"};
    check(index < static_cast<unsigned>(m_aScanPositions.size()), place, "index out of bounds");
    return m_aScanPositions.at(static_cast<int>(index));
}

void BScan::copyMembersTo(BScan& target) const
{
    target.m_aScanPositions = m_aScanPositions;
    target.m_axialResolution = m_axialResolution;
    if (m_data) {
        target.m_data = m_data->copy();
    }
    target.m_metaInfo = m_metaInfo;
}

} // namespace kelp::oct

// Here rather than in one file with all others, so that a program links only what it uses.
#include "moc_BScan.cpp"
