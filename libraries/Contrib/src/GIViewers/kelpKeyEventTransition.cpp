#include "kelpKeyEventTransition.h"

#include <QKeyEvent>
#include <QStateMachine>

namespace kelp {

KeyEventTransition::KeyEventTransition(QObject* watched, QEvent::Type type, int key, QState* source,
                                       QAbstractState* target)
    : QKeyEventTransition(watched, type, key, source)
{
    setTargetState(target);
}

bool KeyEventTransition::eventTest(QEvent* event)
{
    if (event->type() != QEvent::StateMachineWrapped) {
        return false;
    }
    const auto* const wrapped = static_cast<QStateMachine::WrappedEvent*>(event);
    return wrapped->object() == eventSource() && wrapped->event()->type() == eventType() &&
           static_cast<QKeyEvent*>(wrapped->event())->key() == key();
}

void KeyEventTransition::onTransition(QEvent* event)
{
    QKeyEventTransition::onTransition(event);
    emit triggered();
}

} // namespace kelp

#include "moc_kelpKeyEventTransition.cpp"
