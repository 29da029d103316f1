#pragma once

#include "Vector2d.h"
#include "kelpImage.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QSharedPointer>
#include <QVariant>

namespace kelp::oct {

/// One cross-section of the retina: an image whose columns are A-scans and whose rows are depths,
/// and where on the localizer (mm) each A-scan was taken.
class BScan : public QObject
{
    Q_OBJECT

public:
    /// Empty; for clone only.
    BScan() = default;
    /// Throws Assertion for a null image, a count of positions that differs from the image's
    /// columns, or an axial resolution (mm per row) that is not above 0.
    BScan(const QList<Vector2d>& aScanPositions, double axialResolution,
          const QSharedPointer<kelp::Image>& image);

    virtual QSharedPointer<BScan> clone() const = 0;
    virtual bool isValid() const = 0;
    /// Shared, not copied.
    virtual QSharedPointer<kelp::Image> getImage() const;
    /// A new image of the dimensions times the scales, truncated. The stored image stays.
    virtual QSharedPointer<kelp::Image> getScaledImage(double xScale, double yScale) const;
    /// The mean of all positions.
    virtual Vector2d getCenter() const;
    /// The position of the A-scan nearest to this point; of equally near ones the first.
    virtual Vector2d getClosestAScanPos(const Vector2d& point) const;

    /// From the first to the last A-scan with length 1; (1, 0) with fewer than two.
    Vector2d getScanDirection() const;

    QList<Vector2d> getAScanPositions() const { return m_aScanPositions; }
    const Vector2d& getAScanPosition(unsigned index) const;
    int getNrAScans() const { return m_aScanPositions.size(); }
    double getAxialResolution() const { return m_axialResolution; }
    QMap<QString, QVariant> getMetaInfo() const { return m_metaInfo; }
    void setMetaInfo(const QMap<QString, QVariant>& metaInfo) { m_metaInfo = metaInfo; }

protected:
    /// Fills a fresh object for clone: the image is copied deeply.
    void copyMembersTo(BScan& target) const;

    QList<Vector2d> m_aScanPositions;
    double m_axialResolution = 0.0;
    QSharedPointer<kelp::Image> m_data;
    QMap<QString, QVariant> m_metaInfo;
};

} // namespace kelp::oct
