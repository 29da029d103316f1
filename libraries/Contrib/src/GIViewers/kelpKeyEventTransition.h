#pragma once

#include <QKeyEventTransition>

namespace kelp {

/// A key transition that does not look at the modifiers, since the keys watched here are modifiers
/// themselves, and that tells when it was taken.
class KeyEventTransition : public QKeyEventTransition
{
    Q_OBJECT

public:
    KeyEventTransition(QObject* watched, QEvent::Type type, int key, QState* source,
                       QAbstractState* target);

signals:
    void triggered();

protected:
    bool eventTest(QEvent* event) override;
    void onTransition(QEvent* event) override;
};

} // namespace kelp
