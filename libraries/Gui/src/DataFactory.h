#pragma once

#include <QList>
#include <QString>

class Data;
class QtDataConfigurationWidget;
class QWidget;

/// Which widget configures which class of data.
class DataFactory
{
public:
    /// Base of the registration of a configuration widget.
    class Registration
    {
    public:
        virtual ~Registration() = default;
        virtual QString name() const = 0;
        /// A new widget, owned by the parent.
        virtual QtDataConfigurationWidget* configurationWidget(Data* data, const QString& name,
                                                               QWidget* parent) const = 0;
        /// Takes ownership; one of the same name is replaced.
        static void registerWidget(Registration* registration);
    };

    /// A class of data that "Add Data" offers.
    struct Link
    {
        QString className;
        QString widgetName;
        QString label;
        int flags = 0;
        QString extra;
    };

    /// In the order linked.
    static const QList<Link>& links();
    /// Null for a widget name that is not registered.
    static QtDataConfigurationWidget* makeWidget(const Link& link, Data* data, const QString& name,
                                                 QWidget* parent);
};

/// Joins a data class to its configuration widget under a label. A class that is linked already is
/// replaced.
void linkDataToWidget(const QString& className, const QString& widgetName, const QString& label,
                      int flags, const QString& extra);
