#include "MouseEvents.h"

#include <QApplication>
#include <QGraphicsView>
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

void move(QGraphicsView& view, const QPoint& place, Qt::MouseButtons held)
{
    move(*view.viewport(), place, held);
}

void drag(QWidget& widget, const QList<QPoint>& places)
{
    QTest::mousePress(&widget, Qt::LeftButton, Qt::NoModifier, places.first());
    for (const QPoint& place : places) {
        move(widget, place, Qt::LeftButton);
    }
    QTest::mouseRelease(&widget, Qt::LeftButton, Qt::NoModifier, places.last());
}

bool turnWheel(QWidget& widget, int delta, Qt::KeyboardModifiers modifiers)
{
    const QPoint place = widget.rect().center();
    QWheelEvent event(place, widget.mapToGlobal(place), QPoint(), QPoint(0, delta), Qt::NoButton,
                      modifiers, Qt::NoScrollPhase, false);
    // As from a true wheel: only such events go on to the parents of a widget that ignores them.
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(&widget, &event);
    return event.isAccepted();
}

bool turnWheel(QGraphicsView& view, int delta, Qt::KeyboardModifiers modifiers)
{
    return turnWheel(*view.viewport(), delta, modifiers);
}

} // namespace mouseevents
