#include "PatientFilterModel.h"

#include "PatientIdentity.h"

namespace kelp::patients {

PatientFilterModel::PatientFilterModel(PatientListModel* patients, QObject* parent)
    : QSortFilterProxyModel(parent), m_patients(patients)
{
    setSourceModel(patients);
}

void PatientFilterModel::setSearch(const QString& text)
{
    m_search = PatientSearch(text);
    invalidateFilter();
}

DataPointer<Patient> PatientFilterModel::patientAt(const QModelIndex& index) const
{
    return m_patients->patientAt(index.isValid() ? mapToSource(index).row() : -1);
}

QModelIndex PatientFilterModel::indexOf(const QString& guid) const
{
    const int row = m_patients->rowOf(guid);
    return row < 0 ? QModelIndex() : mapFromSource(m_patients->index(row, 0));
}

bool PatientFilterModel::filterAcceptsRow(int row, const QModelIndex& /*parent*/) const
{
    return m_search.isEmpty() || m_search.matches(m_patients->searchableAt(row));
}

bool PatientFilterModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    const Patient* const a = m_patients->shownAt(left.row());
    const Patient* const b = m_patients->shownAt(right.row());
    if (!a || !b) {
        return left.row() < right.row();
    }
    if (left.column() == PatientListModel::BirthDateColumn &&
        a->getBirthDate() != b->getBirthDate()) {
        return a->getBirthDate() < b->getBirthDate();
    }
    if (left.column() == PatientListModel::NumberColumn && a->getGUID() != b->getGUID()) {
        return patientNumber(*a) < patientNumber(*b);
    }
    // The list below is in the order of the names.
    return left.row() < right.row();
}

} // namespace kelp::patients

#include "moc_PatientFilterModel.cpp"
