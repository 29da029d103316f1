#pragma once

#include <QList>
#include <QPoint>
#include <Qt>

class QGraphicsView;
class QWidget;

/// Mouse events that QTest does not make: moves that tell which buttons are held, and the wheel.
/// They arrive at once, unlike those of the true cursor, which come whenever the X server likes.
/// Those of a graphics view go to its viewport.
namespace mouseevents {

/// One notch of the wheel towards the user.
constexpr int wheelDown = -120;

void move(QWidget& widget, const QPoint& place, Qt::MouseButtons held = Qt::NoButton);
void move(QGraphicsView& view, const QPoint& place, Qt::MouseButtons held = Qt::NoButton);

/// Presses the left button at the first place, moves over the others, and releases it at the last.
void drag(QWidget& widget, const QList<QPoint>& places);

/// Over the middle of the widget. Returns whether the event was taken.
bool turnWheel(QWidget& widget, int delta, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
bool turnWheel(QGraphicsView& view, int delta, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

} // namespace mouseevents
