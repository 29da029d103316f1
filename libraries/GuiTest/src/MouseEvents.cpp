#include "MouseEvents.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QTest>
#include <QWheelEvent>

namespace mouseevents {

void move(QWidget& widget, const QPoint& place, Qt::MouseButtons held)
{
    QMouseEvent event(QEvent::MouseMove, place, widget.mapToGlobal(place), Qt::NoButton, held,
                      Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &event);
}

void drag(QWidget& widget, const QList<QPoint>& places)
{
    QTest::mousePress(&widget, Qt::LeftButton, Qt::NoModifier, places.first());
    for (const QPoint& place : places) {
        move(widget, place, Qt::LeftButton);
    }
    QTest::mouseRelease(&widget, Qt::LeftButton, Qt::NoModifier, places.last());
}

bool turnWheel(QWidget& widget, const QPoint& place, int delta, Qt::KeyboardModifiers modifiers)
{
    QWheelEvent event(place, widget.mapToGlobal(place), QPoint(), QPoint(0, delta), Qt::NoButton,
                      modifiers, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&widget, &event);
    return event.isAccepted();
}

} // namespace mouseevents
