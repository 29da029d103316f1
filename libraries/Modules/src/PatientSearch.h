#pragma once

#include "Patient.h"

#include <QStringList>

namespace kelp::patients {

/// Text for comparing: without case and accents.
QString plainText(const QString& text);

/// What a search can find of a patient, in plain text.
struct Searchable
{
    /// Name, and birth date in the forms in which people write it.
    QString text;
    QString patientNumber;
};

Searchable searchableOf(const Patient& patient);

/// Words that must all be found: anywhere in a name, but a number only from its first digit on, so
/// that "3.2.1950" does not find the 23rd, and the patient's id only from its beginning.
class PatientSearch
{
public:
    PatientSearch() = default;
    explicit PatientSearch(const QString& text);

    bool isEmpty() const { return m_words.isEmpty(); }
    bool matches(const Searchable& searchable) const;

private:
    QStringList m_words;
};

} // namespace kelp::patients
