#include "kelpGIObject.h"

#include <QGraphicsDropShadowEffect>
#include <QLineF>

namespace kelp {

void GIObject::setActive(bool active)
{
    m_active = active;
}

void GIObject::deactivate()
{
    m_active = false;
}

void GIObject::highlight()
{
    constexpr double blurRadius = 8.0;
    auto* const shadow = new QGraphicsDropShadowEffect;
    shadow->setColor(QColor(QStringLiteral("red")));
    shadow->setBlurRadius(blurRadius);
    shadow->setOffset(0.0, 0.0);
    setGraphicsEffect(shadow);
}

void GIObject::removeHighlight()
{
    setGraphicsEffect(nullptr);
}

double GIObject::distanceTo(const QPointF& point) const
{
    return QLineF(point, boundingRect().center()).length();
}

void GIObject::mouseDown(const QPointF&) {}

void GIObject::mouseUp(const QPointF&) {}

void GIObject::mouseMove(const QPointF&) {}

} // namespace kelp

#include "moc_kelpGIObject.cpp"
