#pragma once

#include <QObject>
#include <QString>

class QWidget;

/// A tab of the application. The frame calls activate when it is entered, deactivate when it is
/// left, and at the end of the program for the one that is open.
class QtAppModule : public QObject
{
    Q_OBJECT

public:
    QtAppModule(const QString& name, bool);
    ~QtAppModule() override;

    const QString& getName() const { return m_name; }

    virtual void activate();
    virtual void deactivate();
    /// What stands in the tab: the main widget.
    virtual QWidget* getWidget();
    /// Owned by the module. Also the parent of its message boxes.
    virtual QWidget* getMainWidget();

private:
    QString m_name;
};
