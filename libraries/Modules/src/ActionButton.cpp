#include "ActionButton.h"

#include "kelpCheck.h"

#include <QAction>

namespace kelp::patients {

ActionButton::ActionButton(QAction* action, QWidget* parent) : QPushButton(parent), m_action(action)
{
    constexpr const char* sourcePath = "libraries/Modules/src/ActionButton";
    setObjectName(action->objectName() + QStringLiteral("Button"));
    KELP_CONNECT(sourcePath, connect(action, SIGNAL(changed()), this, SLOT(followAction())));
    KELP_CONNECT(sourcePath, connect(this, SIGNAL(clicked()), action, SLOT(trigger())));
    followAction();
}

void ActionButton::followAction()
{
    setText(m_action->text());
    setToolTip(m_action->toolTip());
    setEnabled(m_action->isEnabled());
}

} // namespace kelp::patients

#include "moc_ActionButton.cpp"
