#pragma once

#include "Vector2d.h"
#include "kelpImage.h"

#include <QMap>
#include <QSharedPointer>
#include <QString>
#include <QVariant>

namespace kelp::oct {

/// The en-face overview image of a scan. Its millimetres are the coordinates of all positions.
class Localizer
{
public:
    /// Throws Assertion for a null image.
    void setImage(const QSharedPointer<kelp::Image>& image);
    QSharedPointer<kelp::Image> getImage() const { return m_image; }
    void setMetaInfo(const QMap<QString, QVariant>& metaInfo) { m_metaInfo = metaInfo; }
    QMap<QString, QVariant> getMetaInfo() const { return m_metaInfo; }
    /// Millimetres per pixel.
    void setSpacing(const Vector2d& spacing) { m_spacing = spacing; }
    Vector2d getSpacing() const { return m_spacing; }

private:
    QSharedPointer<kelp::Image> m_image;
    QMap<QString, QVariant> m_metaInfo;
    Vector2d m_spacing;
};

} // namespace kelp::oct
