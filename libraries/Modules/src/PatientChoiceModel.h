#pragma once

#include "PatientListModel.h"

#include <QSet>

namespace kelp::patients {

/// The list of patients with a check box for each.
class PatientChoiceModel : public PatientListModel
{
    Q_OBJECT

public:
    using PatientListModel::PatientListModel;

    void setChecked(const QString& guid, bool checked);
    void setChecked(const QStringList& guids, bool checked);
    /// In the order of the list.
    QList<DataPointer<Patient>> checkedPatients() const;
    int checkedCount() const { return m_checked.size(); }

    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

signals:
    void choiceChanged();

private:
    QSet<QString> m_checked;
};

} // namespace kelp::patients
