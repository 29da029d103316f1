#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <memory>

class QtAppModule;
class QtModuleSelector;

namespace kelp {

/// The modules, in tab order, and which of them is open. Owns them and their selector.
class ModuleSwitcher : public QObject
{
    Q_OBJECT

public:
    ModuleSwitcher();
    ~ModuleSwitcher() override;

    /// Hands it the modules added so far.
    void setSelector(std::unique_ptr<QtModuleSelector> selector);
    QtModuleSelector* selector() const { return m_selector.get(); }
    /// False for null or a name that is taken; the module is then deleted.
    bool add(QtAppModule* module);

    QStringList names() const;
    /// -1 for a name that no module has.
    int indexOf(const QString& name) const;
    /// The open module; -1 for none.
    int current() const { return m_current; }
    /// Calls deactivate of the open module, which then is none.
    void leave();

public slots:
    /// Leaves the open module and calls activate of this one. Nothing happens for the open one, or
    /// for an index that no module has.
    void enter(int index);

signals:
    /// After a module was left, before the next one is entered.
    void left();
    void entered(int index);

private:
    void showInSelector(int index);

    std::unique_ptr<QtModuleSelector> m_selector;
    QList<QtAppModule*> m_modules;
    int m_current = -1;
    bool m_isSwitching = false;
};

} // namespace kelp
