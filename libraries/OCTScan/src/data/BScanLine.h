#pragma once

#include "BScan.h"

namespace kelp::oct {

/// A B-scan along a straight line, with equal steps between its A-scans.
class BScanLine : public BScan
{
    Q_OBJECT

public:
    /// Empty; for clone only.
    BScanLine() = default;
    BScanLine(const QList<Vector2d>& aScanPositions, double axialResolution,
              const QSharedPointer<kelp::Image>& image);

    QSharedPointer<BScan> clone() const override;
    /// Prints the reason of a false result. Two tests of the image's spacing only warn, and then
    /// the remaining test is left out.
    bool isValid() const override;
    Vector2d getCenter() const override;
    Vector2d getClosestAScanPos(const Vector2d& point) const override;
    virtual Vector2d getStartCoordinates() const;
    virtual Vector2d getEndCoordinates() const;

private:
    double m_lateralResolution = 0.0;
    Vector2d m_aScanDistance;
};

} // namespace kelp::oct
