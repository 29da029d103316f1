#pragma once

#include <QList>
#include <QPoint>
#include <Qt>

class QWidget;

/// Mouse events that QTest does not make: moves that tell which buttons are held, and the wheel.
/// For a graphics view the widget is its viewport.
namespace mouseevents {

void move(QWidget& widget, const QPoint& place, Qt::MouseButtons held = Qt::NoButton);

/// Presses the left button at the first place, moves over the others, and releases it at the last.
void drag(QWidget& widget, const QList<QPoint>& places);

/// Returns whether the event was taken.
bool turnWheel(QWidget& widget, const QPoint& place, int delta,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier);

} // namespace mouseevents
