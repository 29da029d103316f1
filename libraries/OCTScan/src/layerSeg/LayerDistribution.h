#pragma once

#include "Vector3d.h"
#include "VolumeLayer.h"

#include <QSharedPointer>
#include <QString>

#include <array>
#include <vector>

namespace kelp::oct {

/// The trained statistics of the distance between two surfaces over a grid of positions around the
/// fovea. Read-only once built.
///
/// In all operations `spacing` is the scan's (x, axial, z) in mm and `origin` the fovea in the scan
/// as (z, x) in mm. Positions outside the grid take the value of its nearest edge.
class LayerDistribution
{
public:
    using Matrix = std::vector<std::vector<double>>;

    /// means in mm, variances in mm^2, both [row][column]; spacing of the grid in mm; foveaOffset
    /// (row, column) in mm. Throws Assertion for matrices that do not match and spacings <= 0.
    LayerDistribution(Matrix means, Matrix variances, const Vector3d& spacing,
                      const std::array<double, 2>& foveaOffset, const QString& upperLayerName,
                      const QString& lowerLayerName);
    virtual ~LayerDistribution() = default;

    /// Millimetres, at a position in mm relative to the fovea.
    float getMean(float xPosition, float zPosition) const;
    /// Square millimetres.
    float getVariance(float xPosition, float zPosition) const;
    QString getUpperLayerName() const { return m_upperLayerName; }
    QString getLowerLayerName() const { return m_lowerLayerName; }

    /// Mean minus k standard deviations in rows, at least 0.
    VolumeLayerPtr getMinDistanceLayer(const double spacing[3], unsigned nrAScans,
                                       unsigned nrBScans, const double origin[2], float k) const;
    /// Mean plus k standard deviations in rows.
    VolumeLayerPtr getMaxDistanceLayer(const double spacing[3], unsigned nrAScans,
                                       unsigned nrBScans, const double origin[2], float k) const;

    /// This is the pair from an upper surface to X, other the pair from X to a lower surface, and
    /// the layers a search range for X, which is narrowed in place.
    void addSubtractRelativeSearchRange(const VolumeLayerPtr& topLayer,
                                        const VolumeLayerPtr& bottomLayer,
                                        const LayerDistribution& other, const double spacing[3],
                                        const double origin[2], float k) const;

private:
    /// Mean and k standard deviations at one position, in rows of the scan.
    struct Rows
    {
        float mean;
        float deviation;
    };
    Rows rowsAt(float xPosition, float zPosition, float rowHeight, float k) const;
    double lookup(const Matrix& matrix, float xPosition, float zPosition) const;

    Matrix m_means;
    Matrix m_variances;
    Vector3d m_spacing;
    std::array<double, 2> m_foveaOffset;
    QString m_upperLayerName;
    QString m_lowerLayerName;
};

using LayerDistributionPtr = QSharedPointer<LayerDistribution>;

} // namespace kelp::oct
