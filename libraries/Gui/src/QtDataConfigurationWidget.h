#pragma once

#include "DataPointer.h"

#include <QWidget>

/// Base of the widgets with which a data item is made or configured.
class QtDataConfigurationWidget : public QWidget
{
    Q_OBJECT

public:
    QtDataConfigurationWidget(Data* item, const QString& name, QWidget* parent,
                              Qt::WindowFlags flags);

    /// Takes what the widget shows over into the item; false leaves the dialog open.
    virtual bool apply() = 0;
    virtual void cancel();
    virtual bool canSaveAsDefault() const;
    virtual void saveAsDefault();

    /// Null when the item is gone.
    Data* getData() const { return m_data.data(); }
    /// The id that the user wants for the item.
    virtual QString getItemName() const { return m_name; }

private:
    DataPointer<Data> m_data;
    QString m_name;
};
