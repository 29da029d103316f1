#include "ModuleSwitcher.h"

#include "FailureBox.h"
#include "QtAppModule.h"
#include "QtModuleSelector.h"
#include "kelpCheck.h"

#include <QStringList>

#include <algorithm>

namespace kelp {

ModuleSwitcher::ModuleSwitcher() = default;

ModuleSwitcher::~ModuleSwitcher()
{
    // The modules delete their widgets, which leave the selector's control by that; the selector
    // must not take this for the user's choice.
    if (m_selector) {
        m_selector->disconnect(this);
    }
    while (!m_modules.isEmpty()) {
        delete m_modules.takeLast();
    }
}

void ModuleSwitcher::setSelector(std::unique_ptr<QtModuleSelector> selector)
{
    m_selector = std::move(selector);
    if (!m_selector) {
        return;
    }
    for (int index = 0; index < m_modules.size(); ++index) {
        showInSelector(index);
    }
    KELP_CONNECT("libraries/Gui/src/ModuleSwitcher",
                 connect(m_selector.get(), SIGNAL(moduleSelected(int)), this, SLOT(enter(int))));
}

bool ModuleSwitcher::add(QtAppModule* module)
{
    if (!module || m_modules.contains(module)) {
        return false;
    }
    if (indexOf(module->getName()) >= 0) {
        delete module;
        return false;
    }
    m_modules.append(module);
    if (m_selector) {
        showInSelector(m_modules.size() - 1);
    }
    return true;
}

QStringList ModuleSwitcher::names() const
{
    QStringList names;
    for (const QtAppModule* const module : m_modules) {
        names.append(module->getName());
    }
    return names;
}

int ModuleSwitcher::indexOf(const QString& name) const
{
    return names().indexOf(name);
}

void ModuleSwitcher::leave()
{
    if (m_current < 0) {
        return;
    }
    QtAppModule* const module = m_modules.at(m_current);
    const int index = m_current;
    m_current = -1;
    guarded(module->getMainWidget(), QStringLiteral("The tab could not be left cleanly:\n"),
            QStringLiteral("Error"), [module] { module->deactivate(); });
    if (m_selector) {
        m_selector->moduleDeactivated(module->getName(), index);
    }
}

void ModuleSwitcher::enter(int index)
{
    // A box that a module shows while it is entered or left lets further requests in; they would
    // mix up the order.
    if (index == m_current || index < 0 || index >= m_modules.size() || m_isSwitching) {
        return;
    }
    m_isSwitching = true;
    leave();
    emit left();
    QtAppModule* const module = m_modules.at(index);
    m_current = index;
    if (m_selector) {
        m_selector->moduleActivated(module->getName(), index);
    }
    guarded(module->getMainWidget(), QStringLiteral("The tab could not be opened completely:\n"),
            QStringLiteral("Error"), [module] { module->activate(); });
    m_isSwitching = false;
    emit entered(index);
}

void ModuleSwitcher::showInSelector(int index)
{
    m_selector->setModule(index, m_modules.at(index));
    m_selector->addModule(m_modules.at(index)->getName(), index);
}

} // namespace kelp

#include "moc_ModuleSwitcher.cpp"
