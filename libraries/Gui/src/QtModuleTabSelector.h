#pragma once

#include "QtModuleSelector.h"

#include <QPointer>

class QTabWidget;

/// The tabs.
class QtModuleTabSelector : public QtModuleSelector
{
    Q_OBJECT

public:
    /// position: 2 is above the modules. The flags: the tabs can be selected by the user; they can
    /// be closed; disabled modules stay visible; the tab bar scrolls when it is too narrow.
    QtModuleTabSelector(int position, bool selectable, bool closable, bool showDisabled,
                        bool scrolls);
    ~QtModuleTabSelector() override;

    QWidget* getWidget() override;
    void setModule(int index, QtAppModule* module) override;

public slots:
    void addModule(const QString& name, int index) override;
    void moduleActivated(const QString& name, int index) override;
    void moduleDeactivated(const QString& name, int index) override;
    void moduleEnabled(const QString& name, int index) override;
    void moduleDisabled(const QString& name, int index) override;

private slots:
    void tabChosen(int index);
    void closeTab(int index);

private:
    QPointer<QTabWidget> m_tabs;
    bool m_showDisabled;
};
