#pragma once

#include "PatientListModel.h"

#include <QSortFilterProxyModel>

namespace kelp::patients {

/// The patients that a search finds, in the order of the column that the user chose.
class PatientFilterModel : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    explicit PatientFilterModel(PatientListModel* patients, QObject* parent = nullptr);

    void setSearch(const QString& text);
    bool hasSearch() const { return !m_search.isEmpty(); }

    DataPointer<Patient> patientAt(const QModelIndex& index) const;
    /// Invalid for one that is not listed or not found by the search.
    QModelIndex indexOf(const QString& guid) const;

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override;
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    PatientListModel* m_patients;
    PatientSearch m_search;
};

} // namespace kelp::patients
