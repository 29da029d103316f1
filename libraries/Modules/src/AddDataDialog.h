#pragma once

#include "DataFactory.h"
#include "DataPointer.h"

#include <QDialog>

class QComboBox;
class QtDataConfigurationWidget;
class QVBoxLayout;

namespace kelp::patients {

/// Makes a data item of one of the types that are linked to a widget, with that widget.
class AddDataDialog : public QDialog
{
    Q_OBJECT

public:
    explicit AddDataDialog(QWidget* parent);

    /// The item that was made; null before the dialog is accepted.
    DataPointer<Data> item() const { return m_item; }
    /// The id that the user wants for it, or else what its URIs call it.
    QString wantedId() const;

public slots:
    void accept() override;
    void reject() override;

private slots:
    void showType(int index);

private:
    QComboBox* m_types;
    QVBoxLayout* m_place;
    QtDataConfigurationWidget* m_widget = nullptr;
    DataPointer<Data> m_item;
};

/// The id of an item that the user gave no name: its series, its file's name, or its type.
QString defaultItemId(const Data& item, const QString& typeLabel);

} // namespace kelp::patients
