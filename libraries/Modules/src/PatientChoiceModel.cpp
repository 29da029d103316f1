#include "PatientChoiceModel.h"

namespace kelp::patients {

void PatientChoiceModel::setChecked(const QString& guid, bool checked)
{
    const int row = rowOf(guid);
    if (row < 0 || m_checked.contains(guid) == checked) {
        return;
    }
    if (checked) {
        m_checked.insert(guid);
    } else {
        m_checked.remove(guid);
    }
    emit dataChanged(index(row, NameColumn), index(row, NameColumn), {Qt::CheckStateRole});
    emit choiceChanged();
}

void PatientChoiceModel::setChecked(const QStringList& guids, bool checked)
{
    const QSet<QString> changed(guids.begin(), guids.end());
    m_checked = checked ? m_checked + changed : m_checked - changed;
    if (rowCount() > 0) {
        emit dataChanged(index(0, NameColumn), index(rowCount() - 1, NameColumn),
                         {Qt::CheckStateRole});
    }
    emit choiceChanged();
}

QList<DataPointer<Patient>> PatientChoiceModel::checkedPatients() const
{
    QList<DataPointer<Patient>> patients;
    for (int row = 0; row < rowCount(); ++row) {
        const DataPointer<Patient> patient = patientAt(row);
        if (m_checked.contains(patient->getGUID())) {
            patients.append(patient);
        }
    }
    return patients;
}

Qt::ItemFlags PatientChoiceModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags plain = PatientListModel::flags(index);
    return index.column() == NameColumn ? plain | Qt::ItemIsUserCheckable : plain;
}

QVariant PatientChoiceModel::data(const QModelIndex& index, int role) const
{
    if (role == Qt::CheckStateRole && index.column() == NameColumn) {
        const DataPointer<Patient> patient = patientAt(index.row());
        return patient && m_checked.contains(patient->getGUID()) ? Qt::Checked : Qt::Unchecked;
    }
    return PatientListModel::data(index, role);
}

bool PatientChoiceModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    const DataPointer<Patient> patient = patientAt(index.row());
    if (role != Qt::CheckStateRole || index.column() != NameColumn || !patient) {
        return false;
    }
    setChecked(patient->getGUID(), value.toInt() == Qt::Checked);
    return true;
}

} // namespace kelp::patients

#include "moc_PatientChoiceModel.cpp"
