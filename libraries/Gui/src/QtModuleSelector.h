#pragma once

#include <QObject>
#include <QString>

class QtAppModule;
class QWidget;

/// The control that switches between modules.
class QtModuleSelector : public QObject
{
    Q_OBJECT

public:
    /// Where the control stands on the form.
    enum Position
    {
        Left = 0,
        Right = 1,
        Top = 2,
        Bottom = 3
    };

    explicit QtModuleSelector(Position position) : m_position(position) {}
    Position getPosition() const { return m_position; }
    /// The control with the modules' widgets in it; owned by the form that takes it.
    virtual QWidget* getWidget() = 0;
    /// Called before moduleAdded for each module, in tab order.
    virtual void setModule(int index, QtAppModule* module) = 0;

public slots:
    virtual void addModule(const QString& name, int index) = 0;
    virtual void moduleActivated(const QString& name, int index) = 0;
    virtual void moduleDeactivated(const QString& name, int index) = 0;
    virtual void moduleEnabled(const QString& name, int index) = 0;
    virtual void moduleDisabled(const QString& name, int index) = 0;

signals:
    /// The user asks for a module.
    void moduleSelected(int index);

private:
    Position m_position;
};
