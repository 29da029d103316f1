#pragma once

#include "DataIOManager.h"
#include "PatientSearch.h"

#include <QAbstractTableModel>

#include <vector>

namespace kelp::patients {

/// The patients of the open store, sorted by name, then birth date.
class PatientListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column
    {
        NameColumn,
        BirthDateColumn,
        NumberColumn,
        ColumnCount
    };

    using QAbstractTableModel::QAbstractTableModel;

    /// Reads the list of the store anew. Patients that the store could not take yet stay listed.
    CaError refresh();
    /// Lists a new patient also while the store does not hold it.
    void addPatient(const DataPointer<Patient>& patient);
    /// The store does not hold this patient.
    bool isUnstored(const DataPointer<Patient>& patient) const;
    void forgetPatient(const DataPointer<Patient>& patient);

    DataPointer<Patient> patientAt(int row) const;
    /// For comparing and painting, of a row that there is: a DataPointer takes too long to make for
    /// the many that sorting looks at. Null if it was deleted behind the list's back.
    const Patient* shownAt(int row) const;
    /// -1 for one that is not listed.
    int rowOf(const QString& guid) const;
    const Searchable& searchableAt(int row) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    struct Row
    {
        explicit Row(Patient* listed) : patient(listed) {}

        DataPointer<Patient> patient;
        /// Made when it is first searched.
        mutable Searchable searchable;
    };

    void setPatients(const QList<Patient*>& patients);

    std::vector<Row> m_rows;
    QList<DataPointer<Patient>> m_unstored;
};

} // namespace kelp::patients
