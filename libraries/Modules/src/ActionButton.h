#pragma once

#include <QPushButton>

class QAction;

namespace kelp::patients {

/// A button that stands for an action: same caption, tooltip and enabled state.
class ActionButton : public QPushButton
{
    Q_OBJECT

public:
    ActionButton(QAction* action, QWidget* parent = nullptr);

private slots:
    void followAction();

private:
    QAction* m_action;
};

} // namespace kelp::patients
