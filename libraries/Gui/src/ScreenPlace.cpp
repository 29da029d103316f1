#include "ScreenPlace.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

namespace kelp {

namespace {

qint64 sharedArea(const QRect& a, const QRect& b)
{
    const QRect shared = a.intersected(b);
    return shared.isEmpty() ? 0 : qint64{shared.width()} * shared.height();
}

} // namespace

QRect placeWithin(const QRect& wanted, const QList<QRect>& screens)
{
    if (screens.isEmpty()) {
        return wanted;
    }
    const QRect screen = *std::max_element(screens.begin(), screens.end(),
                                           [&wanted](const QRect& a, const QRect& b) {
                                               return sharedArea(a, wanted) < sharedArea(b, wanted);
                                           });
    QRect placed(wanted.topLeft(), wanted.size().boundedTo(screen.size()));
    placed.moveLeft(std::clamp(placed.left(), screen.left(), screen.right() + 1 - placed.width()));
    placed.moveTop(std::clamp(placed.top(), screen.top(), screen.bottom() + 1 - placed.height()));
    return placed;
}

QRect placeOnScreens(const QRect& wanted)
{
    QList<QRect> rooms;
    for (const QScreen* const screen : QGuiApplication::screens()) {
        rooms.append(screen->availableGeometry());
    }
    return placeWithin(wanted, rooms);
}

} // namespace kelp
