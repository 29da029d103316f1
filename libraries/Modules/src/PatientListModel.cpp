#include "PatientListModel.h"

#include "AppBase.h"
#include "PatientIdentity.h"

#include <QCollator>

#include <algorithm>

namespace kelp::patients {

namespace {

/// Sorting by keys made once: comparing names by the rules of a language is slow.
std::vector<Patient*> sortedByName(const QList<Patient*>& patients)
{
    struct Entry
    {
        QCollatorSortKey key;
        Patient* patient;
    };
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    collator.setNumericMode(true);
    std::vector<Entry> entries;
    entries.reserve(static_cast<std::size_t>(patients.size()));
    for (Patient* const patient : patients) {
        entries.push_back({collator.sortKey(displayName(*patient)), patient});
    }
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        const int order = a.key.compare(b.key);
        if (order != 0) {
            return order < 0;
        }
        if (a.patient->getBirthDate() != b.patient->getBirthDate()) {
            return a.patient->getBirthDate() < b.patient->getBirthDate();
        }
        return a.patient->getGUID() < b.patient->getGUID();
    });
    std::vector<Patient*> sorted;
    sorted.reserve(entries.size());
    for (const Entry& entry : entries) {
        sorted.push_back(entry.patient);
    }
    return sorted;
}

bool holds(const QList<Patient*>& patients, const Patient& patient)
{
    return std::any_of(patients.begin(), patients.end(),
                       [&](const Patient* other) { return other->getGUID() == patient.getGUID(); });
}

} // namespace

CaError PatientListModel::refresh()
{
    QList<Patient*> patients;
    const CaError error = AppBase::getPatientList(patients);
    if (error != CaError::nullError) {
        // What was read before is still there to be worked with and stored elsewhere.
        return error;
    }
    QList<DataPointer<Patient>> unstored;
    for (const DataPointer<Patient>& patient : m_unstored) {
        if (!holds(patients, *patient)) {
            unstored.append(patient);
            patients.append(patient.data());
        }
    }
    m_unstored = unstored;
    setPatients(patients);
    return CaError::nullError;
}

void PatientListModel::setPatients(const QList<Patient*>& patients)
{
    beginResetModel();
    std::vector<Row> rows;
    rows.reserve(static_cast<std::size_t>(patients.size()));
    for (Patient* const patient : sortedByName(patients)) {
        rows.emplace_back(patient);
    }
    m_rows = std::move(rows);
    endResetModel();
}

void PatientListModel::addPatient(const DataPointer<Patient>& patient)
{
    m_unstored.append(patient);
}

bool PatientListModel::isUnstored(const DataPointer<Patient>& patient) const
{
    // It may have been saved since the last refresh.
    QList<Patient*> stored;
    return m_unstored.contains(patient) && AppBase::getPatientList(stored) == CaError::nullError &&
           !holds(stored, *patient);
}

void PatientListModel::forgetPatient(const DataPointer<Patient>& patient)
{
    m_unstored.removeAll(patient);
}

DataPointer<Patient> PatientListModel::patientAt(int row) const
{
    return row < 0 || row >= rowCount() ? DataPointer<Patient>()
                                        : m_rows[static_cast<std::size_t>(row)].patient;
}

const Patient* PatientListModel::shownAt(int row) const
{
    return m_rows[static_cast<std::size_t>(row)].patient.data();
}

int PatientListModel::rowOf(const QString& guid) const
{
    const auto found = std::find_if(m_rows.begin(), m_rows.end(), [&guid](const Row& row) {
        return row.patient && row.patient->getGUID() == guid;
    });
    return found == m_rows.end() ? -1 : static_cast<int>(found - m_rows.begin());
}

const Searchable& PatientListModel::searchableAt(int row) const
{
    const Row& searched = m_rows[static_cast<std::size_t>(row)];
    if (searched.searchable.patientNumber.isEmpty()) {
        searched.searchable = searchableOf(*searched.patient);
    }
    return searched.searchable;
}

int PatientListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int PatientListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant PatientListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::ToolTipRole)) {
        return QVariant();
    }
    const Patient* const patient = shownAt(index.row());
    if (!patient) {
        return QVariant();
    }
    switch (index.column()) {
    case NameColumn:
        return displayName(*patient);
    case BirthDateColumn:
        return displayDate(patient->getBirthDate());
    case NumberColumn:
        return patientNumber(*patient);
    default:
        return QVariant();
    }
}

QVariant PatientListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return QVariant();
    }
    switch (section) {
    case NameColumn:
        return QStringLiteral("Name");
    case BirthDateColumn:
        return QStringLiteral("Birth Date");
    case NumberColumn:
        return QStringLiteral("Patient ID");
    default:
        return QVariant();
    }
}

} // namespace kelp::patients

#include "moc_PatientListModel.cpp"
