#pragma once

#include <QList>
#include <QRect>

namespace kelp {

/// The rectangle, made no larger than the screen that it is mostly on, or else the first, and moved
/// onto it as a whole.
QRect placeWithin(const QRect& wanted, const QList<QRect>& screens);
/// The same with the room that the present screens offer.
QRect placeOnScreens(const QRect& wanted);

} // namespace kelp
