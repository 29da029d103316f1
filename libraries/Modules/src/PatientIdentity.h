#pragma once

#include "Patient.h"

/// How patients are named: in the store, where the batch import looks them up by name and birth
/// date, and on the screen.
namespace kelp::patients {

/// The two parts of a name as the user enters them.
struct PersonName
{
    QString firstNames;
    QString lastName;
};

/// First names, blank, last name, as an import from a device's export makes it: the blank goes with
/// the last name.
QString joinName(const PersonName& name);
/// Splits before the last name if the patient's record tells it, else at the last blank.
PersonName splitName(const Patient& patient);

/// What the user enters about a patient.
struct PatientDetails
{
    PersonName name;
    QDate birthDate;
    QString sex;
    QString remark;
};

PatientDetails detailsOf(const Patient& patient);
/// Sets name, id, key text and all else that follows from the details.
void setDetails(Patient& patient, const PatientDetails& details);

/// The "Patient ID": eight characters of the GUID, so that it is assigned with the patient and
/// stays the same in every store.
QString patientNumber(const Patient& patient);
/// The name without blanks around it, or a word for a patient without one.
QString displayName(const Patient& patient);
/// In the user's form; empty for an unknown date.
QString displayDate(const QDate& date);

/// The first patient but this one with the same name and birth date; null for none.
Patient* findTwin(const QList<Patient*>& patients, const Patient& patient,
                  const PatientDetails& details);

} // namespace kelp::patients
